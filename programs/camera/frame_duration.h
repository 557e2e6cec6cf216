// How long a frame lasts.

#ifndef TAVREN_PROGRAMS_FRAME_DURATION_H
#define TAVREN_PROGRAMS_FRAME_DURATION_H

#include <gst/gst.h>

namespace kel::tavren::programs {

// The duration of a frame in ns: its buffer's, or what its caps say of AAC, whose depayloaders and
// parser leave it out at some frames; 0 if it is not known. Never throws; any thread.
GstClockTime frame_duration(GstSample *frame) noexcept;

}  // namespace kel::tavren::programs

#endif
