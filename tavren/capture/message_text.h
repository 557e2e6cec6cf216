// Not installed: names of objects, and formatting of messages.

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

// The type of all exceptions except the logic error.
using Error = Backend_Error<std::runtime_error>;

// A string that GLib returned as a copy; may be null.
using Text = std::unique_ptr<char, Emancipator<char>>;

Text object_name(gpointer object) noexcept;

// Returns the factory's metadata under the key "name", borrowed from the factory. It is not the
// long name, and standard factories do not set it. Null if it is not set or the element has no
// factory.
const char *factory_name(GstElement *element) noexcept;

// A manipulator that makes a stream rethrow failed allocations. By default, a stream swallows them
// and omits part of the text.
std::ios &rethrow_failures(std::ios &stream);

// Replaces each %s of a format. A null is replaced by an empty string.
std::string fill(const char *format, std::initializer_list<const char *> values);

// The functions below build messages outside the operations, so that a successful call sets up no
// frame for one.

// Throws an error whose message is the text between `before` and `after`.
[[noreturn]] void throw_quoting(TEC::Tavren_Error_Code code, const char *before,
                                const std::string &text, const char *after);

// Throws an error whose message is the format filled with the name of the element.
[[noreturn]] void throw_naming(TEC::Tavren_Error_Code code, const char *format,
                               GstElement *element);

// Throws an error whose message is the format filled with the name of the element and the name in
// its factory's metadata.
[[noreturn]] void throw_naming_with_factory(TEC::Tavren_Error_Code code, const char *format,
                                            GstElement *element);

}  // namespace kel::tavren::capture

#endif
