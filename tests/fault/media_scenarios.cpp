// Media types, selection, discovery, caps, searches of bins, texts.

#include <gst/app/gstappsink.h>

#include "log_watch.h"
#include "media_files.h"
#include "scenario.h"

namespace kel::tavren::tests {

using capture::Media_Helper;

namespace {

template <typename Number>
std::string text_of(std::pair<Number, Number> numbers) {
  return std::to_string(numbers.first) + ", " + std::to_string(numbers.second);
}

Call choose_proxies(const Caps &caps) {
  Call call{kept_factories(), [caps] {
              const auto names =
                  disturbed([&] { return Media_Helper::select_proxy_elements(caps.get()); });
              return names.first + ", " + names.second;
            }};
  call.involved.emplace_back("caps", caps);
  return call;
}

std::string discover(const std::string &uri, GstClockTime timeout) {
  const auto info = disturbed([&] { return Media_Helper::get_media_info(uri, timeout); });
  return info->uri.substr(info->uri.rfind('/') + 1) + ", " + std::to_string(info->duration) +
         " ns, " + std::to_string(info->video_caps.size()) + " video, " +
         std::to_string(info->audio_caps.size()) + " audio";
}

// Returns the URI of a file with two streams, which is recorded on first use.
std::string media_uri() {
  static const Media_Folder folder;
  static const std::string uri = [] {
    folder.record_video_and_audio("streams.mkv");
    return folder.uri("streams.mkv");
  }();
  return uri;
}

// A bin with an appsink without caps, a nested bin that contains an appsink with caps, and a tee
// that gets its caps from a filter.
struct Searched_Bin {
  Element bin = make_bin("bin");
  Element plain = make_element("appsink", "plain_appsink");
  Element nested = make_bin("nested");
  Element inner = make_element("appsink", "inner_appsink");
  Element filter = make_element("capsfilter", "filter");
  Element tee = make_element("tee", "tee");
  Caps caps = make_caps("video/x-h264");

  Searched_Bin() {
    gst_app_sink_set_caps(GST_APP_SINK_CAST(inner.get()), caps.get());
    g_object_set(filter.get(), "caps", caps.get(), nullptr);
    gst_bin_add_many(as_bin(bin), plain.get(), nested.get(), filter.get(), tee.get(), nullptr);
    gst_bin_add(as_bin(nested), inner.get());
    gst_element_link(filter.get(), tee.get());
  }

  void send_caps() const {
    const Pad pad = static_pad(tee, "sink");
    gst_pad_set_active(pad.get(), TRUE);
    gst_pad_send_event(pad.get(), gst_event_new_stream_start("stream"));
    gst_pad_send_event(pad.get(), gst_event_new_caps(caps.get()));
  }

