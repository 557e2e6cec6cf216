/// @file
/// The deleter for strings and iterators from GLib and GStreamer, which are not reference-counted.

#ifndef TAVREN_HANDLES_EMANCIPATOR_H
#define TAVREN_HANDLES_EMANCIPATOR_H

#include <gst/gst.h>

#include <tavren/export.h>

namespace kel::tavren {

/// Frees a @p T. Use it as the stateless deleter of `std::unique_ptr<char, Emancipator<char>>`.
///
/// @tparam T `char` or `GstIterator`; other types are not supported.
/// @ingroup handles
template <typename T>
struct Emancipator;

/// Frees strings that GLib returned as a copy, such as the result of `gst_object_get_name`.
/// @ingroup handles
template <>
struct Emancipator<char> {
  /// Frees the string with `g_free`.
  /// @param text (transfer full) (nullable) the string. Does not throw. Any thread.
  TAVREN_CAPTURE_EXPORT void operator()(char *text) const noexcept;
};

/// Frees an iterator over pads or elements.
/// @ingroup handles
template <>
struct Emancipator<GstIterator> {
  /// Frees the iterator with `gst_iterator_free`.
  /// @param iterator (transfer full) (not nullable) the iterator. Does not throw. Any thread.
  TAVREN_CAPTURE_EXPORT void operator()(GstIterator *iterator) const noexcept;
};

}  // namespace kel::tavren

#endif
