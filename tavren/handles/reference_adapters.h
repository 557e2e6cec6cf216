/// @file
/// The reference-count adapters that make `boost::intrusive_ptr<T>` a counted handle over the
/// framework's types.
///
/// They stand in the global namespace because the types do: that is where argument-dependent lookup
/// finds them. `boost::intrusive_ptr<T>(p)` adds a reference to a borrowed pointer;
/// `boost::intrusive_ptr<T>(p, false)` adopts a reference that a call returned.
///
/// Each adapter hands its pointer on unchanged to the call named beside it, takes (adds) or gives
/// back one reference, does not test for null (a handle never calls with null), does not throw, and
/// may be called from any thread.

#ifndef TAVREN_HANDLES_REFERENCE_ADAPTERS_H
#define TAVREN_HANDLES_REFERENCE_ADAPTERS_H

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <gst/gst.h>

#include <tavren/export.h>

// Declared and not included: handles to these need neither the headers of the RTSP server and of
// the app library nor, for the RTSP server, its library.
using GstAppSink = struct _GstAppSink;
using GstRTSPServer = struct _GstRTSPServer;
using GstRTSPMediaFactory = struct _GstRTSPMediaFactory;
using GstRTSPAuth = struct _GstRTSPAuth;
using GstRTSPMountPoints = struct _GstRTSPMountPoints;

// Mini-objects: counted by the mini-object calls.

/// `gst_mini_object_ref`: adds a reference.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstSample *sample) noexcept;
/// `gst_mini_object_unref`: gives a reference back.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstSample *sample) noexcept;

/// `gst_mini_object_ref`: adds a reference.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstCaps *caps) noexcept;
/// `gst_mini_object_unref`: gives a reference back.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstCaps *caps) noexcept;

/// `gst_mini_object_ref`: adds a reference.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstMessage *message) noexcept;
/// `gst_mini_object_unref`: gives a reference back.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstMessage *message) noexcept;

// Framework objects: counted by the calls of `GstObject`.

/// `gst_object_ref`: adds a reference.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstPad *pad) noexcept;
/// `gst_object_unref`: gives a reference back.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstPad *pad) noexcept;

/// `gst_object_ref`: adds a reference.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstElement *element) noexcept;
/// `gst_object_unref`: gives a reference back.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstElement *element) noexcept;

/// `gst_object_ref`: adds a reference.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstAppSink *appsink) noexcept;
/// `gst_object_unref`: gives a reference back.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstAppSink *appsink) noexcept;

/// `gst_object_ref`: adds a reference.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstBus *bus) noexcept;
/// `gst_object_unref`: gives a reference back.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstBus *bus) noexcept;

/// `gst_object_ref`: adds a reference.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstRTSPServer *server) noexcept;
/// `gst_object_unref`: gives a reference back.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstRTSPServer *server) noexcept;

// GLib's main-loop types: each counted by calls of its own.

/// `g_source_ref`: adds a reference.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GSource *source) noexcept;
/// `g_source_unref`: gives a reference back.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GSource *source) noexcept;

/// `g_main_loop_ref`: adds a reference.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GMainLoop *loop) noexcept;
/// `g_main_loop_unref`: gives a reference back.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GMainLoop *loop) noexcept;

/// `g_main_context_ref`: adds a reference.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GMainContext *context) noexcept;
/// `g_main_context_unref`: gives a reference back.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GMainContext *context) noexcept;

// Plain GObjects of the RTSP server.

/// `g_object_ref`: adds a reference.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstRTSPMediaFactory *factory) noexcept;
/// `g_object_unref`: gives a reference back.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstRTSPMediaFactory *factory) noexcept;

/// `g_object_ref`: adds a reference.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstRTSPAuth *auth) noexcept;
/// `g_object_unref`: gives a reference back.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstRTSPAuth *auth) noexcept;

/// `g_object_ref`: adds a reference.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_add_ref(GstRTSPMountPoints *mounts) noexcept;
/// `g_object_unref`: gives a reference back.
TAVREN_CAPTURE_EXPORT void intrusive_ptr_release(GstRTSPMountPoints *mounts) noexcept;

#endif
