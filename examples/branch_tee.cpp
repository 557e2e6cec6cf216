// Adds a branch to a playing tee, pulls a sample from it, and removes the branch again.

#include <future>
#include <iostream>

#include <tavren/capture/media_helper.h>

using boost::intrusive_ptr;
using kel::tavren::capture::Media_Helper;

namespace {

// Called while no buffer passes the pad, in most cases on a streaming thread.
GstPadProbeReturn on_idle(GstPad *tee_pad, GstPadProbeInfo *, gpointer unlinked) noexcept {
  gst_pad_unlink(tee_pad, intrusive_ptr<GstPad>(gst_pad_get_peer(tee_pad), false).get());
  static_cast<std::promise<void> *>(unlinked)->set_value();
  return GST_PAD_PROBE_REMOVE;
}

}  // namespace

int main(int argc, char **argv) {
  gst_init(&argc, &argv);
  std::promise<void> unlinked;  // must outlive the streaming threads
  try {
    GstElement *const parsed = Media_Helper::gst_parse_launch_or_throw(
        "audiotestsrc is-live=true ! tee name=tee ! fakesink");
    const intrusive_ptr<GstElement> pipeline(GST_ELEMENT(gst_object_ref_sink(parsed)), false);
    kel::tavren::Scope_Exit_Guard stop;
    kel::tavren::arm(stop, [&pipeline] { gst_element_set_state(pipeline.get(), GST_STATE_NULL); });
    const intrusive_ptr<GstElement> tee(
        Media_Helper::gst_bin_get_by_name_or_throw(GST_BIN(pipeline.get()), "tee"), false);
    Media_Helper::gst_element_set_state_or_throw(pipeline.get(), GST_STATE_PLAYING, "starting");

    // Start the branch before linking it: an element that is not running refuses buffers.
    GstElement *const sink =
        Media_Helper::create_and_add_element_to_pipeline("appsink", pipeline.get(), "");
    g_object_set(sink, "async", FALSE, "max-buffers", 1, "drop", TRUE, nullptr);
    Media_Helper::gst_element_sync_state_with_parent_or_throw(sink);
    Media_Helper::link_tee_to_element(tee.get(), sink);
    GstSample *sample = nullptr;
    g_signal_emit_by_name(sink, "try-pull-sample", 5 * GST_SECOND, &sample);
    const intrusive_ptr<GstSample> sample_owner(sample, false);
    std::cout << (sample != nullptr ? "sample from the branch\n" : "no sample\n");

    // No EOS: an appsink has nothing to finish. A file sink needs one before it is stopped.
    const intrusive_ptr<GstPad> tee_pad(Media_Helper::get_element_sink_peer_pad_or_throw(sink),
                                        false);
    gst_pad_add_probe(tee_pad.get(), GST_PAD_PROBE_TYPE_IDLE, on_idle, &unlinked, nullptr);
    if (unlinked.get_future().wait_for(std::chrono::seconds(5)) != std::future_status::ready)
      throw std::runtime_error("the tee is stuck");
    gst_element_release_request_pad(tee.get(), tee_pad.get());
    gst_element_set_state(sink, GST_STATE_NULL);
    gst_bin_remove(GST_BIN(pipeline.get()), sink);
    std::cout << Media_Helper::get_element_src_pads(tee.get()).size() << " branch left\n";
  } catch (const std::exception &error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
