#include <algorithm>
#include <limits>

#include <gst/app/gstappsink.h>

#include <tavren/capture/argument_checks.h>
#include <tavren/capture/iterator_walk.h>
#include <tavren/capture/media_helper.h>
#include <tavren/capture/message_text.h>

namespace kel::tavren::capture {

namespace {

using Caps = boost::intrusive_ptr<GstCaps>;
using Element = boost::intrusive_ptr<GstElement>;

// Truncates to whole pixels. Saturates on overflow, because the conversion would be undefined.
unsigned long long to_pixels(double length) {
  constexpr double limit = 18446744073709551616.0;  // 2^64
  return length < limit ? static_cast<unsigned long long>(length)
                        : std::numeric_limits<unsigned long long>::max();
}

// Returns the caps with which a search compares; null if the element has none.
Caps caps_of(GstElement *element) noexcept {
  if (GST_IS_APP_SINK(element))  // GCOVR_EXCL_BR_LINE: never null or without a class
    return Caps(gst_app_sink_get_caps(GST_APP_SINK_CAST(element)), false);

  const boost::intrusive_ptr<GstPad> pad(gst_element_get_static_pad(element, "sink"), false);
  if (!pad) return nullptr;
  return Caps(gst_pad_has_current_caps(pad.get()) ? gst_pad_get_current_caps(pad.get())
                                                  : gst_pad_peer_query_caps(pad.get(), nullptr),
              false);
}

// Stores the first element of a bin for which Compare returns 0 in the result, with a reference.
// GLib's comparison takes untyped pointers; the trampoline has exactly that type.
template <auto Compare, typename Wanted>
bool find_in_bin(GstBin *bin, Wanted &wanted, GValue &result) {
  const GCompareFunc trampoline = [](gconstpointer item, gconstpointer data) {
    return Compare(static_cast<const GValue *>(item),
                   static_cast<Wanted *>(const_cast<gpointer>(data)));
  };
  const Iterator iterator(gst_bin_iterate_recurse(bin));
  return iterator && gst_iterator_find_custom(iterator.get(), trampoline, &result, &wanted);
}

}  // namespace

std::pair<long long, long long> Media_Helper::get_framerate_from_caps(GstCaps *caps) {
  check_caps(caps, "caps in get_framerate_from_caps");
  int numerator = 0;
  int denominator = 0;
  if (!gst_structure_get_fraction(gst_caps_get_structure(caps, 0), "framerate", &numerator,
                                  &denominator))
    throw Error(TEC::CAPS_WITHOUT_FRAMERATE,
                "Unable to get framerate from caps in get_framerate_from_caps");
  if (numerator <= 0 || denominator <= 0)
    throw Error(TEC::INVALID_FRAMERATE,
                "Retrieved invalid numerator or denomenator in get_framerate_from_caps");
  return {numerator, denominator};
}

std::pair<unsigned long long, unsigned long long>
Media_Helper::get_resolution_from_caps(GstCaps *caps) {
  check_caps(caps, "caps in get_resolution_from_caps");
  int width = 0;
  int height = 0;
  const GstStructure *const structure = gst_caps_get_structure(caps, 0);
  if (!gst_structure_get_int(structure, "width", &width) ||
      !gst_structure_get_int(structure, "height", &height))
    throw Error(TEC::CAPS_WITHOUT_RESOLUTION,
                "Unable to get width and/or height in get_resolution_from_caps");
  if (width <= 0 || height <= 0)
    throw Error(TEC::INVALID_CAPS_RESOLUTION,
                "Retrieved invalid width and/or height in get_resolution_from_caps");
  return {static_cast<unsigned long long>(width), static_cast<unsigned long long>(height)};
}

std::string Media_Helper::get_encoding_name_from_caps(GstCaps *caps) {
  check_caps(caps, "caps in get_encoding_name_from_caps");
  const char *const name =
      gst_structure_get_string(gst_caps_get_structure(caps, 0), "encoding-name");
  return name != nullptr ? name : std::string();  // GCOVR_EXCL_BR_LINE: empty text cannot throw
}

std::pair<unsigned long long, unsigned long long>
Media_Helper::calculate_resolution(std::pair<unsigned long long, unsigned long long> bounds,
                                   std::pair<unsigned long long, unsigned long long> source) {
  if (bounds.first == 0 || bounds.second == 0 || source.first == 0 || source.second == 0)
    throw Tavren_Error<std::logic_error>(TEC::INVALID_RESOLUTION,
                                         "Invalid resolution provided in calculate_resolution");

  const auto bounds_width = static_cast<double>(bounds.first);
  const auto bounds_height = static_cast<double>(bounds.second);
  const double source_ratio =
      static_cast<double>(source.first) / static_cast<double>(source.second);
  const double bounds_ratio = bounds_width / bounds_height;
  if (source_ratio > bounds_ratio) return {bounds.first, to_pixels(bounds_width / source_ratio)};
  return {to_pixels(source_ratio * bounds_height), bounds.second};
}

bool Media_Helper::caps_equal(std::vector<Caps> first_list, std::vector<Caps> second_list) {
  if (first_list.size() != second_list.size()) return false;
  for (const Caps &caps : first_list) {
    const auto partner =
        std::find_if(second_list.begin(), second_list.end(), [&caps](const Caps &candidate) {
          return gst_caps_is_equal(caps.get(), candidate.get());
        });
    if (partner == second_list.end()) return false;
    second_list.erase(partner);
  }
  return true;
}

unsigned long long Media_Helper::get_element_type(const std::string &factory_name) {
  GstElementFactory *const found = gst_element_factory_find_or_throw(factory_name);
  Scope_Exit_Guard drop_found;
  arm(drop_found, [&found] { gst_object_unref(found); });

  GstPluginFeature *const loaded = gst_plugin_feature_load(GST_PLUGIN_FEATURE_CAST(found));
  if (loaded == nullptr)
    throw_quoting(TEC::FACTORY_NOT_LOADED, "Could not load factory for element \"", factory_name,
                  "\" in get_element_type.");
  Scope_Exit_Guard drop_loaded;
  arm(drop_loaded, [&loaded] { gst_object_unref(loaded); });

  const GType type = gst_element_factory_get_element_type(GST_ELEMENT_FACTORY_CAST(loaded));
  if (type == G_TYPE_INVALID)
    throw_quoting(TEC::FACTORY_HAS_NO_ELEMENT_TYPE,
                  "Unable to get type information for factory for element \"", factory_name,
                  "\" in get_element_type.");
  return type;
}

GstElement *Media_Helper::find_element_with_caps_and_type(GstBin *bin,
                                                          unsigned long long element_type,
                                                          GstCaps *caps) {
  check_bin(bin, "bin");
  check_element_type(element_type, "element_type in find_element_with_caps_and_type");
  check_caps(caps, "caps in find_element_with_caps_and_type");
  FindElementCapsTypeHelper wanted{element_type, caps};
  GValue result = G_VALUE_INIT;
  if (!find_in_bin<caps_compare_func>(bin, wanted, result)) return nullptr;
  // The value is not unset: the caller takes its reference.
  return GST_ELEMENT_CAST(g_value_get_object(&result));
}

GstElement *Media_Helper::find_tee_with_caps(GstBin *bin, GstCaps *caps) {
  return find_element_with_caps_and_type(bin, get_element_type("tee"), caps);
}

GstElement *Media_Helper::find_appsink_with_caps(GstBin *bin, GstCaps *caps) {
  return find_element_with_caps_and_type(bin, get_element_type("appsink"), caps);
}

std::vector<Element> Media_Helper::find_all_appsinks(GstBin *bin) {
  check_bin(bin, "bin in find_all_appsinks");
  const unsigned long long appsink_type = get_element_type("appsink");
  std::vector<Element> appsinks;
  const Iterator iterator(gst_bin_iterate_recurse(bin));
  for_each_object(iterator.get(), [&appsinks, appsink_type](GObject *object) {
    if (G_OBJECT_TYPE(object) == appsink_type) appsinks.emplace_back(GST_ELEMENT_CAST(object));
  });
  return appsinks;
}

bool Media_Helper::bin_has_element_type(GstBin *bin, unsigned long long element_type) {
  check_bin(bin, "bin in bin_has_element_type");
  check_element_type(element_type, "element_type in bin_has_element_type");
  GValue result = G_VALUE_INIT;
  if (!find_in_bin<type_compare_func>(bin, element_type, result)) return false;
  g_value_unset(&result);
  return true;
}

int Media_Helper::caps_compare_func(const GValue *value,
                                    FindElementCapsTypeHelper *wanted) noexcept {
  GstElement *const element = GST_ELEMENT_CAST(g_value_get_object(value));
  if (G_OBJECT_TYPE(element) != wanted->element_type) return -1;
  const Caps caps = caps_of(element);
  if (!caps) return -1;
  return gst_caps_is_subset(caps.get(), wanted->caps) ? 0 : -1;
}

int Media_Helper::type_compare_func(const GValue *value, unsigned long long *wanted_type) noexcept {
  return G_OBJECT_TYPE(g_value_get_object(value)) == *wanted_type ? 0 : -1;
}

}  // namespace kel::tavren::capture
