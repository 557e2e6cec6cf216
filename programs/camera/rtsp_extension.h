// Extends the framework's RTSP client.

#ifndef TAVREN_PROGRAMS_RTSP_EXTENSION_H
#define TAVREN_PROGRAMS_RTSP_EXTENSION_H

#include <functional>

#include <gst/gst.h>

namespace kel::tavren::programs {

// Makes all RTSP sources set up streams with the addresses that most cameras expect; see
// Stream_Addresses. Call this before the first source is created: rtspsrc looks for extensions only
// once.
void register_rtsp_extension();

// Adds an rtspsrc with the extension to a bin, which owns it. Propagates the library's exception if
// the element is missing.
GstElement *add_rtsp_source(GstElement *bin, const char *name);

// Calls the handler with the status of each response to SETUP that a source created by
// add_rtsp_source() receives. The handler is called in the thread that also offers the streams for
// selection, and must not throw.
void on_setup_response(GstElement *source, std::function<void(guint status)> handler);

// Keeps the session of a source created by add_rtsp_source() open. `pad` is a pad of the source's
// manager that receives the packets of the RTSP connection. Many cameras end a session that
// receives no request for some time, and rtspsrc sends keep-alive requests only while no packets
// arrive on the connection.
void keep_session_alive(GstElement *source, GstPad *pad);

}  // namespace kel::tavren::programs

#endif
