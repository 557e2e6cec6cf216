// Links.

#include "scenario.h"

namespace kel::tavren::tests {

using capture::Media_Helper;

std::vector<Scenario> link_scenarios() {
  return {
      {"link_pad_to_element", "linked",
       [] {
         const Element source = make_element("fakesrc");
         const Element sink = make_element("fakesink");
         const Pad pad = static_pad(source, "src");
         return Call{{{"pad", pad}, {"element", sink}, {"sink pad", static_pad(sink, "sink")}},
                     [pad, source, sink] {
                       return number_from([&] {
                         return Media_Helper::link_pad_to_element(pad.get(), sink.get());
                       });
                     }};
       }},
      {"link_pad_to_element", "refused",
       [] {
         const auto [source, sink] = make_linked();
         const Pad pad = static_pad(source, "src");
         return Call{{{"pad", pad}, {"element", sink}, {"sink pad", static_pad(sink, "sink")}},
                     [pad, source = source, sink = sink] {
                       return number_from([&] {
                         return Media_Helper::link_pad_to_element(pad.get(), sink.get());
                       });
                     }};
       }},
      {"link_pad_to_element", "nulls",
       [] {
         return Call{{}, [] {
                       return number_from(
                           [] { return Media_Helper::link_pad_to_element(nullptr, nullptr); });
                     }};
       }},
      {"unlink_pad_from_element", "unlinked",
       [] {
         const auto [source, sink] = make_linked();
         const Pad pad = static_pad(source, "src");
         return Call{{{"pad", pad}, {"element", sink}, {"sink pad", static_pad(sink, "sink")}},
                     [pad, source = source, sink = sink] {
                       return number_from([&] {
                         return Media_Helper::unlink_pad_from_element(pad.get(), sink.get());
                       });
                     }};
       }},
      {"unlink_pad_from_element", "not linked",
       [] {
         const Element source = make_element("fakesrc");
         const Element sink = make_element("fakesink");
         const Pad pad = static_pad(source, "src");
         return Call{{{"pad", pad}, {"element", sink}, {"sink pad", static_pad(sink, "sink")}},
                     [pad, sink] {
                       return number_from([&] {
                         return Media_Helper::unlink_pad_from_element(pad.get(), sink.get());
                       });
                     }};
       }},
      {"unlink_pad_from_element", "nulls",
       [] {
         return Call{{}, [] {
                       return number_from(
                           [] { return Media_Helper::unlink_pad_from_element(nullptr, nullptr); });
                     }};
       }},
      {"link_element_to_pad", "linked",
       [] {
         const Element source = make_element("fakesrc");
         const Element sink = make_element("fakesink");
         const Pad pad = static_pad(sink, "sink");
         return Call{{{"element", source}, {"pad", pad}, {"src pad", static_pad(source, "src")}},
                     [source, sink, pad] {
                       return number_from([&] {
                         return Media_Helper::link_element_to_pad(source.get(), pad.get());
                       });
                     }};
       }},
      {"link_element_to_pad", "no src pad",
       [] {
         const Element sink = make_element("fakesink");
         const Pad pad = static_pad(sink, "sink");
         return Call{{{"element", sink}, {"pad", pad}}, [sink, pad] {
                       return number_from([&] {
                         return Media_Helper::link_element_to_pad(sink.get(), pad.get());
                       });
                     }};
       }},
      {"link_element_to_pad", "refused",
       [] {
         const auto [source, sink] = make_linked();
         const Element other = make_element("fakesrc");
         const Pad pad = static_pad(sink, "sink");
         return Call{{{"element", other}, {"pad", pad}, {"src pad", static_pad(other, "src")}},
                     [source = source, sink = sink, other, pad] {
                       return number_from([&] {
                         return Media_Helper::link_element_to_pad(other.get(), pad.get());
                       });
                     }};
       }},
      {"link_element_to_pad", "nulls",
       [] {
         return Call{{}, [] {
                       return number_from(
                           [] { return Media_Helper::link_element_to_pad(nullptr, nullptr); });
                     }};
       }},
      {"link_pad_to_element_or_throw", "linked",
       [] {
         const Element source = make_element("fakesrc", "a_source_with_a_name");
         const Element sink = make_element("fakesink", "a_sink_with_a_name");
         const Pad pad = static_pad(source, "src");
         return Call{{{"source", source},
                      {"pad", pad},
                      {"element", sink},
                      {"sink pad", static_pad(sink, "sink")}},
                     [source, pad, sink] {
                       return done([&] {
                         Media_Helper::link_pad_to_element_or_throw(pad.get(), sink.get());
                       });
                     }};
       }},
      {"link_pad_to_element_or_throw", "refused",
       [] {
         const auto [source, sink] = make_linked();
         const Pad pad = static_pad(source, "src");
         return Call{{{"source", source},
                      {"pad", pad},
                      {"element", sink},
                      {"sink pad", static_pad(sink, "sink")}},
                     [pad, sink = sink] {
                       return done([&] {
                         Media_Helper::link_pad_to_element_or_throw(pad.get(), sink.get());
                       });
                     }};
       }},
      {"link_pad_to_element_or_throw", "a pad of no element, refused",
       [] {
         const auto [source, sink] = make_linked();
         const Pad pad = make_pad("a_pad_of_no_element", GST_PAD_SRC);
         return Call{{{"pad", pad}, {"element", sink}, {"sink pad", static_pad(sink, "sink")}},
                     [pad, source = source, sink = sink] {
                       return done([&] {
                         Media_Helper::link_pad_to_element_or_throw(pad.get(), sink.get());
                       });
                     }};
       }},
      {"link_pad_to_element_or_throw", "no sink pad",
       [] {
         const Element source = make_element("fakesrc", "a_source_with_a_name");
         const Pad pad = static_pad(source, "src");
         return Call{{{"pad", pad}, {"element", source}}, [pad, source] {
                       return done([&] {
                         Media_Helper::link_pad_to_element_or_throw(pad.get(), source.get());
                       });
                     }};
       }},
      {"link_pad_to_element_or_throw", "no element",
       [] {
         const Pad pad = make_pad("src", GST_PAD_SRC);
         return Call{{{"pad", pad}}, [pad] {
                       return done(
                           [&] { Media_Helper::link_pad_to_element_or_throw(pad.get(), nullptr); });
                     }};
       }},
      {"link_pad_to_element_or_throw", "no pad",
       [] {
         const Element sink = make_element("fakesink");
         return Call{{{"element", sink}}, [sink] {
                       return done([&] {
                         Media_Helper::link_pad_to_element_or_throw(nullptr, sink.get());
                       });
                     }};
       }},
      {"gst_element_link_many_or_throw", "a chain of four",
       [] {
         const Element source = make_element("fakesrc", "a_source_with_a_name");
         const Element first = make_element("identity", "the_first_parser");
         const Element second = make_element("identity", "the_second_parser");
         const Element sink = make_element("fakesink", "a_sink_with_a_name");
         return Call{{{"source", source}, {"first", first}, {"second", second}, {"sink", sink}},
                     [source, first, second, sink] {
                       return done([&] {
                         Media_Helper::gst_element_link_many_or_throw(
                             source.get(), first.get(), second.get(), sink.get(), nullptr);
                       });
                     }};
       },
       Trait::KEEPS_PARTIAL_WORK},
      {"gst_element_link_many_or_throw", "the last refuses",
       [] {
         const Element source = make_element("fakesrc", "a_source_with_a_name");
         const Element first = make_element("identity", "the_first_parser");
         const Element other = make_element("fakesrc", "another_source");
         return Call{{{"source", source}, {"first", first}, {"other", other}},
                     [source, first, other] {
                       return done([&] {
                         Media_Helper::gst_element_link_many_or_throw(source.get(), first.get(),
                                                                      other.get(), nullptr);
                       });
                     }};
       },
       Trait::KEEPS_PARTIAL_WORK},
      {"gst_element_link_many_or_throw", "the last is a pad",
       [] {
         const Element source = make_element("fakesrc", "a_source_with_a_name");
         const Element first = make_element("identity", "the_first_parser");
         const Pad pad = make_pad("src", GST_PAD_SRC);
         return Call{{{"source", source}, {"first", first}, {"pad", pad}}, [source, first, pad] {
                       return done([&] {
                         Media_Helper::gst_element_link_many_or_throw(
                             source.get(), first.get(), disguise<GstElement>(pad), nullptr);
                       });
                     }};
       },
       Trait::KEEPS_PARTIAL_WORK},
      {"gst_element_link_many_or_throw", "one element alone",
       [] {
         const Element source = make_element("fakesrc", "a_source_with_a_name");
         return Call{{{"source", source}}, [source] {
                       return done([&] {
                         Media_Helper::gst_element_link_many_or_throw(source.get(), nullptr);
                       });
                     }};
       }},
  };
}

}  // namespace kel::tavren::tests
