// What a media file or stream holds, as a table for people.

#ifndef TAVREN_PROGRAMS_MEDIA_TABLE_H
#define TAVREN_PROGRAMS_MEDIA_TABLE_H

#include <iosfwd>
#include <optional>
#include <utility>

#include <tavren/capture/media_info.h>

namespace kel::tavren::programs {

// Width and height in pixels.
using Resolution = std::pair<unsigned long long, unsigned long long>;

// Writes the URI, the duration and one row for each stream: its kind and caps name, its resolution,
// its frame rate, and when a box is given, the size at which its pictures fill that box best. What
// a stream does not tell is a "-".
void print_media_table(std::ostream &out, const capture::Media_Info &info,
                       const std::optional<Resolution> &box = std::nullopt);

}  // namespace kel::tavren::programs

#endif
