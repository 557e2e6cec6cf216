#include "fuzzing.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <functional>
#include <iostream>

namespace kel::tavren::fuzz {

namespace {

// libFuzzer finds its counters by the name of their section, and clears them before each input.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables)
[[gnu::section("__libfuzzer_extra_counters")]] std::array<std::uint8_t, 4096> marks{};

std::atomic<int> &tolerations() {
  static std::atomic<int> count{0};
  return count;
}

GLogWriterOutput write_log(GLogLevelFlags level, const GLogField *fields, gsize size, gpointer) {
  if ((level & (G_LOG_LEVEL_ERROR | G_LOG_LEVEL_CRITICAL)) == 0 || tolerations() > 0)
    return G_LOG_WRITER_HANDLED;
  for (gsize i = 0; i < size; ++i)
    if (g_strcmp0(fields[i].key, "MESSAGE") == 0)
      require(false, static_cast<const char *>(fields[i].value));
  return G_LOG_WRITER_HANDLED;
}

}  // namespace

void start_framework(std::initializer_list<const char *> plugins) {
  g_setenv("GST_REGISTRY_DISABLE", "yes", TRUE);
  g_setenv("GST_PLUGIN_SYSTEM_PATH_1_0", "", TRUE);
  g_setenv("GST_PLUGIN_PATH_1_0", "", TRUE);
  gst_init(nullptr, nullptr);
  for (const char *const plugin : plugins) {
    const std::string file = std::string(TAVREN_GSTREAMER_PLUGINS_DIR) + "/libgst" + plugin + ".so";
    GstPlugin *const loaded = gst_plugin_load_file(file.c_str(), nullptr);
    require(loaded != nullptr, file.c_str());
    gst_object_unref(loaded);
  }
  g_log_set_writer_func(write_log, nullptr, nullptr);
}

Tolerated_Criticals::Tolerated_Criticals() {
  ++tolerations();
}

Tolerated_Criticals::~Tolerated_Criticals() {
  --tolerations();
}

void mark(const std::string &effect) {
  marks[std::hash<std::string>()(effect) % marks.size()] = 1;
}

void require(bool holds, const char *what) {
  if (holds) return;
  std::cerr << "assertion failed: " << what << std::endl;
  std::abort();
}

std::string shown(const std::string &text) {
  return text.substr(0, text.find('\0'));
}

}  // namespace kel::tavren::fuzz
