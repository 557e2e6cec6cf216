// The streams that a camera offers, and how each of them can be relayed.

#ifndef TAVREN_PROGRAMS_CAMERA_STREAMS_H
#define TAVREN_PROGRAMS_CAMERA_STREAMS_H

#include <string>

#include <gst/gst.h>
#include <tavren/handles/reference_adapters.h>

namespace kel::tavren::programs {

struct Camera_Stream {
  guint number = 0;                    // its place among the camera's streams
  boost::intrusive_ptr<GstCaps> caps;  // its RTP caps
  std::string depayloader;             // the elements that relay it,
  std::string payloader;               // empty if none do
  std::string obstacle;                // why none do

  bool relayed() const noexcept { return !depayloader.empty(); }
};

// The caps of a stream that an RTSP source offers for selection: a copy with the right name. The
// source names them application/x-unknown until the transport is agreed on.
boost::intrusive_ptr<GstCaps> offered_rtp_caps(GstCaps *offered);

// The encoding name of a stream. A camera need not give it for a static payload type.
std::string encoding_name_of(GstCaps *rtp_caps);

// The union of the caps of an element factory's pad templates in one direction.
boost::intrusive_ptr<GstCaps> template_caps(const std::string &factory, GstPadDirection direction);

// The name of an installed depayloader that takes RTP caps; empty if there is none.
std::string find_depayloader(const GstCaps *rtp_caps);

// Chooses the elements that relay a stream which an RTSP source offers for selection: those of the
// library's tables, else installed ones that fit its caps. Throws what
// the library throws if an element is missing.
Camera_Stream describe_stream(guint number, GstCaps *offered);

}  // namespace kel::tavren::programs

#endif
