// Lists the elements of a bin, from the source to the sink, with the caps of their pads.

#include <iostream>

#include <tavren/capture/media_helper.h>

using boost::intrusive_ptr;
using kel::tavren::Emancipator;
using kel::tavren::capture::Media_Helper;

namespace {

// GStreamer sorts from the sink to the source. The bin must not change during the iteration.
std::vector<intrusive_ptr<GstElement>> elements_of(GstBin *bin) {
  const std::unique_ptr<GstIterator, Emancipator<GstIterator>> iterator(
      gst_bin_iterate_sorted(bin));
  std::vector<intrusive_ptr<GstElement>> elements;
  GValue item = G_VALUE_INIT;
  kel::tavren::Scope_Exit_Guard unset;
  kel::tavren::arm(unset, [&item] { g_value_unset(&item); });
  while (gst_iterator_next(iterator.get(), &item) == GST_ITERATOR_OK)
    elements.emplace(elements.begin(), GST_ELEMENT(g_value_get_object(&item)));
  return elements;
}

void print_caps(const Media_Helper::Pad_List &pads) {
  for (const intrusive_ptr<GstPad> &pad : pads) {
    const intrusive_ptr<GstCaps> caps(gst_pad_get_current_caps(pad.get()), false);
    const std::unique_ptr<char, Emancipator<char>> text(gst_caps_to_string(caps.get()));
    std::cout << "  " << GST_PAD_NAME(pad.get()) << ": " << text.get() << '\n';
  }
}

}  // namespace

int main(int argc, char **argv) {
  gst_init(&argc, &argv);
  try {
    GstElement *const parsed = Media_Helper::gst_parse_launch_or_throw(
        "audiotestsrc ! audio/x-raw,rate=8000,channels=1 ! mulawenc ! fakesink");
    const intrusive_ptr<GstElement> pipeline(GST_ELEMENT(gst_object_ref_sink(parsed)), false);
    kel::tavren::Scope_Exit_Guard stop;
    kel::tavren::arm(stop, [&pipeline] { gst_element_set_state(pipeline.get(), GST_STATE_NULL); });

    // The caps are known once the first buffer has reached the sink.
    Media_Helper::gst_element_set_state_or_throw(pipeline.get(), GST_STATE_PAUSED, "starting");
    gst_element_get_state(pipeline.get(), nullptr, nullptr, 5 * GST_SECOND);
    for (const intrusive_ptr<GstElement> &element : elements_of(GST_BIN(pipeline.get()))) {
      std::cout << GST_ELEMENT_NAME(element.get()) << '\n';
      print_caps(Media_Helper::get_element_sink_pads(element.get()));
      print_caps(Media_Helper::get_element_src_pads(element.get()));
    }
  } catch (const std::exception &error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