  std::vector<Involved> involved() const {
    return {{"bin", bin},
            {"plain appsink", plain},
            {"nested bin", nested},
            {"inner appsink", inner},
            {"filter", filter},
            {"tee", tee},
            {"tee's pad", static_pad(tee, "sink")},
            {"filter's pad", static_pad(filter, "src")},
            {"appsink factory", find_factory("appsink").get()},
            {"tee factory", find_factory("tee").get()}};
  }
};

Searched_Bin with_sent_caps() {
  Searched_Bin searched;
  searched.send_caps();
  return searched;
}

// A call on such a bin that returns an element.
template <typename Find>
Call search(const Searched_Bin &searched, Find find) {
  return {searched.involved(),
          [searched, find] { return element_from([&] { return find(searched); }); }};
}

// A call on such a bin that returns a number.
template <typename Ask>
Call ask(const Searched_Bin &searched, Ask question) {
  return {searched.involved(),
          [searched, question] { return number_from([&] { return question(searched); }); }};
}

// Involves the caps, if there are any.
std::vector<Involved> involve(const Caps &caps) {
  if (!caps) return {};
  return {{"caps", caps}};
}

Call classify(const Caps &caps) {
  return {involve(caps), [caps] {
            const Allowed_Log no_structure("structure != NULL");
            return number_from([&] { return Media_Helper::get_media_type(caps.get()); });
          }};
}

Call read_framerate(const Caps &caps) {
  return {involve(caps), [caps] {
            const Allowed_Log no_structure("assertion");
            return text_of(
                disturbed([&] { return Media_Helper::get_framerate_from_caps(caps.get()); }));
          }};
}

Call read_resolution(const Caps &caps) {
  return {involve(caps), [caps] {
            const Allowed_Log no_structure("assertion");
            return text_of(
                disturbed([&] { return Media_Helper::get_resolution_from_caps(caps.get()); }));
          }};
}

Call read_encoding_name(const Caps &caps) {
  return {involve(caps), [caps] {
            const Allowed_Log no_structure("assertion");
            return disturbed([&] { return Media_Helper::get_encoding_name_from_caps(caps.get()); });
          }};
}

Involved factory_of_identity() {
  return {"factory", find_factory("identity").get()};
}

// A value of an enumeration, possibly one that is not an enumerator.
template <typename Enumeration>
Enumeration value(int number) {
  return static_cast<Enumeration>(number);
}

using Caps_List = std::vector<Caps>;

std::string equal(const Caps_List &first, const Caps_List &second) {
  return number_from([&] { return Media_Helper::caps_equal(first, second); });
}

// A value that contains an element, as passed by searches.
class Element_Value {
public:
  explicit Element_Value(const Element &element) {
    g_value_init(&value_, GST_TYPE_ELEMENT);
    g_value_set_object(&value_, element.get());
  }
  ~Element_Value() { g_value_unset(&value_); }
  Element_Value(const Element_Value &) = delete;
  Element_Value &operator=(const Element_Value &) = delete;

