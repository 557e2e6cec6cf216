// Prints the streams of a media file as a table.

#ifndef TAVREN_PROGRAMS_MEDIA_TABLE_H
#define TAVREN_PROGRAMS_MEDIA_TABLE_H

#include <iosfwd>
#include <optional>
#include <utility>

#include <tavren/capture/media_info.h>

namespace kel::tavren::programs {

// Width and height in pixels.
using Resolution = std::pair<unsigned long long, unsigned long long>;

// Writes the URI, the duration and one row for each stream: its kind, caps name, resolution, frame
// rate and, if a box is given, the largest size at which its pictures fit into the box. Unknown
// values are printed as "-".
void print_media_table(std::ostream &out, const capture::Media_Info &info,
                       const std::optional<Resolution> &box = std::nullopt);

}  // namespace kel::tavren::programs

#endif
