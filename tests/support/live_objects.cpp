// Counts objects with the framework's tracing hooks. The leaks tracer is not suitable: in GStreamer
// 1.22, it returns live objects without a reference, but releases one.

#define GST_USE_UNSTABLE_API
#include "live_objects.h"

#include <array>
#include <atomic>

#include <gst/gst.h>
#include <gst/gsttracer.h>

namespace {

struct Type_Count {
  std::atomic<GType> type{G_TYPE_INVALID};
  std::atomic<long> objects{0};
};

// A hash table without locks or allocations, because hooks are also called where tests make every
// allocation fail. It has more rows than the framework has types.
std::array<Type_Count, 4096> type_counts;

void add(GType type, long change) {
  for (std::size_t row = type / sizeof(gpointer);; ++row) {
    Type_Count &count = type_counts[row % type_counts.size()];
    GType found = G_TYPE_INVALID;
    if (count.type.compare_exchange_strong(found, type) || found == type) {
      count.objects += change;
      return;
    }
  }
}

void note_created(GObject *, GstClockTime, GstObject *object) {
  add(G_OBJECT_TYPE(object), 1);
}
void note_destroyed(GObject *, GstClockTime, GstObject *object) {
  add(G_OBJECT_TYPE(object), -1);
}
void note_mini_created(GObject *, GstClockTime, GstMiniObject *object) {
  add(GST_MINI_OBJECT_TYPE(object), 1);
}
void note_mini_destroyed(GObject *, GstClockTime, GstMiniObject *object) {
  add(GST_MINI_OBJECT_TYPE(object), -1);
}

// The hooks require a tracer and keep it alive. The class GstTracer is abstract.
bool register_hooks() {
  const GType type = g_type_register_static_simple(
      GST_TYPE_TRACER, "TavrenLiveObjects", sizeof(GstTracerClass), nullptr, sizeof(GstTracer),
      nullptr, static_cast<GTypeFlags>(0));
  GstTracer *const tracer = GST_TRACER_CAST(gst_object_ref_sink(g_object_new(type, nullptr)));
  gst_tracing_register_hook(tracer, "object-created", G_CALLBACK(note_created));
  gst_tracing_register_hook(tracer, "object-destroyed", G_CALLBACK(note_destroyed));
  gst_tracing_register_hook(tracer, "mini-object-created", G_CALLBACK(note_mini_created));
  gst_tracing_register_hook(tracer, "mini-object-destroyed", G_CALLBACK(note_mini_destroyed));
  gst_object_unref(tracer);
  return true;
}

}  // namespace

namespace kel::tavren::tests {

void count_objects() {
  [[maybe_unused]] static const bool registered = register_hooks();
}

long live_objects() noexcept {
  long sum = 0;
  for (const Type_Count &count : type_counts)
    sum += count.objects;
  return sum;
}

std::map<std::string, long> live_objects_by_type() {
  std::map<std::string, long> counts;
  for (const Type_Count &count : type_counts)
    if (count.type != G_TYPE_INVALID) counts[g_type_name(count.type)] = count.objects;
  return counts;
}

}  // namespace kel::tavren::tests
