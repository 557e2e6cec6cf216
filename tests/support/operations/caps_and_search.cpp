// Caps, and searches of bins.

#include "operation_families.h"

namespace kel::tavren::tests {
namespace {

// Runs the comparison function of a search with an element in a value.
template <typename Compare>
void with_value(const Element &element, Compare compare) {
  GValue value = G_VALUE_INIT;
  g_value_init(&value, GST_TYPE_ELEMENT);
  g_value_set_object(&value, element.get());
  compare(&value);
  g_value_unset(&value);
}

void read_caps(const Scene &scene) {
  using Framerate = std::pair<long long, long long>;
  using Resolution = std::pair<unsigned long long, unsigned long long>;
  require(Media_Helper::get_framerate_from_caps(scene.raw.get()) == Framerate(30, 1),
          "another frame rate");
  require(Media_Helper::get_resolution_from_caps(scene.raw.get()) == Resolution(640, 480),
          "another resolution");
  require(Media_Helper::get_encoding_name_from_caps(scene.rtp.get()) == "PCMU", "another name");
  require(Media_Helper::calculate_resolution({320, 320}, {640, 480}) == Resolution(320, 240),
          "another fit");
}

void compare_caps(const Scene &scene) {
  require(Media_Helper::caps_equal({scene.raw, scene.rtp}, {scene.rtp, scene.raw}), "unequal");
  require(!Media_Helper::caps_equal({scene.raw, scene.rtp}, {scene.raw, scene.raw}), "equal");
}

template <auto Read>
void read_bad_caps(const char *text) {
  const Own<GstCaps> caps(make_caps(text));
  Read(caps.get());
}

void get_element_type(const Scene &scene) {
  require(Media_Helper::get_element_type("tee") == type_of(scene.split), "another type");
}

void search(const Scene &scene) {
  require(taken(Media_Helper::find_element_with_caps_and_type(scene.bin(), type_of(scene.split),
                                                              scene.jpeg.get())) == scene.split,
          "another element");
  require(taken(Media_Helper::find_tee_with_caps(scene.bin(), scene.jpeg.get())) == scene.split,
          "another tee");
  require(taken(Media_Helper::find_appsink_with_caps(scene.bin(), scene.raw.get())) ==
              scene.snapshots,
          "another appsink");
}

void search_in_vain(const Scene &scene) {
  require(Media_Helper::find_tee_with_caps(scene.bin(), scene.raw.get()) == nullptr, "a tee");
  require(Media_Helper::find_appsink_with_caps(scene.bin(), scene.jpeg.get()) == nullptr,
          "an appsink");
}

void find_all_appsinks(const Scene &scene) {
  const std::vector<Element> appsinks = Media_Helper::find_all_appsinks(scene.bin());
  require(appsinks == std::vector<Element>{scene.snapshots}, "does not list exactly the appsink");
}

void look_for_types(const Scene &scene) {
  require(Media_Helper::bin_has_element_type(scene.bin(), type_of(scene.deep)), "no identity");
  require(!Media_Helper::bin_has_element_type(scene.recording_bin(), type_of(scene.split)),
          "a tee");
}

void compare_elements(const Scene &scene) {
  Media_Helper::FindElementCapsTypeHelper wanted{type_of(scene.split), scene.jpeg.get()};
  unsigned long long type = type_of(scene.split);
  with_value(scene.split, [&](const GValue *value) {
    require(Media_Helper::caps_compare_func(value, &wanted) == 0, "the caps do not fit");
    require(Media_Helper::type_compare_func(value, &type) == 0, "another type");
  });
  with_value(scene.file, [&](const GValue *value) {
    require(Media_Helper::caps_compare_func(value, &wanted) == -1, "the sink is a tee");
    require(Media_Helper::type_compare_func(value, &type) == -1, "the sink is of its type");
  });
}

}  // namespace

// clang-format off
std::vector<Operation> caps_and_search_operations() {
  return {
    {"caps readers", Operation::SHARED, {}, read_caps},
    {"get_framerate_from_caps in vain", Operation::SHARED, {TEC::CAPS_WITHOUT_FRAMERATE}, [](const Scene &scene) { Media_Helper::get_framerate_from_caps(scene.rtp.get()); }},
    {"get_framerate_from_caps of 0", Operation::SHARED, {TEC::INVALID_FRAMERATE}, [](const Scene &) { read_bad_caps<Media_Helper::get_framerate_from_caps>("video/x-raw, framerate=0/1"); }},
    {"get_resolution_from_caps in vain", Operation::SHARED, {TEC::CAPS_WITHOUT_RESOLUTION}, [](const Scene &scene) { Media_Helper::get_resolution_from_caps(scene.jpeg.get()); }},
    {"get_resolution_from_caps of 0", Operation::SHARED, {TEC::INVALID_CAPS_RESOLUTION}, [](const Scene &) { read_bad_caps<Media_Helper::get_resolution_from_caps>("video/x-raw, width=640, height=0"); }},
    {"get_encoding_name_from_caps of nothing", Operation::SHARED, {TEC::NOT_CAPS, {"caps in get_encoding_name_from_caps"}}, [](const Scene &) { Media_Helper::get_encoding_name_from_caps(nullptr); }},
    {"calculate_resolution of 0", Operation::SHARED, {TEC::INVALID_RESOLUTION}, [](const Scene &) { Media_Helper::calculate_resolution({640, 0}, {640, 480}); }},
    {"caps_equal", Operation::SHARED, {}, compare_caps},

    {"get_element_type", Operation::SHARED, {}, get_element_type},
    {"get_element_type in vain", Operation::SHARED, {TEC::FACTORY_NOT_FOUND, {"nosuchfactory"}}, [](const Scene &) { Media_Helper::get_element_type("nosuchfactory"); }},
    {"searches with caps", Operation::SHARED, {}, search},
    {"searches with caps in vain", Operation::SHARED, {}, search_in_vain},
    {"find_element_with_caps_and_type of type 0", Operation::SHARED, {TEC::INVALID_ELEMENT_TYPE, {"element_type in find_element_with_caps_and_type"}}, [](const Scene &scene) { Media_Helper::find_element_with_caps_and_type(scene.bin(), 0, scene.raw.get()); }},
    {"find_tee_with_caps without bin", Operation::SHARED, {TEC::NOT_A_BIN, {"bin"}}, [](const Scene &scene) { Media_Helper::find_tee_with_caps(nullptr, scene.raw.get()); }},
    {"find_appsink_with_caps without caps", Operation::SHARED, {TEC::NOT_CAPS, {"caps in find_element_with_caps_and_type"}}, [](const Scene &scene) { Media_Helper::find_appsink_with_caps(scene.bin(), nullptr); }},
    {"find_all_appsinks", Operation::SHARED, {}, find_all_appsinks},
    {"find_all_appsinks without bin", Operation::SHARED, {TEC::NOT_A_BIN, {"bin in find_all_appsinks"}}, [](const Scene &) { Media_Helper::find_all_appsinks(nullptr); }},
    {"bin_has_element_type", Operation::SHARED, {}, look_for_types},
    {"bin_has_element_type of type 0", Operation::SHARED, {TEC::INVALID_ELEMENT_TYPE, {"element_type in bin_has_element_type"}}, [](const Scene &scene) { Media_Helper::bin_has_element_type(scene.bin(), 0); }},
    {"caps_compare_func, type_compare_func", Operation::SHARED, {}, compare_elements},
  };
}
// clang-format on

}  // namespace kel::tavren::tests
