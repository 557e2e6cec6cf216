// The duration of a frame.

#ifndef TAVREN_PROGRAMS_FRAME_DURATION_H
#define TAVREN_PROGRAMS_FRAME_DURATION_H

#include <gst/gst.h>

namespace kel::tavren::programs {

// Returns the duration of a frame in ns, or 0 if it is unknown. Uses the buffer's duration, or
// computes it from AAC caps, because the AAC depayloaders and parser omit the duration of some
// frames. Never throws. Safe in any thread.
GstClockTime frame_duration(GstSample *frame) noexcept;

}  // namespace kel::tavren::programs

#endif
