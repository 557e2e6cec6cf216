// Not installed: iterates over GStreamer objects with C++ code.

#ifndef TAVREN_CAPTURE_ITERATOR_WALK_H
#define TAVREN_CAPTURE_ITERATOR_WALK_H

#include <exception>
#include <memory>

#include <gst/gst.h>

#include <tavren/handles/emancipator.h>

namespace kel::tavren::capture {

// An iterator with a single owner.
using Iterator = std::unique_ptr<GstIterator, Emancipator<GstIterator>>;

// Calls visit(GObject *) for each object of an iterator, until the end or until the list changes;
// the remaining objects are then omitted. The object is borrowed. A null iterator is empty.
//
// gst_iterator_foreach() holds a reference on its C stack, so an exception of visit must not cross
// it: the exception is stored, the remaining objects are skipped, and it is rethrown afterwards.
template <typename Visit>
void for_each_object(GstIterator *iterator, Visit visit) {
  if (iterator == nullptr) return;
  struct Walk {
    Visit &visit;
    std::exception_ptr error;
  } walk{visit, nullptr};

  const GstIteratorForeachFunction trampoline = [](const GValue *item, gpointer data) {
    Walk &current = *static_cast<Walk *>(data);
    if (current.error) return;
    try {
      current.visit(static_cast<GObject *>(g_value_get_object(item)));
    } catch (...) {
      current.error = std::current_exception();
    }
  };
  gst_iterator_foreach(iterator, trampoline, &walk);
  if (walk.error) std::rethrow_exception(walk.error);
}

}  // namespace kel::tavren::capture

#endif
