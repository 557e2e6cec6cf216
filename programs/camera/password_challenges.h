// The challenges with which a camera requests a password.

#ifndef TAVREN_PROGRAMS_PASSWORD_CHALLENGES_H
#define TAVREN_PROGRAMS_PASSWORD_CHALLENGES_H

#include <gst/rtsp/gstrtspmessage.h>

namespace kel::tavren::programs {

// Removes the challenges of a response that require another hash function than MD5, unless there is
// no other challenge. rtspsrc supports only MD5. If a camera offers several, as RFC 7616 suggests,
// rtspsrc mixes their parameters.
void remove_unsupported_challenges(GstRTSPMessage *answer);

}  // namespace kel::tavren::programs

#endif
