/// @file
/// The deleter for what GLib and the framework hand out once and do not count.

#ifndef TAVREN_HANDLES_EMANCIPATOR_H
#define TAVREN_HANDLES_EMANCIPATOR_H

#include <gst/gst.h>

#include <tavren/export.h>

namespace kel::tavren {

/// Frees a @p T; the stateless deleter of a single-owner holder such as
/// `std::unique_ptr<char, Emancipator<char>>`.
///
/// @tparam T `char` or `GstIterator`: there are no others.
/// @ingroup handles
template <typename T>
struct Emancipator;

/// Frees text that GLib returned as a new copy, such as the result of `gst_object_get_name`.
/// @ingroup handles
template <>
struct Emancipator<char> {
  /// Frees the text with `g_free`.
  /// @param text (transfer full) (nullable) the text. Does not throw. Any thread.
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
