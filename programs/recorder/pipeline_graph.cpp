#include "pipeline_graph.h"

#include <memory>
#include <stdexcept>

#include <gio/gio.h>
#include <tavren/capture/media_helper.h>

namespace kel::tavren::programs {

namespace {

using Text = std::unique_ptr<char, Emancipator<char>>;

[[noreturn]] void throw_error(GError *error) {
  const std::unique_ptr<GError, decltype(&g_error_free)> owned(error, g_error_free);
  throw std::runtime_error(std::string(g_quark_to_string(error->domain)) + ' ' +
                           std::to_string(error->code) +
                           ": cannot draw the pipeline: " + error->message);
}

}  // namespace

std::string describe_graph(GstBin *bin) {
  const auto details = static_cast<GstDebugGraphDetails>(GST_DEBUG_GRAPH_SHOW_MEDIA_TYPE |
                                                         GST_DEBUG_GRAPH_SHOW_STATES);
  return Text(gst_debug_bin_to_dot_data(bin, details)).get();
}

void draw_graph(const std::string &description, const std::string &file) {
  GError *error = nullptr;
  const auto pipes =
      static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDIN_PIPE | G_SUBPROCESS_FLAGS_STDOUT_PIPE |
                                    G_SUBPROCESS_FLAGS_STDERR_SILENCE);
  const std::unique_ptr<GSubprocess, decltype(&g_object_unref)> drawing(
      g_subprocess_new(pipes, &error, "dot", "-Tsvg", nullptr), g_object_unref);
  if (!drawing) throw_error(error);
  char *picture = nullptr;
  const bool drawn = g_subprocess_communicate_utf8(drawing.get(), description.c_str(), nullptr,
                                                   &picture, nullptr, &error) != FALSE;
  const Text owned(picture);
  if (!drawn || !g_subprocess_wait_check(drawing.get(), nullptr, &error) ||
      !g_file_set_contents(file.c_str(), picture, -1, &error))
    throw_error(error);
}

}  // namespace kel::tavren::programs
