// Argument checks, lookups, construction and control of elements.

#include <map>

#include "log_watch.h"
#include "scenario.h"

namespace kel::tavren::tests {

using capture::Media_Helper;
using capture::MediaType;

namespace {

// Sets a state, then resets the element to NULL.
std::string set_state(const Element &element, GstState state, const std::string &context) {
  const struct Rest {
    GstElement *element;
    ~Rest() { gst_element_set_state(element, GST_STATE_NULL); }
  } rest{element.get()};
  return number_from(
      [&] { return Media_Helper::gst_element_set_state_or_throw(element.get(), state, context); });
}

}  // namespace

std::vector<Scenario> check_and_lookup_scenarios() {
  return {
      {"is_element_or_throw", "an element",
       [] {
         const Element element = make_element("queue");
         return Call{{{"element", element}}, [element] {
                       return done([&] {
                         Media_Helper::is_element_or_throw(element.get(),
                                                           "the element asked about");
                       });
                     }};
       }},
      {"is_element_or_throw", "a null",
       [] {
         return Call{{}, [] {
                       return done([] {
                         Media_Helper::is_element_or_throw(nullptr, "the element asked about");
                       });
                     }};
       }},
      {"is_element_or_throw", "a pad",
       [] {
         const Pad pad = make_pad("src", GST_PAD_SRC);
         return Call{{{"pad", pad}}, [pad] {
                       return done([&] {
                         Media_Helper::is_element_or_throw(disguise<GstElement>(pad),
                                                           "the element asked about");
                       });
                     }};
       }},
      {"is_pad_or_throw", "a pad",
       [] {
         const Element tee = make_element("tee");
         const Pad pad = static_pad(tee, "sink");
         return Call{{{"pad", pad}}, [pad] {
                       return done([&] {
                         Media_Helper::is_pad_or_throw(pad.get(), "the pad asked about here");
                       });
                     }};
       }},
      {"is_pad_or_throw", "a null",
       [] {
         return Call{{}, [] {
                       return done([] {
                         Media_Helper::is_pad_or_throw(nullptr, "the pad asked about here");
                       });
                     }};
       }},
      {"is_pad_or_throw", "a ghost pad",
       [] {
         const Pad pad(
             GST_PAD_CAST(gst_object_ref_sink(gst_ghost_pad_new_no_target("src", GST_PAD_SRC))),
             false);
         return Call{{{"pad", pad}}, [pad] {
                       return done([&] {
                         Media_Helper::is_pad_or_throw(pad.get(), "the pad asked about here");
                       });
                     }};
       }},
      {"is_bin_or_throw", "a pipeline",
       [] {
         const Element pipeline = make_element("pipeline");
         return Call{{{"pipeline", pipeline}}, [pipeline] {
                       return done([&] {
                         Media_Helper::is_bin_or_throw(as_bin(pipeline),
                                                       "the bin asked about here");
                       });
                     }};
       }},
      {"is_bin_or_throw", "a null",
       [] {
         return Call{{}, [] {
                       return done([] {
                         Media_Helper::is_bin_or_throw(nullptr, "the bin asked about here");
                       });
                     }};
       }},
      {"is_bus_or_throw", "a bus",
       [] {
         const Bus bus(gst_bus_new(), false);
         return Call{{{"bus", bus}}, [bus] {
                       return done([&] {
                         Media_Helper::is_bus_or_throw(bus.get(), "the bus asked about here");
                       });
                     }};
       }},
      {"is_bus_or_throw", "a pad",
       [] {
         const Pad pad = make_pad("src", GST_PAD_SRC);
         return Call{{{"pad", pad}}, [pad] {
                       return done([&] {
                         Media_Helper::is_bus_or_throw(disguise<GstBus>(pad),
                                                       "the bus asked about here");
                       });
                     }};
       }},
      {"is_caps_or_throw", "caps",
       [] {
         const Caps caps = make_caps("video/x-raw");
         return Call{{{"caps", caps}}, [caps] {
                       return done([&] {
                         Media_Helper::is_caps_or_throw(caps.get(), "the caps asked about here");
                       });
                     }};
       }},
      {"is_caps_or_throw", "a null",
       [] {
         return Call{{}, [] {
                       return done([] {
                         Media_Helper::is_caps_or_throw(nullptr, "the caps asked about here");
                       });
                     }};
       }},
      {"is_caps_or_throw", "a message",
       [] {
         const boost::intrusive_ptr<GstMessage> message(gst_message_new_eos(nullptr), false);
         return Call{{}, [message] {
                       return done([&] {
                         Media_Helper::is_caps_or_throw(reinterpret_cast<GstCaps *>(message.get()),
                                                        "the caps asked about here");
                       });
                     }};
       }},
      {"is_valid_element_type_or_throw", "a type",
       [] {
         return Call{{}, [] {
                       return done([] {
                         Media_Helper::is_valid_element_type_or_throw(GST_TYPE_BIN,
                                                                      "the type asked about here");
                       });
                     }};
       }},
      {"is_valid_element_type_or_throw", "no type",
       [] {
         return Call{{}, [] {
                       return done([] {
                         Media_Helper::is_valid_element_type_or_throw(G_TYPE_INVALID,
                                                                      "the type asked about here");
                       });
                     }};
       }},
      {"gst_is_initialized_or_throw", "initialised",
       [] {
         return Call{{}, [] {
                       return done([] {
                         Media_Helper::gst_is_initialized_or_throw("call gst_init before all else");
                       });
                     }};
       }},
      {"string_from_map_or_throw_", "a kind with a text",
       [] {
         return Call{{}, [] {
                       const std::map<MediaType, std::string> map{
                           {capture::JPEG, "a text of more than a few letters"}};
                       const std::string message = "there is no text for this kind";
                       return disturbed([&] {
                         return Media_Helper::string_from_map_or_throw_(capture::JPEG, map,
                                                                        message);
                       });
                     }};
       }},
      {"string_from_map_or_throw_", "a kind without",
       [] {
         return Call{{}, [] {
                       const std::map<MediaType, std::string> map{
                           {capture::JPEG, "a text of more than a few letters"}};
                       const std::string message = "there is no text for this kind";
                       return disturbed([&] {
                         return Media_Helper::string_from_map_or_throw_(capture::RTP, map, message);
                       });
                     }};
       }},
      {"string_from_map_or_throw_", "a text with a text",
       [] {
         return Call{{}, [] {
                       const std::string key = "a key of more than a few letters";
                       const std::map<std::string, std::string> map{
                           {key, "a text of more than a few letters"}};
                       const std::string message = "there is no text for this text";
                       return disturbed([&] {
                         return Media_Helper::string_from_map_or_throw_(key, map, message);
                       });
                     }};
       }},
      {"string_from_map_or_throw_", "a text without",
       [] {
         return Call{{}, [] {
                       const std::string key = "a key of more than a few letters";
                       const std::string message = "there is no text for this text";
                       return disturbed([&] {
                         return Media_Helper::string_from_map_or_throw_(key, {}, message);
                       });
                     }};
       }},
  };
}

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

std::vector<Scenario> control_scenarios() {
  return {
      {"gst_element_set_state_or_throw", "follows",
       [] {
         const Element sink = make_element("fakesink", "sink");
         return Call{{{"element", sink}}, [sink] {
                       return set_state(sink, GST_STATE_READY, "while the camera is tuned");
                     }};
       }},
      {"gst_element_set_state_or_throw", "fails in a context",
       [] {
         const Element source = make_element("filesrc", "source");
         return Call{{{"element", source}}, [source] {
                       return set_state(source, GST_STATE_PLAYING, "starting the capture");
                     }};
       }},
      {"gst_element_set_state_or_throw", "fails without a context",
       [] {
         const Element source = make_element("filesrc", "source");
         return Call{{{"element", source}},
                     [source] { return set_state(source, GST_STATE_PLAYING, ""); }};
       }},
      {"gst_element_set_state_or_throw", "no element",
       [] {
         return Call{{}, [] {
                       return number_from([] {
                         return Media_Helper::gst_element_set_state_or_throw(nullptr,
                                                                             GST_STATE_PLAYING, "");
                       });
                     }};
       }},
      {"gst_element_sync_state_with_parent_or_throw", "follows",
       [] {
         const Element bin = make_bin("bin");
         const Element element = make_element("identity", "identity");
         gst_bin_add(as_bin(bin), element.get());
         return Call{{{"bin", bin}, {"element", element}}, [element] {
                       return done([&] {
                         Media_Helper::gst_element_sync_state_with_parent_or_throw(element.get());
                       });
                     }};
       }},
      {"gst_element_sync_state_with_parent_or_throw", "no parent",
       [] {
         const Element element = make_element("identity", "identity");
         return Call{{{"element", element}}, [element] {
                       return done([&] {
                         Media_Helper::gst_element_sync_state_with_parent_or_throw(element.get());
                       });
                     }};
       }},
      {"gst_element_sync_state_with_parent_or_throw", "no element",
       [] {
         return Call{{}, [] {
                       return done([] {
                         Media_Helper::gst_element_sync_state_with_parent_or_throw(nullptr);
                       });
                     }};
       }},
      {"gst_element_get_bus_or_throw", "a bus",
       [] {
         const Element pipeline = make_element("pipeline", "pipeline");
         const Bus bus(gst_element_get_bus(pipeline.get()), false);
         return Call{{{"pipeline", pipeline}, {"bus", bus}}, [pipeline] {
                       const Bus got(disturbed([&] {
                                       return Media_Helper::gst_element_get_bus_or_throw(
                                           pipeline.get());
                                     }),
                                     false);
                       return std::string("a bus");
                     }};
       }},
      {"gst_element_get_bus_or_throw", "no bus",
       [] {
         const Element element = make_element("identity", "identity");
         return Call{{{"element", element}}, [element] {
                       const Bus got(disturbed([&] {
                                       return Media_Helper::gst_element_get_bus_or_throw(
                                           element.get());
                                     }),
                                     false);
                       return std::string("a bus");
                     }};
       }},
      {"gst_element_get_bus_or_throw", "no element",
       [] {
         return Call{{}, [] {
                       const Bus got(disturbed([] {
                                       return Media_Helper::gst_element_get_bus_or_throw(nullptr);
                                     }),
                                     false);
                       return std::string("a bus");
                     }};
       }},
      {"gst_bus_create_watch_or_throw", "a watch",
       [] {
         const Bus bus(gst_bus_new(), false);
         return Call{{{"bus", bus}}, [bus] {
                       const boost::intrusive_ptr<GSource> watch(
                           disturbed([&] {
                             return Media_Helper::gst_bus_create_watch_or_throw(bus.get());
                           }),
                           false);
                       return std::string("a watch");
                     }};
       }},
      {"gst_bus_create_watch_or_throw", "has one",
       [] {
         const Bus bus(gst_bus_new(), false);
         const boost::intrusive_ptr<GSource> first(gst_bus_create_watch(bus.get()), false);
         return Call{{{"bus", bus}}, [bus, first] {
                       const boost::intrusive_ptr<GSource> watch(
                           disturbed([&] {
                             return Media_Helper::gst_bus_create_watch_or_throw(bus.get());
                           }),
                           false);
                       return std::string("a watch");
                     }};
       }},
      {"gst_bus_create_watch_or_throw", "no bus",
       [] {
         return Call{
             {}, [] {
               const boost::intrusive_ptr<GSource> watch(
                   disturbed([] { return Media_Helper::gst_bus_create_watch_or_throw(nullptr); }),
                   false);
               return std::string("a watch");
             }};
       }},
      {"gst_element_get_parent_or_throw", "a parent",
       [] {
         const Element bin = make_bin("bin");
         const Element element = make_element("identity", "identity");
         gst_bin_add(as_bin(bin), element.get());
         return Call{{{"bin", bin}, {"element", element}}, [element] {
                       return element_from([&] {
                         return Media_Helper::gst_element_get_parent_or_throw(element.get());
                       });
                     }};
       }},
      {"gst_element_get_parent_or_throw", "no parent",
       [] {
         const Element element = make_element("identity", "identity");
         return Call{{{"element", element}}, [element] {
                       return element_from([&] {
                         return Media_Helper::gst_element_get_parent_or_throw(element.get());
                       });
                     }};
       }},
      {"gst_element_get_parent_or_throw", "no element",
       [] {
         return Call{{}, [] {
                       return element_from(
                           [] { return Media_Helper::gst_element_get_parent_or_throw(nullptr); });
                     }};
       }},
      {"g_signal_connect_or_throw", "connected",
       [] {
         const Element element = make_element("identity", "identity");
         return Call{{{"element", element}}, [element] {
                       const gulong handler = disturbed([&] {
                         return Media_Helper::g_signal_connect_or_throw(
                             element.get(), "notify::last-message", [] {}, nullptr);
                       });
                       g_signal_handler_disconnect(element.get(), handler);
                       return std::string("connected");
                     }};
       }},
      {"g_signal_connect_or_throw", "no such signal",
       [] {
         const Element element = make_element("identity", "identity");
         return Call{{{"element", element}}, [element] {
                       const Allowed_Log invalid("is invalid for instance");
                       return done([&] {
                         Media_Helper::g_signal_connect_or_throw(
                             element.get(), "there-is-no-such-signal", [] {}, nullptr);
                       });
                     }};
       }},
      {"g_signal_connect_or_throw", "no element",
       [] {
         return Call{{}, [] {
                       return done([] {
                         Media_Helper::g_signal_connect_or_throw(
                             nullptr, "pad-added", [] {}, nullptr);
                       });
                     }};
       }},
  };
}

}  // namespace kel::tavren::tests
