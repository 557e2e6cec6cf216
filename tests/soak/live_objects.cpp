// Counts objects with the framework's tracing hooks. The leaks tracer is not suitable: in GStreamer
// 1.22, it returns live objects without a reference, but releases one.

#define GST_USE_UNSTABLE_API
#include "live_objects.h"

#include <mutex>

#include <gst/gst.h>
#include <gst/gsttracer.h>

namespace {

struct Live_Objects {
  std::mutex mutex;
  std::map<GType, long> counts;

  static Live_Objects &instance() {
    static Live_Objects objects;
    return objects;
  }

  void add(GType type, long count) {
    const std::lock_guard lock(mutex);
    counts[type] += count;
  }
};

void note_created(GObject *, GstClockTime, GstObject *object) {
  Live_Objects::instance().add(G_OBJECT_TYPE(object), 1);
}
void note_destroyed(GObject *, GstClockTime, GstObject *object) {
  Live_Objects::instance().add(G_OBJECT_TYPE(object), -1);
}
void note_mini_created(GObject *, GstClockTime, GstMiniObject *object) {
  Live_Objects::instance().add(GST_MINI_OBJECT_TYPE(object), 1);
}
void note_mini_destroyed(GObject *, GstClockTime, GstMiniObject *object) {
  Live_Objects::instance().add(GST_MINI_OBJECT_TYPE(object), -1);
}

}  // namespace

namespace kel::tavren::tests {

void count_objects() {
  // The hooks require a tracer and keep it alive. The class GstTracer is abstract.
  const GType type = g_type_register_static_simple(
      GST_TYPE_TRACER, "TavrenLiveObjects", sizeof(GstTracerClass), nullptr, sizeof(GstTracer),
      nullptr, static_cast<GTypeFlags>(0));
  GstTracer *const tracer = GST_TRACER_CAST(gst_object_ref_sink(g_object_new(type, nullptr)));
  gst_tracing_register_hook(tracer, "object-created", G_CALLBACK(note_created));
  gst_tracing_register_hook(tracer, "object-destroyed", G_CALLBACK(note_destroyed));
  gst_tracing_register_hook(tracer, "mini-object-created", G_CALLBACK(note_mini_created));
  gst_tracing_register_hook(tracer, "mini-object-destroyed", G_CALLBACK(note_mini_destroyed));
  gst_object_unref(tracer);
}

std::map<std::string, long> live_objects() {
  Live_Objects &objects = Live_Objects::instance();
  const std::lock_guard lock(objects.mutex);
  std::map<std::string, long> counts;
  for (const auto &[type, count] : objects.counts)
    counts[g_type_name(type)] = count;
  return counts;
}

}  // namespace kel::tavren::tests
