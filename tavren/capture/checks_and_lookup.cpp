#include <tavren/capture/argument_checks.h>
#include <tavren/capture/media_helper.h>
#include <tavren/capture/message_text.h>

namespace kel::tavren::capture {

void check_element(GstElement *element, std::string_view description) {
  if (!GST_IS_ELEMENT(element))
    throw Error(TEC::NOT_AN_ELEMENT, std::string(description) + " is not a GstElement *.");
}

void check_pad(GstPad *pad, std::string_view description) {
  if (!GST_IS_PAD(pad))
    throw Error(TEC::NOT_A_PAD, std::string(description) + " is not a GstPad *.");
}

void check_bin(GstBin *bin, std::string_view description) {
  if (!GST_IS_BIN(bin))
    throw Error(TEC::NOT_A_BIN, std::string(description) + " is not a GstBin *.");
}

void check_bus(GstBus *bus, std::string_view description) {
  if (!GST_IS_BUS(bus))
    throw Error(TEC::NOT_A_BUS, std::string(description) + " is not a GstBus *.");
}

void check_caps(GstCaps *caps, std::string_view description) {
  if (!GST_IS_CAPS(caps))
    throw Error(TEC::NOT_CAPS, std::string(description) + " is not a GstCaps *.");
}

void check_element_type(GType element_type, std::string_view description) {
  if (element_type == G_TYPE_INVALID)
    throw Error(TEC::INVALID_ELEMENT_TYPE, std::string(description) + " is not a valid GType.");
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