  const GValue *get() const { return &value_; }

private:
  GValue value_ = G_VALUE_INIT;
};

// Compares an element with the caps of the bin and the type of another element.
std::string compare_caps(const Searched_Bin &searched, const Element &element,
                         const Element &wanted_type) {
  const Element_Value value(element);
  Media_Helper::FindElementCapsTypeHelper wanted{G_OBJECT_TYPE(wanted_type.get()),
                                                 searched.caps.get()};
  return number_from([&] { return Media_Helper::caps_compare_func(value.get(), &wanted); });
}

std::string compare_types(const Element &element, const Element &wanted_type) {
  const Element_Value value(element);
  unsigned long long wanted = G_OBJECT_TYPE(wanted_type.get());
  return number_from([&] { return Media_Helper::type_compare_func(value.get(), &wanted); });
}

}  // namespace

std::vector<Scenario> media_type_scenarios() {
  return {
      {"get_media_type", "video", [] { return classify(make_caps("video/x-h264, width=640")); },
       Trait::CALLS_VARY},
      {"get_media_type", "metadata",
       [] { return classify(make_caps("application/x-rtp, encoding-name=VND.ONVIF.METADATA")); },
       Trait::CALLS_VARY},
      {"get_media_type", "unknown", [] { return classify(make_caps("video/x-h265")); }},
      {"get_media_type", "empty", [] { return classify(make_caps("EMPTY")); }},
      {"get_media_type", "no caps", [] { return classify(nullptr); }},
      {"get_media_type_string", "a kind",
       [] {
         return alone([] { return Media_Helper::get_media_type_string(capture::RTP_METADATA); });
       }},
      {"get_media_type_string", "no kind",
       [] { return alone([] { return Media_Helper::get_media_type_string(capture::UNKNOWN); }); }},
      {"is_video", "video",
       [] {
         return Call{{}, [] {
                       return number_from(
                           [] { return Media_Helper::is_video(capture::VIDEO_RAW, true); });
                     }};
       }},
      {"is_audio", "audio",
       [] {
         return Call{{}, [] {
                       return number_from(
                           [] { return Media_Helper::is_audio(capture::MULAW, false); });
                     }};
       }},
      {"select_muxer", "known",
       [] {
         return Call{{}, [] {
                       const std::string file = "/var/recordings/camera.mkv";
                       return disturbed([&] { return Media_Helper::select_muxer(file); });
                     }};
       }},
      {"select_muxer", "unknown",
       [] {
         return Call{{}, [] {
                       const std::string file = "/var/recordings/camera.an_extension_of_length";
                       return disturbed([&] { return Media_Helper::select_muxer(file); });
                     }};
       }},
      {"select_demuxer", "known",
       [] {
         return Call{{}, [] {
                       const std::string file = "/var/recordings/camera.mkv";
                       return disturbed([&] { return Media_Helper::select_demuxer(file); });
                     }};
       }},
      {"select_demuxer", "unknown",
       [] { return alone([] { return Media_Helper::select_demuxer(""); }); }},
      {"select_parser", "known",
       [] { return alone([] { return Media_Helper::select_parser(capture::MPEG_VIDEO); }); }},
      {"select_parser", "unknown",
       [] { return alone([] { return Media_Helper::select_parser(capture::RTP); }); }},
      {"select_decoder", "known",
       [] { return alone([] { return Media_Helper::select_decoder(capture::H264); }); }},
      {"select_decoder", "unknown",
       [] { return alone([] { return Media_Helper::select_decoder(capture::MPEG_AUDIO); }); }},
      {"select_payloader", "known",
       [] { return alone([] { return Media_Helper::select_payloader(capture::MULAW); }); }},
      {"select_payloader", "unknown",
       [] { return alone([] { return Media_Helper::select_payloader(capture::AUDIO_RAW); }); }},
      {"select_video_rate", "known",
       [] { return alone([] { return Media_Helper::select_video_rate(capture::H264); }); }},
      {"select_video_rate", "unknown",
       [] { return alone([] { return Media_Helper::select_video_rate(capture::MULAW); }); }},
      {"select_proxy_elements", "the first pair",
       [] {
         const Caps caps =
             make_caps("application/x-rtp, media=video, clock-rate=90000, encoding-name=H264");
         return choose_proxies(caps);
       }},
      {"select_proxy_elements", "the last pair",
       [] {
         const Caps caps =
             make_caps("application/x-rtp, media=audio, clock-rate=8000, "
                       "encoding-name=MPEG4-GENERIC, mode=AAC-hbr, sizelength=(string)13");
         return choose_proxies(caps);
       }},
      {"select_proxy_elements", "no pair", [] { return choose_proxies(make_caps("video/x-raw")); }},
  };
}

std::vector<Scenario> discovery_scenarios() {
  return {
      {"get_media_info", "two streams",
       [] {
         const std::string uri = media_uri();
         return Call{{}, [uri] { return discover(uri, 10 * GST_SECOND); }};
       }},
      {"get_media_info", "no such file",
       [] {
         return Call{{}, [] { return discover("file:///there/is/no/such/file", 10 * GST_SECOND); }};
       }},
      {"get_media_info", "a timeout that is none",
       [] {
         return Call{{}, [] {
                       const Allowed_Log invalid("GST_CLOCK_TIME_IS_VALID");
                       return discover("file:///there/is/no/such/file", GST_CLOCK_TIME_NONE);
                     }};
       }},
      {"gst_discoverer_result_to_string", "known",
       [] {
         return alone([] {
           return Media_Helper::gst_discoverer_result_to_string(GST_DISCOVERER_MISSING_PLUGINS);
         });
       }},
      {"gst_discoverer_result_to_string", "unknown",
       [] {
         return alone([] {
           return Media_Helper::gst_discoverer_result_to_string(value<GstDiscovererResult>(99));
         });
       }},
  };
}

std::vector<Scenario> caps_scenarios() {
  return {
      {"get_framerate_from_caps", "a rate",
       [] { return read_framerate(make_caps("video/x-raw, framerate=30000/1001")); }},
      {"get_framerate_from_caps", "none", [] { return read_framerate(make_caps("video/x-raw")); }},
      {"get_framerate_from_caps", "zero",
       [] { return read_framerate(make_caps("video/x-raw, framerate=0/1")); }},
      {"get_framerate_from_caps", "empty", [] { return read_framerate(make_caps("EMPTY")); }},
      {"get_framerate_from_caps", "no caps", [] { return read_framerate(nullptr); }},
      {"get_resolution_from_caps", "a resolution",
       [] { return read_resolution(make_caps("video/x-raw, width=640, height=480")); }},
      {"get_resolution_from_caps", "none",
       [] { return read_resolution(make_caps("video/x-raw, width=640")); }},
      {"get_resolution_from_caps", "zero",
       [] { return read_resolution(make_caps("video/x-raw, width=640, height=0")); }},
      {"get_resolution_from_caps", "empty", [] { return read_resolution(make_caps("EMPTY")); }},
      {"get_resolution_from_caps", "no caps", [] { return read_resolution(nullptr); }},
      {"get_encoding_name_from_caps", "a name",
       [] {
         return read_encoding_name(
             make_caps("application/x-rtp, encoding-name=VND.ONVIF.METADATA"));
       }},
      {"get_encoding_name_from_caps", "no name",
       [] { return read_encoding_name(make_caps("application/x-rtp")); }},
      {"get_encoding_name_from_caps", "empty",
       [] { return read_encoding_name(make_caps("EMPTY")); }},
      {"get_encoding_name_from_caps", "no caps", [] { return read_encoding_name(nullptr); }},
      {"calculate_resolution", "fits",
       [] {
         return Call{{}, [] {
                       return text_of(disturbed([] {
                         return Media_Helper::calculate_resolution({640, 480}, {1920, 1080});
                       }));
                     }};
       }},
      {"calculate_resolution", "nothing to fit into",
       [] {
         return Call{{}, [] {
                       return text_of(disturbed([] {
                         return Media_Helper::calculate_resolution({640, 0}, {1920, 1080});
                       }));
                     }};
       }},
      {"caps_equal", "in another order",
       [] {
         const Caps raw = make_caps("video/x-raw");
         const Caps h264 = make_caps("video/x-h264");
         return Call{{{"caps", raw}, {"other caps", h264}}, [raw, h264] {
                       return equal({raw, h264}, {h264, raw});
                     }};
       }},
      {"caps_equal", "other caps",
       [] {
         const Caps raw = make_caps("video/x-raw");
         const Caps h264 = make_caps("video/x-h264");
         return Call{{{"caps", raw}, {"other caps", h264}}, [raw, h264] {
                       return equal({raw, raw}, {raw, h264});
                     }};
       }},
      {"caps_equal", "lists of different length",
       [] {
         const Caps raw = make_caps("video/x-raw");
         return Call{{{"caps", raw}}, [raw] { return equal({raw}, {raw, raw}); }};
       }},
      {"get_element_type", "found",
       [] {
         return Call{{factory_of_identity()}, [] {
                       return std::string(g_type_name(
                           disturbed([] { return Media_Helper::get_element_type("identity"); })));
                     }};
       }},
      {"get_element_type", "no factory",
       [] {
         return Call{{factory_of_identity()}, [] {
                       return std::string(g_type_name(disturbed(
                           [] { return Media_Helper::get_element_type("nosuchfactory"); })));
                     }};
       }},
  };
}

std::vector<Scenario> search_scenarios() {
  return {
      {"find_element_with_caps_and_type", "found",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_element_with_caps_and_type(
               as_bin(searched.bin), GST_TYPE_APP_SINK, searched.caps.get());
         });
       }},
      {"find_element_with_caps_and_type", "not found",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_element_with_caps_and_type(as_bin(searched.bin), GST_TYPE_BIN,
                                                                searched.caps.get());
         });
       }},
      {"find_element_with_caps_and_type", "a tee, found by what its peer can send",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_element_with_caps_and_type(
               as_bin(searched.bin), G_OBJECT_TYPE(searched.tee.get()), searched.caps.get());
         });
       }},
      {"find_element_with_caps_and_type", "a tee, found by its current caps",
       [] {
         return search(with_sent_caps(), [](const Searched_Bin &searched) {
           return Media_Helper::find_element_with_caps_and_type(
               as_bin(searched.bin), G_OBJECT_TYPE(searched.tee.get()), searched.caps.get());
         });
       }},
      {"find_element_with_caps_and_type", "no bin",
       [] {
         const Caps caps = make_caps("video/x-h264");
         return Call{{{"caps", caps}}, [caps] {
                       return element_from([&] {
                         return Media_Helper::find_element_with_caps_and_type(
                             nullptr, GST_TYPE_APP_SINK, caps.get());
                       });
                     }};
       }},
      {"find_element_with_caps_and_type", "no type",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_element_with_caps_and_type(
               as_bin(searched.bin), G_TYPE_INVALID, searched.caps.get());
         });
       }},
      {"find_element_with_caps_and_type", "no caps",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_element_with_caps_and_type(as_bin(searched.bin),
                                                                GST_TYPE_APP_SINK, nullptr);
         });
       }},
      {"find_tee_with_caps", "found by what its peer can send",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_tee_with_caps(as_bin(searched.bin), searched.caps.get());
         });
       }},
      {"find_tee_with_caps", "found by its current caps",
       [] {
         return search(with_sent_caps(), [](const Searched_Bin &searched) {
           return Media_Helper::find_tee_with_caps(as_bin(searched.bin), searched.caps.get());
         });
       }},
      {"find_appsink_with_caps", "found",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_appsink_with_caps(as_bin(searched.bin), searched.caps.get());
         });
       }},
      {"find_tee_with_caps", "no bin",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_tee_with_caps(nullptr, searched.caps.get());
         });
       }},
      {"find_tee_with_caps", "no caps",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_tee_with_caps(as_bin(searched.bin), nullptr);
         });
       }},
      {"find_tee_with_caps", "other caps",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_tee_with_caps(as_bin(searched.bin),
                                                   make_caps("audio/x-raw").get());
         });
       }},
      {"find_appsink_with_caps", "no bin",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_appsink_with_caps(nullptr, searched.caps.get());
         });
       }},
      {"find_appsink_with_caps", "no caps",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_appsink_with_caps(as_bin(searched.bin), nullptr);
         });
       }},
      {"find_appsink_with_caps", "other caps",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_appsink_with_caps(as_bin(searched.bin),
                                                       make_caps("audio/x-raw").get());
         });
       }},
      {"find_all_appsinks", "two",
       [] {
         const Searched_Bin searched;
         return Call{searched.involved(), [searched] {
                       const auto found = disturbed(
                           [&] { return Media_Helper::find_all_appsinks(as_bin(searched.bin)); });
                       return std::to_string(found.size()) + " appsinks";
                     }};
       }},
      {"find_all_appsinks", "no bin",
       [] {
         return Call{{}, [] {
                       const auto found =
                           disturbed([] { return Media_Helper::find_all_appsinks(nullptr); });
                       return std::to_string(found.size()) + " appsinks";
                     }};
       }},
      {"bin_has_element_type", "has",
       [] {
         return ask(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::bin_has_element_type(as_bin(searched.bin), GST_TYPE_APP_SINK);
         });
       }},
      {"bin_has_element_type", "has not",
       [] {
         return ask(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::bin_has_element_type(as_bin(searched.bin), GST_TYPE_PIPELINE);
         });
       }},
      {"bin_has_element_type", "no bin",
       [] {
         return Call{{}, [] {
                       return number_from([] {
                         return Media_Helper::bin_has_element_type(nullptr, GST_TYPE_PIPELINE);
                       });
                     }};
       }},
      {"bin_has_element_type", "no type",
       [] {
         return ask(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::bin_has_element_type(as_bin(searched.bin), G_TYPE_INVALID);
         });
       }},
      {"caps_compare_func", "an appsink that fits",
       [] {
         const Searched_Bin searched;
         return Call{searched.involved(),
                     [searched] { return compare_caps(searched, searched.inner, searched.inner); }};
       }},
      {"caps_compare_func", "a tee whose peer's caps fit",
       [] {
         const Searched_Bin searched;
         return Call{searched.involved(),
                     [searched] { return compare_caps(searched, searched.tee, searched.tee); }};
       }},
      {"caps_compare_func", "a tee whose current caps fit",
       [] {
         const Searched_Bin searched;
         searched.send_caps();
         return Call{searched.involved(),
                     [searched] { return compare_caps(searched, searched.tee, searched.tee); }};
       }},
      {"caps_compare_func", "no sink pad",
       [] {
         const Searched_Bin searched;
         return Call{searched.involved(), [searched] {
                       return compare_caps(searched, searched.nested, searched.nested);
                     }};
       }},
      {"caps_compare_func", "another type",
       [] {
         const Searched_Bin searched;
         return Call{searched.involved(),
                     [searched] { return compare_caps(searched, searched.tee, searched.inner); }};
       }},
      {"type_compare_func", "the type",
       [] {
         const Searched_Bin searched;
         return Call{searched.involved(),
                     [searched] { return compare_types(searched.tee, searched.tee); }};
       }},
      {"type_compare_func", "another type",
       [] {
         const Searched_Bin searched;
         return Call{searched.involved(),
                     [searched] { return compare_types(searched.tee, searched.inner); }};
       }},
  };
}

