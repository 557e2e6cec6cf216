#include <tavren/capture/argument_checks.h>
#include <tavren/capture/media_helper.h>
#include <tavren/capture/message_text.h>

namespace kel::tavren::capture {

void throw_bad_argument(TEC::Tavren_Error_Code code, std::string_view description,
                        const char *what) {
  throw Error(code, std::string(description) + what);
}

void Media_Helper::is_element_or_throw(GstElement *element, const std::string &description) {
  check_element(element, description);
}

void Media_Helper::is_pad_or_throw(GstPad *pad, const std::string &description) {
  check_pad(pad, description);
}

void Media_Helper::is_bin_or_throw(GstBin *bin, const std::string &description) {
  check_bin(bin, description);
}

void Media_Helper::is_bus_or_throw(GstBus *bus, const std::string &description) {
  check_bus(bus, description);
}

void Media_Helper::is_caps_or_throw(GstCaps *caps, const std::string &description) {
  check_caps(caps, description);
}

void Media_Helper::is_valid_element_type_or_throw(GType element_type,
                                                  const std::string &description) {
  check_element_type(element_type, description);
}

void Media_Helper::gst_is_initialized_or_throw(const std::string &message) {
  if (!gst_is_initialized()) throw Error(TEC::FRAMEWORK_NOT_INITIALIZED, message);
}

template <typename K>
std::string Media_Helper::string_from_map_or_throw_(K key, const std::map<K, std::string> &map,
                                                    const std::string &message) {
  const auto row = map.find(key);
  if (row == map.end()) throw Error(TEC::KEY_NOT_FOUND, message);
  return row->second;
}

template std::string
Media_Helper::string_from_map_or_throw_(MediaType, const std::map<MediaType, std::string> &,
                                        const std::string &);
template std::string
Media_Helper::string_from_map_or_throw_(std::string, const std::map<std::string, std::string> &,
                                        const std::string &);

}  // namespace kel::tavren::capture
