/// @file
/// The reference-count adapters that make `boost::intrusive_ptr<T>` a counted handle over the
/// framework's types.

#ifndef TAVREN_HANDLES_REFERENCE_ADAPTERS_H
#define TAVREN_HANDLES_REFERENCE_ADAPTERS_H

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <gst/gst.h>

#include <tavren/export.h>

/// @defgroup handles Handles
/// Hold what the framework hands out, and give it back when the holder goes.
///
/// What is counted is held by a `boost::intrusive_ptr`, what is not by a `std::unique_ptr` with an
/// `Emancipator`, and what neither can hold is given back by a `Scope_Exit_Guard`.
///
/// The adapters `intrusive_ptr_add_ref` and `intrusive_ptr_release` stand in the global namespace
/// because the types do: that is where argument-dependent lookup finds them.
/// `boost::intrusive_ptr<T>(p)` adds a reference to a borrowed pointer;
/// `boost::intrusive_ptr<T>(p, false)` adopts a reference that a call returned.
///
/// Each adapter hands its pointer on unchanged to the call named beside it, takes (adds) or gives
/// back one reference, does not test for null (a handle never calls with null), does not throw, and
/// may be called from any thread.
/// @{

// Declared and not included: handles to these need neither the headers of the RTSP server and of
// the app library nor, for the RTSP server, its library.

/// An appsink; the whole type is in `<gst/app/gstappsink.h>`.
using GstAppSink = struct _GstAppSink;
/// An RTSP server; the whole type is in `<gst/rtsp-server/rtsp-server.h>`.
using GstRTSPServer = struct _GstRTSPServer;
/// What makes the media of an RTSP server; the whole type is in `<gst/rtsp-server/rtsp-server.h>`.
using GstRTSPMediaFactory = struct _GstRTSPMediaFactory;
/// An RTSP server's authentication; the whole type is in `<gst/rtsp-server/rtsp-server.h>`.
using GstRTSPAuth = struct _GstRTSPAuth;
/// The mount points of an RTSP server; the whole type is in `<gst/rtsp-server/rtsp-server.h>`.
using GstRTSPMountPoints = struct _GstRTSPMountPoints;

// Mini-objects: counted by the mini-object calls.

/// `gst_mini_object_ref`: adds a reference.
/// @param sample (not nullable) the sample. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstSample *sample) noexcept;
/// `gst_mini_object_unref`: gives a reference back.
/// @param sample (transfer full) (not nullable) the sample. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstSample *sample) noexcept;

/// `gst_mini_object_ref`: adds a reference.
/// @param caps (not nullable) the caps. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstCaps *caps) noexcept;
/// `gst_mini_object_unref`: gives a reference back.
/// @param caps (transfer full) (not nullable) the caps. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstCaps *caps) noexcept;

/// `gst_mini_object_ref`: adds a reference.
/// @param message (not nullable) the message. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstMessage *message) noexcept;
/// `gst_mini_object_unref`: gives a reference back.
/// @param message (transfer full) (not nullable) the message. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstMessage *message) noexcept;

// Framework objects: counted by the calls of `GstObject`.

/// `gst_object_ref`: adds a reference.
/// @param pad (not nullable) the pad. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstPad *pad) noexcept;
/// `gst_object_unref`: gives a reference back.
/// @param pad (transfer full) (not nullable) the pad. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstPad *pad) noexcept;

/// `gst_object_ref`: adds a reference.
/// @param element (not nullable) the element. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstElement *element) noexcept;
/// `gst_object_unref`: gives a reference back.
/// @param element (transfer full) (not nullable) the element. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstElement *element) noexcept;

/// `gst_object_ref`: adds a reference.
/// @param appsink (not nullable) the appsink. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstAppSink *appsink) noexcept;
/// `gst_object_unref`: gives a reference back.
/// @param appsink (transfer full) (not nullable) the appsink. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstAppSink *appsink) noexcept;

/// `gst_object_ref`: adds a reference.
/// @param bus (not nullable) the bus. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstBus *bus) noexcept;
/// `gst_object_unref`: gives a reference back.
/// @param bus (transfer full) (not nullable) the bus. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstBus *bus) noexcept;

/// `gst_object_ref`: adds a reference.
/// @param server (not nullable) the server. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstRTSPServer *server) noexcept;
/// `gst_object_unref`: gives a reference back.
/// @param server (transfer full) (not nullable) the server. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstRTSPServer *server) noexcept;

// GLib's main-loop types: each counted by calls of its own.

/// `g_source_ref`: adds a reference.
/// @param source (not nullable) the source. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GSource *source) noexcept;
/// `g_source_unref`: gives a reference back.
/// @param source (transfer full) (not nullable) the source. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GSource *source) noexcept;

/// `g_main_loop_ref`: adds a reference.
/// @param loop (not nullable) the loop. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GMainLoop *loop) noexcept;
/// `g_main_loop_unref`: gives a reference back.
/// @param loop (transfer full) (not nullable) the loop. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GMainLoop *loop) noexcept;

/// `g_main_context_ref`: adds a reference.
/// @param context (not nullable) the context. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GMainContext *context) noexcept;
/// `g_main_context_unref`: gives a reference back.
/// @param context (transfer full) (not nullable) the context. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GMainContext *context) noexcept;

// Plain GObjects of the RTSP server.

/// `g_object_ref`: adds a reference.
/// @param factory (not nullable) the factory. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstRTSPMediaFactory *factory) noexcept;
/// `g_object_unref`: gives a reference back.
/// @param factory (transfer full) (not nullable) the factory. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstRTSPMediaFactory *factory) noexcept;

/// `g_object_ref`: adds a reference.
/// @param auth (not nullable) the authentication. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstRTSPAuth *auth) noexcept;
/// `g_object_unref`: gives a reference back.
/// @param auth (transfer full) (not nullable) the authentication. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstRTSPAuth *auth) noexcept;

/// `g_object_ref`: adds a reference.
/// @param mounts (not nullable) the mount points. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstRTSPMountPoints *mounts) noexcept;
/// `g_object_unref`: gives a reference back.
/// @param mounts (transfer full) (not nullable) the mount points. Does not throw. Any thread.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstRTSPMountPoints *mounts) noexcept;

/// @}

#endif
