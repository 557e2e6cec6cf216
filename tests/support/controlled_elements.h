// Elements for tests of states, buses and signals.

#ifndef TAVREN_TESTS_CONTROLLED_ELEMENTS_H
#define TAVREN_TESTS_CONTROLLED_ELEMENTS_H

#include <string>

#include <gtest/gtest.h>

#include "elements.h"
#include "errors.h"

namespace kel::tavren::tests {

using Bus = boost::intrusive_ptr<GstBus>;

// An element that is set to NULL before its last reference is released, as the framework requires.
class Stopped {
public:
  explicit Stopped(const char *factory, const char *name = nullptr)
      : element_(make_element(factory, name)) {}
  ~Stopped() { gst_element_set_state(element_.get(), GST_STATE_NULL); }
  Stopped(const Stopped &) = delete;
  Stopped &operator=(const Stopped &) = delete;

  GstElement *get() const { return element_.get(); }
  GstBin *as_bin() const { return GST_BIN_CAST(element_.get()); }

  // Removes the messages from a pipeline's bus: each keeps a reference to its source element.
  void drop_messages() const {
    const Bus bus(gst_element_get_bus(element_.get()), false);
    gst_bus_set_flushing(bus.get(), TRUE);
    gst_bus_set_flushing(bus.get(), FALSE);
  }

private:
  Element element_;
};

// Passes null, and an object of another type.
inline void expect_element_checked(const std::string &description, void (*call)(GstElement *)) {
  const Pad pad = make_pad("src", GST_PAD_SRC);
  const Expected_Error error{TEC::NOT_AN_ELEMENT, {description}};
  expect_error(error, [call] { call(nullptr); });
  expect_error(error, [call, &pad] { call(as_element(pad.get())); });
  EXPECT_EQ(reference_count(pad.get()), 1U);
}

// Creates an element that never reaches READY. Unlike standard factories, its factory has metadata
// with the key "name".
inline GstElement *make_tap(const char *name) {
  static const GType type =
      make_subclass(GST_TYPE_ELEMENT, "TestTap", [](gpointer tap_class, gpointer) {
        auto *const element_class = static_cast<GstElementClass *>(tap_class);
        gst_element_class_set_static_metadata(element_class, "Long name", "Generic", "Taps", "Us");
        gst_element_class_add_static_metadata(element_class, "name", "camera tap 100%");
        element_class->change_state = [](GstElement *, GstStateChange change) {
          return change == GST_STATE_CHANGE_NULL_TO_READY ? GST_STATE_CHANGE_FAILURE
                                                          : GST_STATE_CHANGE_SUCCESS;
        };
      });
  static const gboolean registered =
      gst_element_register(nullptr, "capturetap", GST_RANK_NONE, type);
  EXPECT_TRUE(registered);
  return gst_element_factory_make("capturetap", name);
}

inline Element make_owned_tap(const char *name) {
  return own(make_tap(name));
}

}  // namespace kel::tavren::tests

#endif
