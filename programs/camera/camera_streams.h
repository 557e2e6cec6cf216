// The streams that a camera offers, and the elements that relay them.

#ifndef TAVREN_PROGRAMS_CAMERA_STREAMS_H
#define TAVREN_PROGRAMS_CAMERA_STREAMS_H

#include <string>

#include <gst/gst.h>
#include <tavren/handles/reference_adapters.h>

namespace kel::tavren::programs {

struct Camera_Stream {
  guint number = 0;                    // position among the camera's streams
  boost::intrusive_ptr<GstCaps> caps;  // RTP caps
  std::string depayloader;             // elements that relay the stream,
  std::string payloader;               // empty if there are none
  std::string obstacle;                // reason why the stream cannot be relayed

  bool relayed() const noexcept { return !depayloader.empty(); }
};

// Returns a copy of the caps that an RTSP source offers for selection, renamed to
// application/x-rtp. The source names them application/x-unknown until the transport is negotiated.
boost::intrusive_ptr<GstCaps> offered_rtp_caps(GstCaps *offered);

// Returns the encoding name of a stream. A camera may omit it for a static payload type.
std::string encoding_name_of(GstCaps *rtp_caps);

// Returns the union of the caps of a factory's pad templates in one direction.
boost::intrusive_ptr<GstCaps> template_caps(const std::string &factory, GstPadDirection direction);

// Returns the name of an installed depayloader that accepts the RTP caps; empty if there is none.
std::string find_depayloader(const GstCaps *rtp_caps);

// Chooses the elements that relay a stream that an RTSP source offers for selection. Uses the
// library's tables first, then installed elements that match the caps. Propagates the library's
// exception if an element is missing.
Camera_Stream describe_stream(guint number, GstCaps *offered);

}  // namespace kel::tavren::programs

#endif
