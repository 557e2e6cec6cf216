// Argument checks and lookups.

#include <map>

#include "scenario.h"

namespace kel::tavren::tests {

using capture::Media_Helper;
using capture::MediaType;

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

}  // namespace kel::tavren::tests
