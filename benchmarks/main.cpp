// Measures what the library costs beside the framework's plain calls.
//
// As it is, with Google Benchmark's options: in time.
// --instructions REGEX: in instructions, when run by callgrind, what the expression finds.
// --trace NAME: one run of one entry, when run by callgrind.
// --resident-memory CONTESTANT CAMERAS: the memory that recordings take, in KiB for each camera.

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
  // The other layer was made for an older framework: it registers what is an interface no longer.
  const guint handler = g_log_set_handler(
      "GLib-GObject", G_LOG_LEVEL_CRITICAL,
      [](const gchar *, GLogLevelFlags, const gchar *, gpointer) {}, nullptr);
  Gst::init();
  g_log_remove_handler("GLib-GObject", handler);
  return kel::tavren::benchmarks::run({argv + 1, argv + argc}, argc, argv);
}
