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

void require_tracer() {
  GList *const tracers = gst_tracing_get_active_tracers();
  if (tracers == nullptr) g_error("the leaks tracer is missing: install the core tracers plugin");
  g_list_free_full(tracers, gst_object_unref);
}

}  // namespace

void init_and_watch_leaks(int *argc, char ***argv) {
  g_setenv("GST_TRACERS", "leaks", TRUE);
  gst_init(argc, argv);
  g_unsetenv("GST_TRACERS");
  require_tracer();
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
