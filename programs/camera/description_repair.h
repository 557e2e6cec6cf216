// Repairs of a camera's session description.

#ifndef TAVREN_PROGRAMS_DESCRIPTION_REPAIR_H
#define TAVREN_PROGRAMS_DESCRIPTION_REPAIR_H

#include <gst/sdp/gstsdpmessage.h>

namespace kel::tavren::programs {

bool is_video(const GstSDPMedia *media);
bool is_audio(const GstSDPMedia *media);

// Makes rtspsrc accept the description as other clients do. Call this before rtspsrc reads it.
//
// - A transport protocol such as RTP/AVP/TCP or rtp/avp becomes RTP/AVP. The transport is
//   negotiated later.
// - Audio from the client to the camera gets a protocol that rtspsrc ignores, and so does every
//   other inactive stream that is not video. rtspsrc would set them up, and some cameras refuse
//   that. Nothing is changed if the camera describes all its video and audio like that, as some do
//   for the streams that they send.
void repair_description(GstSDPMessage *description);

}  // namespace kel::tavren::programs

#endif
