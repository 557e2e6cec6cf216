// Links two elements that have no format in common. The exception says so, with a code.

#include <iostream>

#include <tavren/capture/media_helper.h>

using kel::tavren::capture::Media_Helper;

int main(int argc, char **argv) {
  gst_init(&argc, &argv);
  const boost::intrusive_ptr<GstElement> bin(
      GST_ELEMENT(gst_object_ref_sink(gst_bin_new("camera"))), false);
  try {
    GstElement *source = Media_Helper::create_and_add_element_to_bin("videotestsrc", bin.get(), "");
    GstElement *sink = Media_Helper::create_and_add_element_to_bin("audioresample", bin.get(), "");
    Media_Helper::gst_element_link_many_or_throw(source, sink, nullptr);
  } catch (const kel::tavren::Backend_Error<std::runtime_error> &error) {
    std::cout << "error 0x" << std::hex << error.code() << ": " << error.what() << '\n';
  }
}
