/// @file
/// The contents of a media file or stream.

#ifndef TAVREN_CAPTURE_MEDIA_INFO_H
#define TAVREN_CAPTURE_MEDIA_INFO_H

#include <string>
#include <vector>

#include <tavren/handles/reference_adapters.h>

namespace kel::tavren::capture {

/// The result of `Media_Helper::get_media_info`; owns its contents.
///
/// A plain struct: reading it from several threads is safe, changing it is not.
/// @ingroup media_discovery
struct Media_Info {
  /// The URI that was probed.
  std::string uri;
  /// The total duration in ns; `GST_CLOCK_TIME_NONE` if it is not known.
  GstClockTime duration = 0;
  /// The caps of each video stream that has caps, in stream order; one reference each.
  std::vector<boost::intrusive_ptr<GstCaps>> video_caps;
  /// The caps of each audio stream that has caps, in stream order; one reference each.
  std::vector<boost::intrusive_ptr<GstCaps>> audio_caps;
};

}  // namespace kel::tavren::capture

#endif
