// Not installed: the argument checks that the operations use.
//
// They are the same as those of `Media_Helper`, but take literals as descriptions: a check that
// passes creates no string, and costs no more than GStreamer's type check.

#ifndef TAVREN_CAPTURE_ARGUMENT_CHECKS_H
#define TAVREN_CAPTURE_ARGUMENT_CHECKS_H

#include <string_view>

#include <gst/gst.h>

#include <tavren/error/tavren_error_code.h>

namespace kel::tavren::capture {

// Throws an error whose message is the description followed by `what`.
[[noreturn]] void throw_bad_argument(TEC::Tavren_Error_Code code, std::string_view description,
                                     const char *what);

[[noreturn]] inline void throw_not_an_element(std::string_view description) {
  throw_bad_argument(TEC::NOT_AN_ELEMENT, description, " is not a GstElement *.");
}

// As GST_IS_ELEMENT, which first compares the type of the instance itself: GstElement is abstract,
// so that comparison never succeeds. g_type_check_instance_is_a returns FALSE for null too.
inline bool is_element(GstElement *element) noexcept {
  return g_type_check_instance_is_a(reinterpret_cast<GTypeInstance *>(element), GST_TYPE_ELEMENT);
}

inline void check_element(GstElement *element, std::string_view description) {
  if (!is_element(element)) throw_not_an_element(description);
}

inline void check_pad(GstPad *pad, std::string_view description) {
  if (!GST_IS_PAD(pad)) throw_bad_argument(TEC::NOT_A_PAD, description, " is not a GstPad *.");
}

inline void check_bin(GstBin *bin, std::string_view description) {
  if (!GST_IS_BIN(bin)) throw_bad_argument(TEC::NOT_A_BIN, description, " is not a GstBin *.");
}

inline void check_bus(GstBus *bus, std::string_view description) {
  if (!GST_IS_BUS(bus)) throw_bad_argument(TEC::NOT_A_BUS, description, " is not a GstBus *.");
}

inline void check_caps(GstCaps *caps, std::string_view description) {
  if (!GST_IS_CAPS(caps)) throw_bad_argument(TEC::NOT_CAPS, description, " is not a GstCaps *.");
}

inline void check_element_type(GType element_type, std::string_view description) {
  if (element_type == G_TYPE_INVALID)
    throw_bad_argument(TEC::INVALID_ELEMENT_TYPE, description, " is not a valid GType.");
}

}  // namespace kel::tavren::capture

#endif
