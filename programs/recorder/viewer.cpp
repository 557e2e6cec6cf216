#include "viewer.h"

#include <tavren/capture/media_helper.h>

namespace kel::tavren::programs {

using capture::Media_Helper;

namespace {

bool is_set(const char *variable) {
  const char *const value = g_getenv(variable);
  return value != nullptr && *value != '\0';
}

// Selects the sink for the user's display. autovideosink would try all installed sinks, and some of
// them crash without a display.
std::string select_window() {
  if (is_set("WAYLAND_DISPLAY")) return "waylandsink";
  return is_set("DISPLAY") ? "ximagesink" : "fakesink";
}

}  // namespace

//! [show the pictures]
Viewer::Viewer(GstElement *pipeline, capture::MediaType kind, GstSample *first)
    : bin_(pipeline, "viewer"), caps_(gst_sample_get_caps(first)) {
  GstElement *const queue = bin_.add("queue");
  GstElement *const decoder = bin_.add(Media_Helper::select_decoder(kind));
  GstElement *const converter = bin_.add("videoconvert");
  GstElement *const window = bin_.add(select_window());
  gst_util_set_object_arg(G_OBJECT(queue), "leaky", "downstream");
  g_object_set(window, "sync", FALSE, "async", FALSE, nullptr);
  Media_Helper::gst_element_link_many_or_throw(queue, decoder, converter, window, nullptr);
  Media_Helper::add_probe_to_sink_pad_or_throw(converter, GST_PAD_PROBE_TYPE_BUFFER, on_picture,
                                               this, nullptr);
  feed_ = std::make_unique<Media_Feed>(queue, caps_);
  bin_.start();
  feed_->begin("viewer", 0);
}
//! [show the pictures]

void Viewer::show(GstSample *sample) {
  const boost::intrusive_ptr<GstCaps> caps(gst_sample_get_caps(sample));
  if (gst_caps_is_equal(caps.get(), caps_.get()) == FALSE) feed_->set_caps(caps);
  caps_ = caps;
  feed_->add(gst_buffer_ref(gst_sample_get_buffer(sample)));
  feed_->flush();
}

GstPadProbeReturn Viewer::on_picture(GstPad *, GstPadProbeInfo *, gpointer viewer) noexcept {
  ++static_cast<Viewer *>(viewer)->pictures_;
  return GST_PAD_PROBE_OK;
}

}  // namespace kel::tavren::programs
