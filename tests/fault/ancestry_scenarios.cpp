// Peers and ancestors.

#include "scenario.h"

namespace kel::tavren::tests {

using capture::Media_Helper;

namespace {

std::string peer_pad_of(GstElement *element) {
  return pad_from([&] { return Media_Helper::get_element_sink_peer_pad_or_throw(element); });
}

std::string peer_of(GstElement *element) {
  return element_from([&] { return Media_Helper::get_element_sink_peer_or_throw(element); });
}

// The calls with which both peers of a sink are looked up.

using Lookup = std::string (*)(GstElement *);

Call linked(Lookup look_up) {
  const auto [source, sink] = make_linked();
  return {{{"source", source},
           {"peer", static_pad(source, "src")},
           {"sink", sink},
           {"pad", static_pad(sink, "sink")}},
          [look_up, source = source, sink = sink] { return look_up(sink.get()); }};
}

Call not_linked(Lookup look_up) {
  const Element sink = make_element("fakesink", "a_sink_with_a_name");
  return {{{"sink", sink}, {"pad", static_pad(sink, "sink")}},
          [look_up, sink] { return look_up(sink.get()); }};
}

Call without_sink_pad(Lookup look_up) {
  const Element source = make_element("fakesrc", "a_source_with_a_name");
  return {{{"source", source}}, [look_up, source] { return look_up(source.get()); }};
}

Call without_element(Lookup look_up) {
  return {{}, [look_up] { return look_up(nullptr); }};
}

}  // namespace

std::vector<Scenario> ancestry_scenarios() {
  return {
      {"get_element_sink_peer_pad_or_throw", "linked", [] { return linked(peer_pad_of); }},
      {"get_element_sink_peer_pad_or_throw", "not linked", [] { return not_linked(peer_pad_of); }},
      {"get_element_sink_peer_pad_or_throw", "no sink pad",
       [] { return without_sink_pad(peer_pad_of); }},
      {"get_element_sink_peer_pad_or_throw", "no element",
       [] { return without_element(peer_pad_of); }},
      {"get_element_sink_peer_or_throw", "linked", [] { return linked(peer_of); }},
      {"get_element_sink_peer_or_throw", "linked to a pad of no element",
       [] {
         const Pad pad = make_pad("src", GST_PAD_SRC);
         const Element sink = make_element("fakesink", "a_sink_with_a_name");
         gst_pad_link(pad.get(), static_pad(sink, "sink").get());
         return Call{{{"peer", pad}, {"sink", sink}, {"pad", static_pad(sink, "sink")}},
                     [pad, sink] { return peer_of(sink.get()); }};
       }},
      {"get_element_sink_peer_or_throw", "not linked", [] { return not_linked(peer_of); }},
      {"get_element_sink_peer_or_throw", "no sink pad", [] { return without_sink_pad(peer_of); }},
      {"get_element_sink_peer_or_throw", "no element", [] { return without_element(peer_of); }},
      {"get_most_parent", "two bins deep",
       [] {
         const Element pipeline = make_element("pipeline", "a_pipeline_with_a_name");
         const Element bin = make_bin("bin");
         const Element element = make_element("identity");
         gst_bin_add(as_bin(pipeline), bin.get());
         gst_bin_add(as_bin(bin), element.get());
         return Call{{{"pipeline", pipeline}, {"bin", bin}, {"element", element}},
                     [pipeline, bin, element] {
                       return element_from(
                           [&] { return Media_Helper::get_most_parent(element.get()); });
                     }};
       }},
      {"get_most_parent", "no parent",
       [] {
         const Element pipeline = make_element("pipeline", "a_pipeline_with_a_name");
         return Call{{{"pipeline", pipeline}}, [pipeline] {
                       return element_from(
                           [&] { return Media_Helper::get_most_parent(pipeline.get()); });
                     }};
       }},
      {"get_most_parent", "no element",
       [] {
         return Call{{}, [] {
                       return element_from([] { return Media_Helper::get_most_parent(nullptr); });
                     }};
       }},
      {"verify_element_top_parent", "its pipeline",
       [] {
         const Element pipeline = make_element("pipeline");
         const Element element = make_element("identity");
         gst_bin_add(as_bin(pipeline), element.get());
         return Call{{{"pipeline", pipeline}, {"element", element}}, [pipeline, element] {
                       return done([&] {
                         Media_Helper::verify_element_top_parent(element.get(), pipeline.get());
                       });
                     }};
       }},
      {"verify_element_top_parent", "another pipeline",
       [] {
         const Element pipeline = make_element("pipeline");
         const Element other = make_element("pipeline");
         const Element element = make_element("identity");
         gst_bin_add(as_bin(pipeline), element.get());
         return Call{{{"pipeline", pipeline}, {"other pipeline", other}, {"element", element}},
                     [pipeline, other, element] {
                       return done([&] {
                         Media_Helper::verify_element_top_parent(element.get(), other.get());
                       });
                     }};
       }},
      {"verify_element_top_parent", "itself, alone",
       [] {
         const Element pipeline = make_element("pipeline");
         return Call{{{"pipeline", pipeline}}, [pipeline] {
                       return done([&] {
                         Media_Helper::verify_element_top_parent(pipeline.get(), pipeline.get());
                       });
                     }};
       }},
      {"verify_element_top_parent", "alone, and not the pipeline",
       [] {
         const Element pipeline = make_element("pipeline");
         const Element element = make_element("identity");
         return Call{{{"pipeline", pipeline}, {"element", element}}, [pipeline, element] {
                       return done([&] {
                         Media_Helper::verify_element_top_parent(element.get(), pipeline.get());
                       });
                     }};
       }},
      {"verify_element_top_parent", "no element",
       [] {
         const Element pipeline = make_element("pipeline");
         return Call{{{"pipeline", pipeline}}, [pipeline] {
                       return done([&] {
                         Media_Helper::verify_element_top_parent(nullptr, pipeline.get());
                       });
                     }};
       }},
      {"verify_element_top_parent", "no pipeline",
       [] {
         const Element element = make_element("identity");
         return Call{{{"element", element}}, [element] {
                       return done([&] {
                         Media_Helper::verify_element_top_parent(element.get(), nullptr);
                       });
                     }};
       }},
  };
}

}  // namespace kel::tavren::tests
