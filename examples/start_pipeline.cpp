// Builds and starts a pipeline. A step that fails throws an exception with a code and a message.

#include <iostream>

#include <tavren/capture/media_helper.h>

using boost::intrusive_ptr;
using kel::tavren::Backend_Error;
using kel::tavren::capture::Media_Helper;

int main(int argc, char **argv) {
  gst_init(&argc, &argv);
  try {
    // A new pipeline has a floating reference: sink it, then the handle owns it.
    const intrusive_ptr<GstElement> pipeline(
        GST_ELEMENT(gst_object_ref_sink(
            Media_Helper::gst_element_factory_make_or_throw("pipeline", "player"))),
        false);
    // A pipeline must be in the NULL state when its last reference is dropped.
    kel::tavren::Scope_Exit_Guard stop;
    kel::tavren::arm(stop, [&pipeline] { gst_element_set_state(pipeline.get(), GST_STATE_NULL); });

    // The pipeline owns its elements; these pointers are borrowed.
    GstElement *const source =
        Media_Helper::create_and_add_element_to_pipeline("filesrc", pipeline.get(), "");
    GstElement *const sink =
        Media_Helper::create_and_add_element_to_pipeline("fakesink", pipeline.get(), "");
    Media_Helper::gst_element_link_many_or_throw(source, sink, nullptr);

    // The file does not exist, so the source refuses to start.
    g_object_set(source, "location", "/nonexistent/recording.mkv", nullptr);
    Media_Helper::gst_element_set_state_or_throw(pipeline.get(), GST_STATE_PLAYING, "starting");
  } catch (const Backend_Error<std::runtime_error> &error) {
    std::cout << "error 0x" << std::hex << error.code() << ": " << error.what() << '\n';
  }
}
