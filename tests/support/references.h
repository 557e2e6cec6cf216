// Checks for reference counts and for the destruction of objects.

#ifndef TAVREN_TESTS_REFERENCES_H
#define TAVREN_TESTS_REFERENCES_H

#include <vector>

#include <gst/gst.h>
#include <tavren/capture/media_helper.h>

namespace kel::tavren::tests {

using Element = boost::intrusive_ptr<GstElement>;
using Pad = boost::intrusive_ptr<GstPad>;
using Caps = boost::intrusive_ptr<GstCaps>;

inline guint reference_count(gpointer object) {
  return G_OBJECT(object)->ref_count;
}
inline gint reference_count(GstCaps *caps) {
  return GST_MINI_OBJECT_REFCOUNT_VALUE(caps);
}

// Returns the reference counts of several objects, for comparisons before and after a call.
inline std::vector<guint> reference_counts(const std::vector<gpointer> &objects) {
  std::vector<guint> counts;
  for (const gpointer object : objects)
    counts.push_back(reference_count(object));
  return counts;
}

// Detects the destruction of an object without keeping it alive.
class Weak_Watch {
public:
  explicit Weak_Watch(gpointer object) : object_(G_OBJECT(object)) {
    g_object_add_weak_pointer(object_, reinterpret_cast<gpointer *>(&object_));
  }
  ~Weak_Watch() {
    if (object_ != nullptr)
      g_object_remove_weak_pointer(object_, reinterpret_cast<gpointer *>(&object_));
  }
  Weak_Watch(const Weak_Watch &) = delete;
  Weak_Watch &operator=(const Weak_Watch &) = delete;

  bool gone() const { return object_ == nullptr; }

private:
  GObject *object_;
};

}  // namespace kel::tavren::tests

#endif
