#include "pipeline_graph.h"

#include <memory>
#include <stdexcept>

#include <gio/gio.h>
#include <tavren/capture/media_helper.h>

namespace kel::tavren::examples {

namespace {

[[noreturn]] void throw_error(GError *error) {
  const std::unique_ptr<GError, decltype(&g_error_free)> owned(error, g_error_free);
  throw std::runtime_error(std::string("cannot draw the pipeline: ") + error->message);
}

}  // namespace

void draw_graph(GstBin *bin, const std::string &file) {
  const GstDebugGraphDetails details = static_cast<GstDebugGraphDetails>(
      GST_DEBUG_GRAPH_SHOW_MEDIA_TYPE | GST_DEBUG_GRAPH_SHOW_STATES);
  const std::unique_ptr<char, Emancipator<char>> dot(gst_debug_bin_to_dot_data(bin, details));

  GError *error = nullptr;
  const std::unique_ptr<GSubprocess, decltype(&g_object_unref)> drawing(
      g_subprocess_new(G_SUBPROCESS_FLAGS_STDIN_PIPE, &error, "dot", "-Tsvg", "-o", file.c_str(),
                       nullptr),
      g_object_unref);
  if (!drawing) throw_error(error);
  if (!g_subprocess_communicate_utf8(drawing.get(), dot.get(), nullptr, nullptr, nullptr, &error) ||
      !g_subprocess_wait_check(drawing.get(), nullptr, &error))
    throw_error(error);
}

}  // namespace kel::tavren::examples
