// What streams a camera offers, and how each of them can be relayed.

#ifndef TAVREN_PROGRAMS_CAMERA_STREAMS_H
#define TAVREN_PROGRAMS_CAMERA_STREAMS_H

#include <string>
#include <vector>

#include <gst/gst.h>
#include <tavren/handles/reference_adapters.h>

namespace kel::tavren::programs {

struct Camera_Stream {
  guint number = 0;                    // its place among the camera's streams
  boost::intrusive_ptr<GstCaps> caps;  // its RTP caps
  std::string depayloader;             // the elements that relay it,
  std::string payloader;               // empty when nothing does
  std::string obstacle;                // why nothing does

  bool relayed() const noexcept { return !depayloader.empty(); }
};

// The caps of a stream that an RTSP source offers for selection: a copy with their right name.
// Before the transport is agreed on, the source names them application/x-unknown.
boost::intrusive_ptr<GstCaps> offered_rtp_caps(GstCaps *offered);

// Opens a session with the camera, looks at its streams and ends the session. Throws Bus_Error when
// the camera cannot be asked, and what the library throws when an element is missing.
std::vector<Camera_Stream> ask_for_streams(const std::string &uri);

// Throws Bus_Error when no camera answers any more.
void check_camera_answers(const std::string &uri);

}  // namespace kel::tavren::programs

#endif
