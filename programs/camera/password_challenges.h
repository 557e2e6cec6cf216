// The challenges with which a camera requests a password.

#ifndef TAVREN_PROGRAMS_PASSWORD_CHALLENGES_H
#define TAVREN_PROGRAMS_PASSWORD_CHALLENGES_H

#include <gst/rtsp/gstrtspmessage.h>

namespace kel::tavren::programs {

// Removes the Digest challenges of a response that require another hash function than MD5 if there
// is one with MD5. rtspsrc supports only MD5. If a camera offers several, as RFC 7616 suggests,
// rtspsrc uses the last one. A Basic challenge alone is no reason: the password would be sent
// unencrypted.
void remove_unsupported_challenges(GstRTSPMessage *answer);

}  // namespace kel::tavren::programs

#endif
