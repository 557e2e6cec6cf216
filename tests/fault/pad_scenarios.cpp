// Lists of pads, static pads and probes.

#include "log_watch.h"
#include "scenario.h"

namespace kel::tavren::tests {

using capture::Media_Helper;

namespace {

std::string count_of(const Media_Helper::Pad_List &pads) {
  return std::to_string(pads.size()) + " pads";
}

// Adds a probe that removes itself immediately. Rethrows the exception of the call, and appends how
// often the data was freed.
std::string probe_with_data(const Element &element, GstPadProbeType mask) {
  const Allowed_Log no_mask("mask != 0");
  int freed = 0;
  try {
    disturbed([&] {
      Media_Helper::add_probe_to_sink_pad_or_throw(
          element.get(), mask,
          [](GstPad *, GstPadProbeInfo *, gpointer) { return GST_PAD_PROBE_REMOVE; }, &freed,
          [](gpointer data) { ++*static_cast<int *>(data); });
    });
  } catch (const Backend_Error<std::runtime_error> &error) {
    return std::string(error.what()) + ", data freed " + std::to_string(freed) + " times";
  }
  return "done";
}

}  // namespace

std::vector<Scenario> pad_scenarios() {
  return {
      {"get_element_pads", "all pads",
       [] {
         const Element tee = make_tee(5);
         return Call{{{"tee", tee}, {"pad", static_pad(tee, "src_0")}}, [tee] {
                       return count_of(disturbed([&] {
                         return Media_Helper::get_element_pads(tee.get(), gst_element_iterate_pads);
                       }));
                     }};
       }},
      {"get_element_pads", "no element",
       [] {
         return Call{{}, [] {
                       return count_of(disturbed([] {
                         return Media_Helper::get_element_pads(nullptr, gst_element_iterate_pads);
                       }));
                     }};
       }},
      {"get_element_pads", "no iterator",
       [] {
         const Element tee = make_tee(1);
         return Call{{{"tee", tee}}, [tee] {
                       const Media_Helper::Pad_Iterator_Source none =
                           [](GstElement *) -> GstIterator * { return nullptr; };
                       return count_of(disturbed(
                           [&] { return Media_Helper::get_element_pads(tee.get(), none); }));
                     }};
       }},
      {"get_element_src_pads", "five pads",
       [] {
         const Element tee = make_tee(5);
         return Call{{{"tee", tee}, {"pad", static_pad(tee, "src_4")}}, [tee] {
                       return count_of(disturbed(
                           [&] { return Media_Helper::get_element_src_pads(tee.get()); }));
                     }};
       }},
      {"get_element_src_pads", "no pads",
       [] {
         const Element sink = make_element("fakesink", "sink");
         return Call{{{"element", sink}}, [sink] {
                       return count_of(disturbed(
                           [&] { return Media_Helper::get_element_src_pads(sink.get()); }));
                     }};
       }},
      {"get_element_src_pads", "no element",
       [] {
         return Call{{}, [] {
                       return count_of(
                           disturbed([] { return Media_Helper::get_element_src_pads(nullptr); }));
                     }};
       }},
      {"get_element_sink_pads", "one pad",
       [] {
         const Element tee = make_tee(5);
         return Call{{{"tee", tee}, {"pad", static_pad(tee, "sink")}}, [tee] {
                       return count_of(disturbed(
                           [&] { return Media_Helper::get_element_sink_pads(tee.get()); }));
                     }};
       }},
      {"get_element_sink_pads", "no element",
       [] {
         return Call{{}, [] {
                       return count_of(
                           disturbed([] { return Media_Helper::get_element_sink_pads(nullptr); }));
                     }};
       }},
      {"gst_element_get_static_pad_or_throw", "a pad",
       [] {
         const Element queue = make_element("queue", "a_queue_with_a_name");
         return Call{{{"element", queue}, {"pad", static_pad(queue, "sink")}}, [queue] {
                       return pad_from([&] {
                         return Media_Helper::gst_element_get_static_pad_or_throw(queue.get(),
                                                                                  "sink");
                       });
                     }};
       }},
      {"gst_element_get_static_pad_or_throw", "no pad",
       [] {
         const Element queue = make_element("queue", "a_queue_with_a_name");
         return Call{{{"element", queue}}, [queue] {
                       return pad_from([&] {
                         return Media_Helper::gst_element_get_static_pad_or_throw(
                             queue.get(), "no_pad_of_that_name");
                       });
                     }};
       }},
      {"gst_element_get_static_pad_or_throw", "no element",
       [] {
         return Call{{}, [] {
                       return pad_from([] {
                         return Media_Helper::gst_element_get_static_pad_or_throw(nullptr, "sink");
                       });
                     }};
       }},
      {"add_probe_to_sink_pad_or_throw", "added",
       [] {
         const Element sink = make_element("fakesink", "a_sink_with_a_name");
         return Call{{{"element", sink}, {"pad", static_pad(sink, "sink")}}, [sink] {
                       return done([&] {
                         Media_Helper::add_probe_to_sink_pad_or_throw(
                             sink.get(), GST_PAD_PROBE_TYPE_BUFFER,
                             [](GstPad *, GstPadProbeInfo *, gpointer) { return GST_PAD_PROBE_OK; },
                             nullptr, nullptr);
                       });
                     }};
       }},
      {"add_probe_to_sink_pad_or_throw", "removes itself at once",
       [] {
         const Element sink = make_element("fakesink", "a_sink_with_a_name");
         return Call{
             {{"element", sink}, {"pad", static_pad(sink, "sink")}}, [sink] {
               return done([&] {
                 Media_Helper::add_probe_to_sink_pad_or_throw(
                     sink.get(), GST_PAD_PROBE_TYPE_IDLE,
                     [](GstPad *, GstPadProbeInfo *, gpointer) { return GST_PAD_PROBE_REMOVE; },
                     nullptr, nullptr);
               });
             }};
       }},
      {"add_probe_to_sink_pad_or_throw", "no sink pad",
       [] {
         const Element source = make_element("fakesrc", "a_source_with_a_name");
         return Call{{{"element", source}}, [source] {
                       return done([&] {
                         Media_Helper::add_probe_to_sink_pad_or_throw(
                             source.get(), GST_PAD_PROBE_TYPE_BUFFER, nullptr, nullptr, nullptr);
                       });
                     }};
       }},
      {"add_probe_to_sink_pad_or_throw", "removes itself at once, with data",
       [] {
         const Element sink = make_element("fakesink", "a_sink_with_a_name");
         return Call{{{"element", sink}, {"pad", static_pad(sink, "sink")}},
                     [sink] { return probe_with_data(sink, GST_PAD_PROBE_TYPE_IDLE); }};
       }},
      {"add_probe_to_sink_pad_or_throw", "asks for nothing, with data",
       [] {
         const Element sink = make_element("fakesink", "a_sink_with_a_name");
         return Call{{{"element", sink}, {"pad", static_pad(sink, "sink")}},
                     [sink] { return probe_with_data(sink, GST_PAD_PROBE_TYPE_INVALID); }};
       }},
      {"add_probe_to_sink_pad_or_throw", "no element",
       [] {
         return Call{{}, [] {
                       return done([] {
                         Media_Helper::add_probe_to_sink_pad_or_throw(
                             nullptr, GST_PAD_PROBE_TYPE_BUFFER, nullptr, nullptr, nullptr);
                       });
                     }};
       }},
  };
}

}  // namespace kel::tavren::tests
