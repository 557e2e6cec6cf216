// The pads of an RTSP source. Each SSRC of a stream has a pad.

#ifndef TAVREN_PROGRAMS_SOURCE_PADS_H
#define TAVREN_PROGRAMS_SOURCE_PADS_H

#include <gst/gst.h>

namespace kel::tavren::programs {

// Returns the number, in the camera's description, of the stream on a pad of the source. Throws
// Bus_Error if the pad does not belong to an RTSP source.
guint stream_number(GstPad *pad);

// Removes the pad of an SSRC that is no longer in use, and the source's elements for it, which
// would otherwise run until the source stops. If the camera returns to the SSRC, the source adds a
// new pad; if it only sends RTCP for it, the source creates the elements again, without a pad. The
// pad must not be the newest of its stream. Does nothing before GStreamer 1.20, which cannot remove
// an SSRC. Throws Bus_Error if the pad does not belong to an RTSP source.
void remove_source_pad(GstPad *pad);

}  // namespace kel::tavren::programs

#endif
