// Elements: create them, start them, check them, find them.

#include <iostream>

#include <tavren/capture/media_helper.h>

#include "operations.h"

using kel::tavren::capture::Media_Helper;

void construction(GstElement *pipeline) {
  //! [construction]
  // The pipeline owns the element; the pointer is borrowed.
  GstElement *const source =
      Media_Helper::create_and_add_element_to_pipeline("videotestsrc", pipeline, "camera");
  g_object_set(source, "is-live", TRUE, nullptr);

  const boost::intrusive_ptr<GstElement> found(
      Media_Helper::gst_bin_get_by_name_or_throw(GST_BIN(pipeline), "camera"), false);
  try {
    Media_Helper::create_and_add_element_to_pipeline("fakesink", pipeline, "camera");
  } catch (const kel::tavren::Backend_Error<std::runtime_error> &error) {
    std::cout << error.what() << '\n';
    // prints: Failed to add element camera () to bin.
  }
  //! [construction]
}

void control(GstElement *pipeline) {
  //! [control]
  GstElement *const source =
      Media_Helper::create_and_add_element_to_pipeline("filesrc", pipeline, "source");
  GstElement *const sink =
      Media_Helper::create_and_add_element_to_pipeline("fakesink", pipeline, "sink");
  Media_Helper::gst_element_link_many_or_throw(source, sink, nullptr);
  g_object_set(source, "location", "/nonexistent/recording.mkv", nullptr);
  try {
    Media_Helper::gst_element_set_state_or_throw(pipeline, GST_STATE_PLAYING, "to start");
  } catch (const kel::tavren::Backend_Error<std::runtime_error> &error) {
    std::cout << error.what() << '\n';
    // prints: Failed to set state GST_STATE_PLAYING on element recording (), to start
  }
  // The cause is on the bus.
  const boost::intrusive_ptr<GstBus> bus(Media_Helper::gst_element_get_bus_or_throw(pipeline),
                                         false);
  const boost::intrusive_ptr<GstMessage> message(
      gst_bus_timed_pop_filtered(bus.get(), GST_SECOND, GST_MESSAGE_ERROR), false);
  if (message) std::cout << "error from " << GST_MESSAGE_SRC_NAME(message.get()) << '\n';
  // prints: error from source
  //! [control]
}

void argument_checks(GstElement *pipeline) {
  //! [argument_checks]
  // Check the arguments of your own functions. The message is your description and a fixed text.
  const auto stop_element = [](GstElement *element) {
    Media_Helper::is_element_or_throw(element, "stop_element: element");
    gst_element_set_state(element, GST_STATE_NULL);
  };
  stop_element(pipeline);
  try {
    stop_element(nullptr);
  } catch (const kel::tavren::Backend_Error<std::runtime_error> &error) {
    std::cout << error.what() << '\n';
    // prints: stop_element: element is not a GstElement *.
  }
  //! [argument_checks]
}

void peers_and_ancestry(GstElement *pipeline) {
  //! [peers_and_ancestry]
  GstElement *const source =
      Media_Helper::create_and_add_element_to_pipeline("videotestsrc", pipeline, "camera");
  GstElement *const sink =
      Media_Helper::create_and_add_element_to_pipeline("fakesink", pipeline, "sink");
  Media_Helper::gst_element_link_many_or_throw(source, sink, nullptr);

  const boost::intrusive_ptr<GstElement> upstream(
      Media_Helper::get_element_sink_peer_or_throw(sink), false);
  std::cout << GST_ELEMENT_NAME(upstream.get()) << '\n';
  // prints: camera
  const boost::intrusive_ptr<GstElement> top(Media_Helper::get_most_parent(sink), false);
  std::cout << GST_ELEMENT_NAME(top.get()) << '\n';
  // prints: recording
  Media_Helper::verify_element_top_parent(sink, pipeline);
  //! [peers_and_ancestry]
}

void element_types(GstElement *pipeline) {
  //! [element_types]
  // Loads the plugin, so this also checks that an element can be created.
  const auto tee_type = Media_Helper::get_element_type("tee");
  Media_Helper::create_and_add_element_to_pipeline("tee", pipeline, "");
  if (Media_Helper::bin_has_element_type(GST_BIN(pipeline), tee_type)) std::cout << "a tee\n";
  // prints: a tee
  //! [element_types]
}

void bin_search(GstElement *pipeline) {
  //! [bin_search]
  const boost::intrusive_ptr<GstCaps> caps(gst_caps_from_string("video/x-h264"), false);
  GstElement *const sink =
      Media_Helper::create_and_add_element_to_pipeline("appsink", pipeline, "pictures");
  g_object_set(sink, "caps", caps.get(), nullptr);

  const boost::intrusive_ptr<GstElement> found(
      Media_Helper::find_appsink_with_caps(GST_BIN(pipeline), caps.get()), false);
  std::cout << (found ? GST_ELEMENT_NAME(found.get()) : "no appsink") << '\n';
  // prints: pictures
  std::cout << Media_Helper::find_all_appsinks(GST_BIN(pipeline)).size() << " appsink\n";
  // prints: 1 appsink
  //! [bin_search]
}
