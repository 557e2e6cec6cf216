/// @file
/// The reference-count adapters that make `boost::intrusive_ptr<T>` a handle for GStreamer's types.

#ifndef TAVREN_HANDLES_REFERENCE_ADAPTERS_H
#define TAVREN_HANDLES_REFERENCE_ADAPTERS_H

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <gst/gst.h>

#include <tavren/export.h>

/// @defgroup handles Handles
/// Hold the results of GStreamer calls, and release them automatically.
///
/// Use `boost::intrusive_ptr` for reference-counted objects, `std::unique_ptr` with an
/// `Emancipator` for strings and iterators, and a `Scope_Exit_Guard` for everything else.
///
/// The adapters `intrusive_ptr_add_ref` and `intrusive_ptr_release` are in the global namespace
/// because the types are: argument-dependent lookup finds them there. `boost::intrusive_ptr<T>(p)`
/// adds a reference to a borrowed pointer; `boost::intrusive_ptr<T>(p, false)` adopts a reference
/// that a call returned.
///
/// Each adapter passes its pointer unchanged to the function named in its documentation, and adds
/// or releases one reference. It does not check for null (handles never pass null), does not throw,
/// and may be called from any thread.
///
/// @snippet examples/operations/texts.cpp handles
/// @{

// Forward-declared: handles for these types need neither the headers of the RTSP server and the app
// library nor, for the RTSP server, the library itself.

/// An appsink; the complete type is in `<gst/app/gstappsink.h>`.
using GstAppSink = struct _GstAppSink;
/// An RTSP server; the complete type is in `<gst/rtsp-server/rtsp-server.h>`.
using GstRTSPServer = struct _GstRTSPServer;
/// Creates the media of an RTSP server; the complete type is in `<gst/rtsp-server/rtsp-server.h>`.
using GstRTSPMediaFactory = struct _GstRTSPMediaFactory;
/// An RTSP server's authentication; the complete type is in `<gst/rtsp-server/rtsp-server.h>`.
using GstRTSPAuth = struct _GstRTSPAuth;
/// The mount points of an RTSP server; the complete type is in `<gst/rtsp-server/rtsp-server.h>`.
using GstRTSPMountPoints = struct _GstRTSPMountPoints;

// Mini-objects.

/// `gst_mini_object_ref`: adds a reference.
/// @param sample (not nullable) the sample. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstSample *sample) noexcept;
/// `gst_mini_object_unref`: releases a reference.
/// @param sample (transfer full) (not nullable) the sample. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstSample *sample) noexcept;

/// `gst_mini_object_ref`: adds a reference.
/// @param caps (not nullable) the caps. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstCaps *caps) noexcept;
/// `gst_mini_object_unref`: releases a reference.
/// @param caps (transfer full) (not nullable) the caps. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstCaps *caps) noexcept;

/// `gst_mini_object_ref`: adds a reference.
/// @param message (not nullable) the message. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstMessage *message) noexcept;
/// `gst_mini_object_unref`: releases a reference.
/// @param message (transfer full) (not nullable) the message. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstMessage *message) noexcept;

// Subclasses of `GstObject`.

/// `gst_object_ref`: adds a reference.
/// @param pad (not nullable) the pad. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstPad *pad) noexcept;
/// `gst_object_unref`: releases a reference.
/// @param pad (transfer full) (not nullable) the pad. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstPad *pad) noexcept;

/// `gst_object_ref`: adds a reference.
/// @param element (not nullable) the element. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstElement *element) noexcept;
/// `gst_object_unref`: releases a reference.
/// @param element (transfer full) (not nullable) the element. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstElement *element) noexcept;

/// `gst_object_ref`: adds a reference.
/// @param appsink (not nullable) the appsink. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstAppSink *appsink) noexcept;
/// `gst_object_unref`: releases a reference.
/// @param appsink (transfer full) (not nullable) the appsink. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstAppSink *appsink) noexcept;

/// `gst_object_ref`: adds a reference.
/// @param bus (not nullable) the bus. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstBus *bus) noexcept;
/// `gst_object_unref`: releases a reference.
/// @param bus (transfer full) (not nullable) the bus. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstBus *bus) noexcept;

/// `gst_object_ref`: adds a reference.
/// @param server (not nullable) the server. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstRTSPServer *server) noexcept;
/// `gst_object_unref`: releases a reference.
/// @param server (transfer full) (not nullable) the server. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstRTSPServer *server) noexcept;

// GLib's main-loop types, each with its own functions.

/// `g_source_ref`: adds a reference.
/// @param source (not nullable) the source. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GSource *source) noexcept;
/// `g_source_unref`: releases a reference.
/// @param source (transfer full) (not nullable) the source. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GSource *source) noexcept;

/// `g_main_loop_ref`: adds a reference.
/// @param loop (not nullable) the loop. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GMainLoop *loop) noexcept;
/// `g_main_loop_unref`: releases a reference.
/// @param loop (transfer full) (not nullable) the loop. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GMainLoop *loop) noexcept;

/// `g_main_context_ref`: adds a reference.
/// @param context (not nullable) the context. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GMainContext *context) noexcept;
/// `g_main_context_unref`: releases a reference.
/// @param context (transfer full) (not nullable) the context. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GMainContext *context) noexcept;

// Plain GObjects of the RTSP server.

/// `g_object_ref`: adds a reference.
/// @param factory (not nullable) the factory. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstRTSPMediaFactory *factory) noexcept;
/// `g_object_unref`: releases a reference.
/// @param factory (transfer full) (not nullable) the factory. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstRTSPMediaFactory *factory) noexcept;

/// `g_object_ref`: adds a reference.
/// @param auth (not nullable) the authentication. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstRTSPAuth *auth) noexcept;
/// `g_object_unref`: releases a reference.
/// @param auth (transfer full) (not nullable) the authentication. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstRTSPAuth *auth) noexcept;

/// `g_object_ref`: adds a reference.
/// @param mounts (not nullable) the mount points. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstRTSPMountPoints *mounts) noexcept;
/// `g_object_unref`: releases a reference.
/// @param mounts (transfer full) (not nullable) the mount points. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstRTSPMountPoints *mounts) noexcept;

/// @}

#endif
