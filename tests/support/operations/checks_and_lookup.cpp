// Argument checks and lookups.

#include "operation_families.h"

namespace kel::tavren::tests {
namespace {

void pass_checks(const Scene &scene) {
  Media_Helper::is_element_or_throw(scene.camera.get(), "camera");
  Media_Helper::is_pad_or_throw(scene.split_src.get(), "pad");
  Media_Helper::is_bin_or_throw(scene.bin(), "bin");
  Media_Helper::is_bus_or_throw(scene.bus.get(), "bus");
  Media_Helper::is_caps_or_throw(scene.raw.get(), "caps");
  Media_Helper::is_valid_element_type_or_throw(type_of(scene.camera), "type");
  Media_Helper::gst_is_initialized_or_throw("not initialised");
}

void look_up(const Scene &) {
  require(Media_Helper::string_from_map_or_throw_<capture::MediaType>(
              capture::RTP, {{capture::RTP, "a text that fits into no short string"}}, "no row") ==
              "a text that fits into no short string",
          "another text");
  require(Media_Helper::string_from_map_or_throw_<std::string>("a", {{"a", "first"}}, "no row") ==
              "first",
          "another text");
}

void look_up_missing_type(const Scene &) {
  Media_Helper::string_from_map_or_throw_<capture::MediaType>(
      capture::RTP, {{capture::JPEG, "jpeg"}}, "no such kind: 100%");
}

void look_up_missing_text(const Scene &) {
  Media_Helper::string_from_map_or_throw_<std::string>("b", {{"a", "first"}}, "no such text: 100%");
}

}  // namespace

// clang-format off
std::vector<Operation> checks_and_lookup_operations() {
  return {
    {"argument checks", Operation::SHARED, {}, pass_checks},
    {"is_element_or_throw of nothing", Operation::SHARED, {TEC::NOT_AN_ELEMENT, {"camera"}}, [](const Scene &) { Media_Helper::is_element_or_throw(nullptr, "camera"); }},
    {"is_pad_or_throw of an element", Operation::SHARED, {TEC::NOT_A_PAD, {"camera"}}, [](const Scene &scene) { Media_Helper::is_pad_or_throw(GST_PAD_CAST(static_cast<gpointer>(scene.camera.get())), "camera"); }},
    {"is_bin_or_throw of an element", Operation::SHARED, {TEC::NOT_A_BIN, {"camera"}}, [](const Scene &scene) { Media_Helper::is_bin_or_throw(GST_BIN_CAST(scene.camera.get()), "camera"); }},
    {"is_bus_or_throw of nothing", Operation::SHARED, {TEC::NOT_A_BUS, {"camera"}}, [](const Scene &) { Media_Helper::is_bus_or_throw(nullptr, "camera"); }},
    {"is_caps_or_throw of nothing", Operation::SHARED, {TEC::NOT_CAPS, {"camera"}}, [](const Scene &) { Media_Helper::is_caps_or_throw(nullptr, "camera"); }},
    {"is_valid_element_type_or_throw of 0", Operation::SHARED, {TEC::INVALID_ELEMENT_TYPE, {"camera"}}, [](const Scene &) { Media_Helper::is_valid_element_type_or_throw(0, "camera"); }},
    {"string_from_map_or_throw_", Operation::SHARED, {}, look_up},
    {"string_from_map_or_throw_, no kind", Operation::SHARED, {TEC::KEY_NOT_FOUND, {"no such kind: 100%"}}, look_up_missing_type},
    {"string_from_map_or_throw_, no text", Operation::SHARED, {TEC::KEY_NOT_FOUND, {"no such text: 100%"}}, look_up_missing_text},
  };
}
// clang-format on

}  // namespace kel::tavren::tests
