// Measures the cost of the library compared with plain calls of the framework.
//
// Without the options below: measures time, with Google Benchmark's options.
// --instructions REGEX: counts the instructions of the matching entries; run it under callgrind.
// --trace NAME: runs one entry once; run it under callgrind.
// --resident-memory IMPLEMENTATION CAMERAS: prints the memory of recordings in KiB per camera.

#include <string>
#include <vector>

#include <gstreamermm.h>

#include "measuring.h"
#include "resident_memory.h"
#include "trial.h"

namespace kel::tavren::benchmarks {

namespace {

Programme make_programme() {
  Programme programme;
  add_checks(programme);
  add_construction(programme);
  add_topology(programme);
  add_recording(programme);
  add_bin_search(programme);
  add_caps_and_selection(programme);
  add_texts(programme);
  add_failures(programme);
  return programme;
}

int run(const std::vector<std::string> &arguments, int argc, char **argv) {
  const std::string mode = arguments.empty() ? std::string() : arguments[0];
  if (mode == "--resident-memory" && arguments.size() == 3)
    return print_resident_memory(arguments[1], std::stoul(arguments[2]));
  if (mode == "--instructions" && arguments.size() == 2)
    return count_instructions(make_programme(), arguments[1]);
  if (mode == "--trace" && arguments.size() == 2) return trace(make_programme(), arguments[1]);
  return measure_time(make_programme(), argc, argv);
}

}  // namespace

}  // namespace kel::tavren::benchmarks

int main(int argc, char **argv) {
  // gstreamermm was written for an older framework: it registers a type that is no longer an
  // interface.
  const guint handler = g_log_set_handler(
      "GLib-GObject", G_LOG_LEVEL_CRITICAL,
      [](const gchar *, GLogLevelFlags, const gchar *, gpointer) {}, nullptr);
  Gst::init();
  g_log_remove_handler("GLib-GObject", handler);
  return kel::tavren::benchmarks::run({argv + 1, argv + argc}, argc, argv);
}
