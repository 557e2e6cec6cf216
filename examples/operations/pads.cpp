// Pads: link them, add branches to a tee and streams to a multiqueue.

#include <iostream>

#include <tavren/capture/media_helper.h>

#include "operations.h"

using kel::tavren::capture::Media_Helper;

void pads_and_links(GstElement *pipeline) {
  //! [pads_and_links]
  const auto add = [pipeline](const char *factory, const char *name) {
    return Media_Helper::create_and_add_element_to_pipeline(factory, pipeline, name);
  };
  GstElement *const source = add("videotestsrc", "camera");
  GstElement *const queue = add("queue", "buffer");
  GstElement *const sink = add("fakesink", "sink");
  Media_Helper::gst_element_link_many_or_throw(source, queue, sink, nullptr);

  for (const boost::intrusive_ptr<GstPad> &queue_pad : Media_Helper::get_element_src_pads(queue))
    std::cout << GST_PAD_NAME(queue_pad.get()) << '\n';
  // prints: src
  const boost::intrusive_ptr<GstPad> pad(
      Media_Helper::gst_element_get_static_pad_or_throw(add("videotestsrc", "door"), "src"), false);
  try {
    Media_Helper::link_pad_to_element_or_throw(pad.get(), add("audioresample", "speaker"));
  } catch (const kel::tavren::Backend_Error<std::runtime_error> &error) {
    // The message names the pads and their elements, and ends with the reason.
    const std::string message = error.what();
    std::cout << message.substr(message.find('(')) << '\n';
    // prints: (GST_PAD_LINK_NOFORMAT: pads do not have common format).
  }
  //! [pads_and_links]
}

void tee_branches(GstElement *pipeline) {
  //! [tee_branches]
  GstElement *const tee = Media_Helper::create_and_add_element_to_pipeline("tee", pipeline, "tee");
  GstElement *const queue =
      Media_Helper::create_and_add_element_to_pipeline("queue", pipeline, "branch");
  Media_Helper::link_tee_to_element(tee, queue);

  // To remove the branch, unlink its pad, release it, and drop the reference. If the pipeline is
  // playing, first wait for the pad to be idle, as examples/branch_tee.cpp does.
  const boost::intrusive_ptr<GstPad> tee_pad(
      Media_Helper::get_element_sink_peer_pad_or_throw(queue), false);
  Media_Helper::unlink_pad_from_element(tee_pad.get(), queue);
  gst_element_release_request_pad(tee, tee_pad.get());
  std::cout << Media_Helper::get_element_src_pads(tee).size() << " branches\n";
  // prints: 0 branches
  //! [tee_branches]
}

void multiqueue_pads(GstElement *pipeline) {
  //! [multiqueue_pads]
  GstElement *const multiqueue =
      Media_Helper::create_and_add_element_to_pipeline("multiqueue", pipeline, "");
  const auto [sink, src] = Media_Helper::request_new_multiqueue_pads(multiqueue, "", nullptr);
  const boost::intrusive_ptr<GstPad> sink_pad(sink, false);
  const boost::intrusive_ptr<GstPad> src_pad(src, false);
  std::cout << GST_PAD_NAME(sink) << " leads to " << GST_PAD_NAME(src) << '\n';
  // prints: sink_0 leads to src_0
  gst_element_release_request_pad(multiqueue, sink_pad.get());  // removes both pads
  //! [multiqueue_pads]
}
