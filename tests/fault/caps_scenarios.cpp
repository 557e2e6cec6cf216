// Caps.

#include "log_watch.h"
#include "scenario.h"

namespace kel::tavren::tests {

using capture::Media_Helper;

namespace {

template <typename Number>
std::string text_of(std::pair<Number, Number> numbers) {
  return std::to_string(numbers.first) + ", " + std::to_string(numbers.second);
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

using Caps_List = std::vector<Caps>;

std::string equal(const Caps_List &first, const Caps_List &second) {
  return number_from([&] { return Media_Helper::caps_equal(first, second); });
}

}  // namespace

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

}  // namespace kel::tavren::tests
