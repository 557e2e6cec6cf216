// Runs the examples of the reference, each with a new pipeline.

#include <exception>
#include <iostream>

#include <tavren/capture/media_helper.h>

#include "operations.h"

using kel::tavren::capture::Media_Helper;

namespace {

void run(void (*example)(GstElement *pipeline)) {
  const boost::intrusive_ptr<GstElement> pipeline(
      GST_ELEMENT(gst_object_ref_sink(
          Media_Helper::gst_element_factory_make_or_throw("pipeline", "recording"))),
      false);
  kel::tavren::Scope_Exit_Guard stop;
  kel::tavren::arm(stop, [&pipeline] { gst_element_set_state(pipeline.get(), GST_STATE_NULL); });
  example(pipeline.get());
}

}  // namespace

int main(int argc, char **argv) {
  gst_init(&argc, &argv);
  try {
    for (const auto example : {construction,
                               control,
                               argument_checks,
                               peers_and_ancestry,
                               element_types,
                               bin_search,
                               pads_and_links,
                               tee_branches,
                               multiqueue_pads,
                               media_types,
                               element_selection,
                               proxy_selection,
                               media_discovery,
                               caps_readers,
                               errors,
                               handles,
                               keyed_lookup,
                               enumeration_names,
                               time_and_segment_text,
                               queue_report})
      run(example);
  } catch (const std::exception &error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
