// Formats times for display.

#ifndef TAVREN_PROGRAMS_TIME_TEXT_H
#define TAVREN_PROGRAMS_TIME_TEXT_H

#include <string>

#include <gst/gst.h>

namespace kel::tavren::programs {

// A duration in ns: 12.3 s.
std::string in_seconds(GstClockTime duration);

// A UTC time in us since 1970: 2026-12-31T23:59:59.999Z.
std::string in_utc(gint64 time);

}  // namespace kel::tavren::programs

#endif
