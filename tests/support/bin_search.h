// Searches of bins, and bins and appsinks to search for.

#ifndef TAVREN_TESTS_BIN_SEARCH_H
#define TAVREN_TESTS_BIN_SEARCH_H

#include <vector>

#include <gst/app/gstappsink.h>
#include <gtest/gtest.h>

#include "elements.h"

namespace kel::tavren::tests {

using capture::Media_Helper;
using Elements = std::vector<Element>;

inline GType appsink_subclass() {
  static const GType type = make_subclass(GST_TYPE_APP_SINK, "TestAppSink");
  return type;
}

inline GType tee_subclass() {
  static const GType type = make_subclass(Media_Helper::get_element_type("tee"), "TestTee");
  return type;
}

inline void set_caps(const Element &element, const char *caps) {
  g_object_set(element.get(), "caps", make_caps(caps).get(), nullptr);
}

inline Element make_appsink(const char *caps = nullptr) {
  Element appsink = make_element("appsink");
  if (caps != nullptr) set_caps(appsink, caps);
  return appsink;
}

inline Element find(const Element &bin, GType type, const char *caps) {
  return Element(
      Media_Helper::find_element_with_caps_and_type(as_bin(bin), type, make_caps(caps).get()),
      false);
}

inline Element find_tee(const Element &bin, const char *caps) {
  return Element(Media_Helper::find_tee_with_caps(as_bin(bin), make_caps(caps).get()), false);
}

inline Element find_appsink(const Element &bin, const char *caps) {
  return Element(Media_Helper::find_appsink_with_caps(as_bin(bin), make_caps(caps).get()), false);
}

// Returns the appsinks of a bin in the framework's iteration order.
inline Elements walk(const Element &bin) {
  Elements elements;
  GstIterator *const iterator = gst_bin_iterate_recurse(as_bin(bin));
  const GstIteratorForeachFunction append = [](const GValue *item, gpointer list) {
    GstElement *const element = GST_ELEMENT(g_value_get_object(item));
    if (GST_IS_APP_SINK(element)) static_cast<Elements *>(list)->emplace_back(element);
  };
  gst_iterator_foreach(iterator, append, &elements);
  gst_iterator_free(iterator);
  return elements;
}

class Bin_Search_Test : public testing::Test {
protected:
  const Element bin_ = make_bin("bin");
  const GType tee_type_ = Media_Helper::get_element_type("tee");
};

}  // namespace kel::tavren::tests

#endif
