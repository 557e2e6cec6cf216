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

// Transfer full.
GObject *leaks_tracer() {
  GList *const tracers = gst_tracing_get_active_tracers();
  if (tracers == nullptr) g_error("there is no tracer of leaks: its plug-in is missing");
  GObject *const tracer = G_OBJECT(g_object_ref(tracers->data));
  g_list_free_full(tracers, gst_object_unref);
  return tracer;
}

}  // namespace

void init_and_watch_leaks(int *argc, char ***argv) {
  g_setenv("GST_TRACERS", "leaks", TRUE);
  gst_init(argc, argv);
  g_unsetenv("GST_TRACERS");
  g_object_unref(leaks_tracer());
}

Object_Balance::Object_Balance() : tracer_(leaks_tracer()) {
  g_signal_emit_by_name(tracer_, "activity-start-tracking");
}

Object_Balance::~Object_Balance() {
  g_signal_emit_by_name(tracer_, "activity-stop-tracking");
  g_object_unref(tracer_);
}

int Object_Balance::now() {
  GstStructure *changes = nullptr;
  g_signal_emit_by_name(tracer_, "activity-get-checkpoint", &changes);
  const auto count = [changes](const char *list) {
    return static_cast<int>(gst_value_list_get_size(gst_structure_get_value(changes, list)));
  };
  balance_ += count("objects-created-list") - count("objects-removed-list");
  gst_structure_free(changes);
  return balance_;
}

bool deinit_without_leaks() {
  gst_debug_set_active(TRUE);
  gst_debug_set_threshold_for_name("GST_TRACER", GST_LEVEL_TRACE);
  // Call the function: the macro of the same name compares pointers to data with pointers to
  // functions.
  (gst_debug_add_log_function)(note_leak, nullptr, nullptr);
  gst_deinit();
  return leaked == 0;
}

}  // namespace kel::tavren::tests
