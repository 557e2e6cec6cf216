// Repairs of a camera's session description.

#ifndef TAVREN_PROGRAMS_DESCRIPTION_REPAIR_H
#define TAVREN_PROGRAMS_DESCRIPTION_REPAIR_H

#include <gst/sdp/gstsdpmessage.h>

namespace kel::tavren::programs {

// Makes rtspsrc accept the description as other clients do. Call this before rtspsrc reads it.
//
// - A transport protocol such as RTP/AVP/TCP or rtp/avp becomes RTP/AVP. The transport is
//   negotiated later.
// - Streams from the client to the camera, and inactive ones, get a protocol that rtspsrc ignores,
//   unless the camera describes all streams so. rtspsrc would set them up, and some cameras refuse
//   that.
void repair_description(GstSDPMessage *description);

}  // namespace kel::tavren::programs

#endif
