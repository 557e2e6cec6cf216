// Not installed: the checks of arguments, as the operations ask for them.
//
// They are those of `Media_Helper`, but take a description that is made into a string only for an
// argument that fails: a check that passes allocates nothing.

#ifndef TAVREN_CAPTURE_ARGUMENT_CHECKS_H
#define TAVREN_CAPTURE_ARGUMENT_CHECKS_H

#include <string_view>

#include <gst/gst.h>

namespace kel::tavren::capture {

void check_element(GstElement *element, std::string_view description);
void check_pad(GstPad *pad, std::string_view description);
void check_bin(GstBin *bin, std::string_view description);
void check_bus(GstBus *bus, std::string_view description);
void check_caps(GstCaps *caps, std::string_view description);
void check_element_type(GType element_type, std::string_view description);

}  // namespace kel::tavren::capture

#endif
