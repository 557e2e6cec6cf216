// Differences of GStreamer 1.18 from later versions that affect tests.

#ifndef TAVREN_TESTS_FRAMEWORK_VERSION_H
#define TAVREN_TESTS_FRAMEWORK_VERSION_H

#include <gst/gst.h>

namespace kel::tavren::tests {

inline bool framework_is_1_18() {
  guint major = 0;
  guint minor = 0;
  guint micro = 0;
  guint nano = 0;
  gst_version(&major, &minor, &micro, &nano);
  return minor < 20;
}

// GStreamer 1.18 accepts a second watch on a bus, and creates a discoverer for an invalid timeout.
inline bool framework_can_cause(int code) {
  return !framework_is_1_18() || (code != 0x151B0 && code != 0x152A0);
}

}  // namespace kel::tavren::tests

#endif
