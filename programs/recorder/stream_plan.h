// The elements between one of the camera's streams and a container.

#ifndef TAVREN_PROGRAMS_STREAM_PLAN_H
#define TAVREN_PROGRAMS_STREAM_PLAN_H

#include <stdexcept>
#include <string>

#include <gst/gst.h>
#include <tavren/capture/media_type.h>

#include "container.h"

namespace kel::tavren::programs {

struct Stream_Plan {
  std::string media;     // video, audio or another kind, as announced by the camera
  std::string encoding;  // the RTP encoding name, or the number of the payload type
  std::string depayloader;
  std::string parser;       // empty: none needed
  std::string timestamper;  // adds decoding times; empty: none needed, or none installed
  capture::MediaType kind = capture::UNKNOWN;  // of the depayloaded media
  bool is_metadata = false;
  bool has_access_units = false;  // H.264 or H.265: an access unit may have several slices
  std::string obstacle;           // why the stream cannot be recorded, with the code; empty: it can

  bool is_video() const { return media == "video"; }
  bool is_recorded() const { return obstacle.empty(); }
  // The name of the stream in messages: video H264.
  std::string name() const { return media + ' ' + encoding; }
};

// The error if the camera offers no stream that can be recorded.
class Nothing_To_Record : public std::runtime_error {
public:
  // `plan` is the plan of the first stream.
  explicit Nothing_To_Record(const Stream_Plan &plan)
      : std::runtime_error(plan.obstacle + " (" + plan.name() +
                           "); no stream of the camera can be recorded") {}
};

// Plans the recording of a stream with the given RTP caps. Uses the library's tables first. For an
// unknown stream, uses any depayloader and parser in the registry whose output the container
// accepts. Propagates the library's exception if an element in its tables is missing.
Stream_Plan plan_stream(GstCaps *rtp_caps, const Container &container);

}  // namespace kel::tavren::programs

#endif
