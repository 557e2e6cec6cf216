// Not installed: how the sources here name objects and fill messages.

#ifndef TAVREN_CAPTURE_MESSAGE_TEXT_H
#define TAVREN_CAPTURE_MESSAGE_TEXT_H

#include <initializer_list>
#include <ios>
#include <memory>
#include <string>

#include <gst/gst.h>

#include <tavren/error/tavren_error.h>
#include <tavren/handles/emancipator.h>

namespace kel::tavren::capture {

// What every throw site throws, but for the one logic error.
using Error = Backend_Error<std::runtime_error>;

// Text that GLib handed out as a copy; may be null.
using Text = std::unique_ptr<char, Emancipator<char>>;

Text object_name(gpointer object) noexcept;

// The factory's metadata under the key "name", which is not the key of the long name: standard
// factories have none. Null then, and for an element without a factory. Borrowed from the factory.
const char *factory_name(GstElement *element) noexcept;

// A manipulator that lets a failed allocation out of a stream, which would keep it for itself and
// go on with part of the text missing.
std::ios &rethrow_failures(std::ios &stream);

// Fills the %s of a format; a null becomes empty text.
std::string fill(const char *format, std::initializer_list<const char *> values);

// The functions below build messages outside the operations, so that a successful call sets up no
// frame for one.

// Puts the text between the two others.
[[noreturn]] void throw_quoting(TEC::Tavren_Error_Code code, const char *before,
                                const std::string &text, const char *after);

// Fills the format with the name of the element.
[[noreturn]] void throw_naming(TEC::Tavren_Error_Code code, const char *format,
                               GstElement *element);

// Fills the format with the name of the element and the name in its factory's metadata.
[[noreturn]] void throw_naming_with_factory(TEC::Tavren_Error_Code code, const char *format,
                                            GstElement *element);

}  // namespace kel::tavren::capture

#endif
