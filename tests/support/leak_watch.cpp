#include "leak_watch.h"

#include <atomic>

#include <gst/gst.h>

namespace kel::tavren::tests {
namespace {

std::atomic<int> leaked{0};

void note_leak(GstDebugCategory *category, GstDebugLevel, const gchar *, const gchar *, gint,
               GObject *, GstDebugMessage *message, gpointer) {
  if (g_str_equal(gst_debug_category_get_name(category), "GST_TRACER") &&
      g_str_has_prefix(gst_debug_message_get(message), "object-alive,"))
    ++leaked;
}

}  // namespace

void watch_leaks() {
  g_setenv("GST_TRACERS", "leaks", TRUE);
}

guint live_objects() {
  guint count = 0;
  GList *const tracers = gst_tracing_get_active_tracers();
  for (const GList *node = tracers; node != nullptr; node = node->next) {
    GstStructure *objects = nullptr;
    g_signal_emit_by_name(node->data, "get-live-objects", &objects);
    count += gst_value_list_get_size(gst_structure_get_value(objects, "live-objects-list"));
    gst_structure_free(objects);
  }
  g_list_free_full(tracers, gst_object_unref);
  return count;
}

bool deinit_without_leaks() {
  gst_debug_set_active(TRUE);
  gst_debug_set_threshold_for_name("GST_TRACER", GST_LEVEL_TRACE);
  gst_debug_add_log_function(note_leak, nullptr, nullptr);
  gst_deinit();
  return leaked == 0;
}

}  // namespace kel::tavren::tests
