// Errors, handles, and texts for logs.

#include <iostream>

#include <tavren/capture/media_helper.h>

#include "operations.h"

using kel::tavren::capture::Media_Helper;

void errors(GstElement *pipeline) {
  //! [errors]
  try {
    Media_Helper::create_and_add_element_to_pipeline("no-such-element", pipeline, "");
  } catch (const kel::tavren::Backend_Error<std::runtime_error> &error) {
    if (error.code() != kel::tavren::TEC::ELEMENT_CREATION_FAILED) throw;
    std::cout << "0x" << std::hex << error.code() << std::dec << ": " << error.what() << '\n';
    // prints: 0x150c0: Could not create no-such-element
  }
  //! [errors]
}

void handles(GstElement *pipeline) {
  //! [handles]
  // A new element has a floating reference: sink it, then the handle owns it.
  const boost::intrusive_ptr<GstElement> queue(
      GST_ELEMENT(
          gst_object_ref_sink(Media_Helper::gst_element_factory_make_or_throw("queue", "buffer"))),
      false);
  // (transfer full): the handle adopts the reference.
  const boost::intrusive_ptr<GstPad> pad(
      Media_Helper::gst_element_get_static_pad_or_throw(queue.get(), "sink"), false);
  // (transfer none): the handle adds a reference.
  const boost::intrusive_ptr<GstElement> kept(pipeline);
  // Memory that must be freed.
  const std::unique_ptr<char, kel::tavren::Emancipator<char>> name(gst_pad_get_name(pad.get()));
  std::cout << name.get() << '\n';
  // prints: sink

  // Everything else.
  kel::tavren::Scope_Exit_Guard stop;
  kel::tavren::arm(stop, [&kept] { gst_element_set_state(kept.get(), GST_STATE_NULL); });
  //! [handles]
}

void keyed_lookup(GstElement *) {
  //! [keyed_lookup]
  const std::map<std::string, std::string> cameras = {{"gate", "rtsp://192.0.2.1/stream"}};
  const std::string name = "garage";
  try {
    std::cout << Media_Helper::string_from_map_or_throw_(name, cameras, "no camera " + name);
  } catch (const kel::tavren::Backend_Error<std::runtime_error> &error) {
    std::cout << error.what() << '\n';
    // prints: no camera garage
  }
  //! [keyed_lookup]
}

void enumeration_names(GstElement *pipeline) {
  //! [enumeration_names]
  std::cout << Media_Helper::gst_state_to_string(GST_STATE_PLAYING) << '\n';
  // prints: GST_STATE_PLAYING
  const auto result =
      Media_Helper::gst_element_set_state_or_throw(pipeline, GST_STATE_READY, "to prepare");
  std::cout << Media_Helper::gst_enum_message(result) << '\n';
  // prints: GST_STATE_CHANGE_SUCCESS: the state change succeeded
  //! [enumeration_names]
}

void time_and_segment_text(GstElement *) {
  //! [time_and_segment_text]
  std::cout << Media_Helper::gst_time_to_string(3723 * GST_SECOND + 1) << '\n';
  // prints: 1:02:03.000000001
  GstSegment segment;
  gst_segment_init(&segment, GST_FORMAT_TIME);
  const std::string line = Media_Helper::gst_segment_to_string(&segment);
  std::cout << line.substr(0, line.find(", Applied_Rate")) << '\n';
  // prints: Segment :: Flags = 0, Rate = 1
  //! [time_and_segment_text]
}

void queue_report(GstElement *pipeline) {
  //! [queue_report]
  GstElement *const queue =
      Media_Helper::create_and_add_element_to_pipeline("queue", pipeline, "buffer");
  std::cout << Media_Helper::generate_queue_stats_report(queue) << '\n';
  // prints: buffer Stats : Num Buffers = 0, Num Bytes = 0, Num Seconds = 0
  //! [queue_report]
}
