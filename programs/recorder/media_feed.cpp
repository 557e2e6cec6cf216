#include "media_feed.h"

#include <tavren/capture/media_helper.h>

namespace kel::tavren::programs {

using capture::Media_Helper;

namespace {

// With the caps in the template, an element with several kinds of pads can choose the right one
// before any data flows.
GstPad *make_source_pad(GstCaps *caps) {
  const std::unique_ptr<GstPadTemplate, decltype(&gst_object_unref)> pad_template(
      GST_PAD_TEMPLATE(
          gst_object_ref_sink(gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, caps))),
      gst_object_unref);
  return GST_PAD(gst_object_ref_sink(gst_pad_new_from_template(pad_template.get(), "src")));
}

}  // namespace

Media_Feed::Media_Feed(GstElement *queue, const boost::intrusive_ptr<GstCaps> &caps)
    : pad_(make_source_pad(caps.get()), false), caps_(caps) {
  Media_Helper::link_pad_to_element_or_throw(pad_.get(), queue);
}

Media_Feed::~Media_Feed() {
  gst_pad_set_active(pad_.get(), FALSE);
  if (const boost::intrusive_ptr<GstPad> peer{gst_pad_get_peer(pad_.get()), false})
    gst_pad_unlink(pad_.get(), peer.get());
}

void Media_Feed::begin(const std::string &stream_id, GstClockTime start) {
  gst_pad_set_active(pad_.get(), TRUE);
  gst_pad_push_event(pad_.get(), gst_event_new_stream_start(stream_id.c_str()));
  gst_pad_push_event(pad_.get(), gst_event_new_caps(caps_.get()));
  GstSegment segment;
  gst_segment_init(&segment, GST_FORMAT_TIME);
  segment.start = start;
  segment.time = 0;
  gst_pad_push_event(pad_.get(), gst_event_new_segment(&segment));
}

void Media_Feed::add(GstBuffer *buffer) noexcept {
  if (!buffers_) buffers_.reset(gst_buffer_list_new());
  gst_buffer_list_add(buffers_.get(), buffer);
}

void Media_Feed::flush() noexcept {
  if (buffers_) gst_pad_push_list(pad_.get(), buffers_.release());
}

void Media_Feed::end() noexcept {
  flush();
  gst_pad_push_event(pad_.get(), gst_event_new_eos());
}

void Media_Feed::set_caps(const boost::intrusive_ptr<GstCaps> &caps) noexcept {
  caps_ = caps;
  gst_pad_push_event(pad_.get(), gst_event_new_caps(caps.get()));
}

}  // namespace kel::tavren::programs
