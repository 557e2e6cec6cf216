/// @file
/// What a media file or stream holds.

#ifndef TAVREN_CAPTURE_MEDIA_INFO_H
#define TAVREN_CAPTURE_MEDIA_INFO_H

#include <string>
#include <vector>

#include <tavren/handles/reference_adapters.h>

namespace kel::tavren::capture {

/// What `Media_Helper::get_media_info` found at a URI; owns all that it holds.
///
/// A plain record: reading it from several threads is safe, changing it is not.
/// @ingroup media_discovery
struct Media_Info {
  /// The URI that was probed.
  std::string uri;
  /// The duration of the whole in ns; `GST_CLOCK_TIME_NONE` when it is not known.
  GstClockTime duration = 0;
  /// The caps of each video stream that has caps, in stream order; one reference each.
  std::vector<boost::intrusive_ptr<GstCaps>> video_caps;
  /// The caps of each audio stream that has caps, in stream order; one reference each.
  std::vector<boost::intrusive_ptr<GstCaps>> audio_caps;
};

}  // namespace kel::tavren::capture

#endif
