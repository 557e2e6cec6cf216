#include <tavren/handles/reference_adapters.h>

// Formatted as a table, one row per line.
// clang-format off

void intrusive_ptr_add_ref(GstSample *sample) noexcept { gst_mini_object_ref(GST_MINI_OBJECT_CAST(sample)); }
void intrusive_ptr_release(GstSample *sample) noexcept { gst_mini_object_unref(GST_MINI_OBJECT_CAST(sample)); }
void intrusive_ptr_add_ref(GstCaps *caps) noexcept { gst_mini_object_ref(GST_MINI_OBJECT_CAST(caps)); }
void intrusive_ptr_release(GstCaps *caps) noexcept { gst_mini_object_unref(GST_MINI_OBJECT_CAST(caps)); }
void intrusive_ptr_add_ref(GstMessage *message) noexcept { gst_mini_object_ref(GST_MINI_OBJECT_CAST(message)); }
void intrusive_ptr_release(GstMessage *message) noexcept { gst_mini_object_unref(GST_MINI_OBJECT_CAST(message)); }

void intrusive_ptr_add_ref(GstPad *pad) noexcept { gst_object_ref(pad); }
void intrusive_ptr_release(GstPad *pad) noexcept { gst_object_unref(pad); }
void intrusive_ptr_add_ref(GstElement *element) noexcept { gst_object_ref(element); }
void intrusive_ptr_release(GstElement *element) noexcept { gst_object_unref(element); }
void intrusive_ptr_add_ref(GstAppSink *appsink) noexcept { gst_object_ref(appsink); }
void intrusive_ptr_release(GstAppSink *appsink) noexcept { gst_object_unref(appsink); }
void intrusive_ptr_add_ref(GstBus *bus) noexcept { gst_object_ref(bus); }
void intrusive_ptr_release(GstBus *bus) noexcept { gst_object_unref(bus); }
void intrusive_ptr_add_ref(GstRTSPServer *server) noexcept { gst_object_ref(server); }
void intrusive_ptr_release(GstRTSPServer *server) noexcept { gst_object_unref(server); }

void intrusive_ptr_add_ref(GSource *source) noexcept { g_source_ref(source); }
void intrusive_ptr_release(GSource *source) noexcept { g_source_unref(source); }
void intrusive_ptr_add_ref(GMainLoop *loop) noexcept { g_main_loop_ref(loop); }
void intrusive_ptr_release(GMainLoop *loop) noexcept { g_main_loop_unref(loop); }
void intrusive_ptr_add_ref(GMainContext *context) noexcept { g_main_context_ref(context); }
void intrusive_ptr_release(GMainContext *context) noexcept { g_main_context_unref(context); }

void intrusive_ptr_add_ref(GstRTSPMediaFactory *factory) noexcept { g_object_ref(factory); }
void intrusive_ptr_release(GstRTSPMediaFactory *factory) noexcept { g_object_unref(factory); }
void intrusive_ptr_add_ref(GstRTSPAuth *auth) noexcept { g_object_ref(auth); }
void intrusive_ptr_release(GstRTSPAuth *auth) noexcept { g_object_unref(auth); }
void intrusive_ptr_add_ref(GstRTSPMountPoints *mounts) noexcept { g_object_ref(mounts); }
void intrusive_ptr_release(GstRTSPMountPoints *mounts) noexcept { g_object_unref(mounts); }

// clang-format on
