/// @file
/// The kinds of media that the library tells apart.

#ifndef TAVREN_CAPTURE_MEDIA_TYPE_H
#define TAVREN_CAPTURE_MEDIA_TYPE_H

/// The capture side of the camera recording and streaming system.
namespace kel::tavren::capture {

/// The kinds of media that the library tells apart.
///
/// The numbers are part of the interface: callers store them. Values outside the list are legal
/// arguments everywhere and are treated as a kind that no table knows.
/// @ingroup media_types
enum MediaType : int {
  JPEG = 0,          ///< "image/jpeg"
  H264 = 1,          ///< "video/x-h264"
  MPEG_AUDIO = 2,    ///< "audio/mpeg" of any version: AAC among them
  MPEG_VIDEO = 3,    ///< "video/mpeg" and "video/x-divx"
  RTP_METADATA = 4,  ///< "application/x-rtp" whose encoding name is "VND.ONVIF.METADATA"
  RTP = 5,           ///< any other "application/x-rtp"
  VIDEO_RAW = 6,     ///< "video/x-raw" in system memory
  AUDIO_RAW = 7,     ///< "audio/x-raw"
  MULAW = 8,         ///< "audio/x-mulaw"
  UNKNOWN = 9        ///< everything else, EMPTY and ANY caps among it
};

}  // namespace kel::tavren::capture

#endif
