// What the programs add to the framework's RTSP client.

#ifndef TAVREN_PROGRAMS_RTSP_EXTENSION_H
#define TAVREN_PROGRAMS_RTSP_EXTENSION_H

#include <gst/gst.h>

namespace kel::tavren::programs {

// Makes all RTSP sources set up streams by the addresses that most cameras expect; see
// Stream_Addresses. Call it before the first source is created: rtspsrc looks for extensions once.
void register_rtsp_extension();

// Adds an rtspsrc with the extension to a bin, which owns it. Throws what the library throws if the
// element is missing.
GstElement *add_rtsp_source(GstElement *bin, const char *name);

// Keeps the session of a source that add_rtsp_source() has created open. `pad` is a pad of its
// manager that the packets of the RTSP connection enter. rtspsrc sends requests of this kind only
// while no packets arrive on the connection, and many cameras end a session after a time without
// one.
void keep_session_alive(GstElement *source, GstPad *pad);

}  // namespace kel::tavren::programs

#endif