std::vector<Scenario> text_scenarios() {
  return {
      {"gst_state_to_string", "known",
       [] { return alone([] { return Media_Helper::gst_state_to_string(GST_STATE_PLAYING); }); }},
      {"gst_state_to_string", "unknown",
       [] { return alone([] { return Media_Helper::gst_state_to_string(value<GstState>(99)); }); }},
      {"gst_state_change_to_string", "known",
       [] {
         return alone([] {
           return Media_Helper::gst_state_change_to_string(GST_STATE_CHANGE_NULL_TO_READY);
         });
       }},
      {"gst_state_change_to_string", "unknown",
       [] {
         return alone(
             [] { return Media_Helper::gst_state_change_to_string(value<GstStateChange>(0)); });
       }},
      {"gst_enum_message", "a result of a state change",
       [] { return alone([] { return Media_Helper::gst_enum_message(GST_STATE_CHANGE_ASYNC); }); }},
      {"gst_enum_message", "no result of a state change",
       [] {
         return alone(
             [] { return Media_Helper::gst_enum_message(value<GstStateChangeReturn>(99)); });
       }},
      {"gst_enum_message", "a result of a link",
       [] { return alone([] { return Media_Helper::gst_enum_message(GST_PAD_LINK_NOFORMAT); }); }},
      {"gst_enum_message", "no result of a link",
       [] {
         return alone([] { return Media_Helper::gst_enum_message(value<GstPadLinkReturn>(99)); });
       }},
      {"gst_enum_message", "a state",
       [] { return alone([] { return Media_Helper::gst_enum_message(GST_STATE_READY); }); }},
      {"gst_enum_message", "no state",
       [] { return alone([] { return Media_Helper::gst_enum_message(value<GstState>(99)); }); }},
      {"gst_enum_message", "a type of message",
       [] {
         return alone([] { return Media_Helper::gst_enum_message(GST_MESSAGE_DURATION_CHANGED); });
       }},
      {"gst_enum_message", "no type of message",
       [] {
         return alone([] { return Media_Helper::gst_enum_message(value<GstMessageType>(3)); });
       }},
      {"gst_time_to_string", "a time",
       [] { return alone([] { return Media_Helper::gst_time_to_string(3723000000001); }); }},
      {"gst_segment_to_string", "a segment",
       [] {
         return Call{{}, [] {
                       GstSegment segment;
                       gst_segment_init(&segment, GST_FORMAT_TIME);
                       return disturbed(
                           [&] { return Media_Helper::gst_segment_to_string(&segment); });
                     }};
       }},
      {"gst_segment_to_string", "a segment of bytes",
       [] {
         return Call{{}, [] {
                       GstSegment segment;
                       gst_segment_init(&segment, GST_FORMAT_BYTES);
                       return disturbed(
                           [&] { return Media_Helper::gst_segment_to_string(&segment); });
                     }};
       }},
      {"gst_segment_to_string", "no segment",
       [] {
         return Call{
             {},
             [] { return disturbed([] { return Media_Helper::gst_segment_to_string(nullptr); }); }};
       }},
      {"generate_queue_stats_report", "a queue",
       [] {
         const Element queue = make_element("queue", "a_queue_with_a_name");
         return Call{{{"queue", queue}}, [queue] {
                       return disturbed(
                           [&] { return Media_Helper::generate_queue_stats_report(queue.get()); });
                     }};
       }},
      {"generate_queue_stats_report", "no queue",
       [] { return alone([] { return Media_Helper::generate_queue_stats_report(nullptr); }); }},
  };
}

}  // namespace kel::tavren::tests
