// Runs the C++ blocks of the pages; used by run-code.

#include <iostream>
#include <sstream>

#include <tavren/capture/media_helper.h>

using kel::tavren::capture::Media_Helper;

#define GIVEN_OBJECTS                                                                              \
  [[maybe_unused]] GstElement *pipeline, [[maybe_unused]] GstBin *bin,                             \
      [[maybe_unused]] GstElement *element, [[maybe_unused]] GstElement *tee

using Block = void (*)(GIVEN_OBJECTS);

// Runs a block with a new pipeline: a source, a tee and a sink, and a bin with one element.
inline void run_block(Block block) {
  using Element = boost::intrusive_ptr<GstElement>;
  const Element pipeline(GST_ELEMENT(gst_object_ref_sink(Media_Helper::gst_parse_launch_or_throw(
                             "audiotestsrc ! tee name=tee ! queue ! fakesink sync=true "
                             "( name=bin identity name=element )"))),
                         false);
  kel::tavren::Scope_Exit_Guard stop;
  kel::tavren::arm(stop, [&pipeline] { gst_element_set_state(pipeline.get(), GST_STATE_NULL); });
  const auto find = [&pipeline](const char *name) {
    return Element(Media_Helper::gst_bin_get_by_name_or_throw(GST_BIN(pipeline.get()), name),
                   false);
  };
  const Element bin = find("bin");
  const Element element = find("element");
  const Element tee = find("tee");
  block(pipeline.get(), GST_BIN(bin.get()), element.get(), tee.get());
}
