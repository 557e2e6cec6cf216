// Construction of elements.

#include "log_watch.h"
#include "scenario.h"

namespace kel::tavren::tests {

using capture::Media_Helper;

std::vector<Scenario> construction_scenarios() {
  return {
      {"gst_element_factory_find_or_throw", "found",
       [] {
         return Call{
             {{"factory", Factory(gst_element_factory_find("identity"), gst_object_unref).get()}},
             [] {
               const Factory factory(
                   disturbed(
                       [] { return Media_Helper::gst_element_factory_find_or_throw("identity"); }),
                   gst_object_unref);
               return name_of(factory.get());
             }};
       }},
      {"gst_element_factory_find_or_throw", "missing",
       [] {
         return Call{{}, [] {
                       const Factory factory(
                           disturbed([] {
                             return Media_Helper::gst_element_factory_find_or_throw(
                                 "nosuchfactory");
                           }),
                           gst_object_unref);
                       return name_of(factory.get());
                     }};
       }},
      {"gst_element_factory_make_or_throw", "named",
       [] {
         return Call{{}, [] {
                       return element_from([] {
                         return Media_Helper::gst_element_factory_make_or_throw(
                             "identity", "a_name_of_some_length");
                       });
                     }};
       }},
      {"gst_element_factory_make_or_throw", "named by the framework",
       [] {
         return Call{{}, [] {
                       own(disturbed([] {
                         return Media_Helper::gst_element_factory_make_or_throw("identity", "");
                       }));
                       return std::string("an element");
                     }};
       }},
      {"gst_element_factory_make_or_throw", "no factory",
       [] {
         return Call{{}, [] {
                       own(disturbed([] {
                         return Media_Helper::gst_element_factory_make_or_throw("nosuchfactory",
                                                                                "parser");
                       }));
                       return std::string("an element");
                     }};
       }},
      {"gst_parse_launch_or_throw", "a pipeline",
       [] {
         return Call{{}, [] {
                       own(disturbed([] {
                         return Media_Helper::gst_parse_launch_or_throw("fakesrc ! fakesink");
                       }));
                       return std::string("an element");
                     }};
       }},
      {"gst_parse_launch_or_throw", "nothing to parse",
       [] {
         return Call{{}, [] {
                       own(disturbed([] { return Media_Helper::gst_parse_launch_or_throw(""); }));
                       return std::string("an element");
                     }};
       }},
      {"gst_bin_get_by_name_or_throw", "found",
       [] {
         const Element bin = make_bin("bin");
         const Element parser = make_element("identity", "a_parser_of_that_name");
         gst_bin_add(as_bin(bin), parser.get());
         return Call{{{"bin", bin}, {"element", parser}}, [bin] {
                       return element_from([&] {
                         return Media_Helper::gst_bin_get_by_name_or_throw(as_bin(bin),
                                                                           "a_parser_of_that_name");
                       });
                     }};
       }},
      {"gst_bin_get_by_name_or_throw", "missing",
       [] {
         const Element bin = make_bin("bin");
         return Call{{{"bin", bin}}, [bin] {
                       return element_from([&] {
                         return Media_Helper::gst_bin_get_by_name_or_throw(as_bin(bin),
                                                                           "a_parser_of_that_name");
                       });
                     }};
       }},
      {"gst_bin_get_by_name_or_throw", "a null bin",
       [] {
         return Call{{}, [] {
                       return element_from([] {
                         return Media_Helper::gst_bin_get_by_name_or_throw(nullptr, "parser");
                       });
                     }};
       }},
      {"gst_bin_add_or_throw", "a floating element",
       [] {
         const Element bin = make_bin("bin");
         GstElement *const parser = gst_element_factory_make("identity", "a_parser_of_that_name");
         const Element held(parser);
         return Call{{{"bin", bin}, {"element", held}}, [bin, held] {
                       return done(
                           [&] { Media_Helper::gst_bin_add_or_throw(as_bin(bin), held.get()); });
                     }};
       }},
      {"gst_bin_add_or_throw", "a floating element of a taken name",
       [] {
         const Element bin = make_bin("bin");
         gst_bin_add(as_bin(bin), gst_element_factory_make("identity", "a_parser_of_that_name"));
         const Element held(gst_element_factory_make("identity", "a_parser_of_that_name"));
         return Call{{{"bin", bin}, {"element", held}}, [bin, held] {
                       return done(
                           [&] { Media_Helper::gst_bin_add_or_throw(as_bin(bin), held.get()); });
                     }};
       }},
      {"gst_bin_add_or_throw", "an owned element of a taken name",
       [] {
         const Element bin = make_bin("bin");
         gst_bin_add(as_bin(bin), gst_element_factory_make("identity", "a_parser_of_that_name"));
         const Element held = make_element("identity", "a_parser_of_that_name");
         return Call{{{"bin", bin}, owned("element", held)}, [bin, held] {
                       return done(
                           [&] { Media_Helper::gst_bin_add_or_throw(as_bin(bin), held.get()); });
                     }};
       }},
      {"gst_bin_add_or_throw", "an element of another bin",
       [] {
         const Element bin = make_bin("bin");
         const Element other = make_bin("other");
         const Element held = make_element("identity", "a_parser_of_that_name");
         gst_bin_add(as_bin(other), held.get());
         return Call{{{"bin", bin}, {"other bin", other}, owned("element", held)}, [bin, held] {
                       return done(
                           [&] { Media_Helper::gst_bin_add_or_throw(as_bin(bin), held.get()); });
                     }};
       }},
      {"gst_bin_add_or_throw", "no bin",
       [] {
         const Element held = make_element("identity");
         return Call{{{"element", held}}, [held] {
                       return done(
                           [&] { Media_Helper::gst_bin_add_or_throw(nullptr, held.get()); });
                     }};
       }},
      {"gst_bin_add_or_throw", "no element",
       [] {
         const Element bin = make_bin("bin");
         return Call{{{"bin", bin}}, [bin] {
                       return done(
                           [&] { Media_Helper::gst_bin_add_or_throw(as_bin(bin), nullptr); });
                     }};
       }},
      {"create_and_add_element_to_bin", "added",
       [] {
         const Element bin = make_bin("bin");
         return Call{{{"bin", bin}}, [bin] {
                       return name_of(disturbed([&] {
                         return Media_Helper::create_and_add_element_to_bin(
                             "identity", bin.get(), "a_parser_of_that_name");
                       }));
                     }};
       }},
      {"create_and_add_element_to_bin", "a taken name",
       [] {
         const Element bin = make_bin("bin");
         gst_bin_add(as_bin(bin), gst_element_factory_make("identity", "a_parser_of_that_name"));
         return Call{{{"bin", bin}}, [bin] {
                       return name_of(disturbed([&] {
                         return Media_Helper::create_and_add_element_to_bin(
                             "identity", bin.get(), "a_parser_of_that_name");
                       }));
                     }};
       }},
      {"create_and_add_element_to_bin", "no factory",
       [] {
         const Element bin = make_bin("bin");
         return Call{{{"bin", bin}}, [bin] {
                       return name_of(disturbed([&] {
                         return Media_Helper::create_and_add_element_to_bin("nosuchfactory",
                                                                            bin.get(), "parser");
                       }));
                     }};
       }},
      {"create_and_add_element_to_bin", "no bin",
       [] {
         const Element queue = make_element("queue");
         return Call{{{"element", queue}}, [queue] {
                       const Allowed_Log cast("invalid cast from 'GstQueue' to 'GstBin'");
                       return name_of(disturbed([&] {
                         return Media_Helper::create_and_add_element_to_bin("identity", queue.get(),
                                                                            "parser");
                       }));
                     }};
       }},
      {"create_and_add_element_to_pipeline", "added",
       [] {
         const Element pipeline = make_element("pipeline");
         return Call{{{"pipeline", pipeline}}, [pipeline] {
                       return name_of(disturbed([&] {
                         return Media_Helper::create_and_add_element_to_pipeline(
                             "identity", pipeline.get(), "a_parser_of_that_name");
                       }));
                     }};
       }},
      {"create_and_add_element_to_pipeline", "a taken name",
       [] {
         const Element pipeline = make_element("pipeline");
         gst_bin_add(as_bin(pipeline),
                     gst_element_factory_make("identity", "a_parser_of_that_name"));
         return Call{{{"pipeline", pipeline}}, [pipeline] {
                       return name_of(disturbed([&] {
                         return Media_Helper::create_and_add_element_to_pipeline(
                             "identity", pipeline.get(), "a_parser_of_that_name");
                       }));
                     }};
       }},
      {"create_and_add_element_to_pipeline", "no factory",
       [] {
         const Element pipeline = make_element("pipeline");
         return Call{{{"pipeline", pipeline}}, [pipeline] {
                       return name_of(disturbed([&] {
                         return Media_Helper::create_and_add_element_to_pipeline(
                             "nosuchfactory", pipeline.get(), "parser");
                       }));
                     }};
       }},
      {"create_and_add_element_to_pipeline", "a null pipeline",
       [] {
         return Call{{}, [] {
                       return name_of(disturbed([] {
                         return Media_Helper::create_and_add_element_to_pipeline("identity",
                                                                                 nullptr, "parser");
                       }));
                     }};
       }},
  };
}

}  // namespace kel::tavren::tests
