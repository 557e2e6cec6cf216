/// @file
/// The media types that the library distinguishes.

#ifndef TAVREN_CAPTURE_MEDIA_TYPE_H
#define TAVREN_CAPTURE_MEDIA_TYPE_H

/// The capture side of the camera recording and streaming system.
namespace kel::tavren::capture {

/// The media types that the library distinguishes.
///
/// The numbers are part of the interface: callers store them. All functions accept other values and
/// treat them as a media type that is in no table.
/// @ingroup media_types
enum MediaType : int {
  JPEG = 0,          ///< "image/jpeg"
  H264 = 1,          ///< "video/x-h264"
  MPEG_AUDIO = 2,    ///< "audio/mpeg" of any version, including AAC
  MPEG_VIDEO = 3,    ///< "video/mpeg" and "video/x-divx"
  RTP_METADATA = 4,  ///< "application/x-rtp" whose encoding name is "VND.ONVIF.METADATA"
  RTP = 5,           ///< any other "application/x-rtp"
  VIDEO_RAW = 6,     ///< "video/x-raw" in system memory
  AUDIO_RAW = 7,     ///< "audio/x-raw"
  MULAW = 8,         ///< "audio/x-mulaw"
  UNKNOWN = 9        ///< everything else, including EMPTY and ANY caps
};

}  // namespace kel::tavren::capture

#endif
