// Passes URIs that refer to nothing, or to files without media. If a text begins with '/', it is
// the rest of the URI of a file in the program's own folder. No other file is accessed.

#include <fstream>
#include <memory>

#include "fuzzing.h"
#include "references.h"

using namespace kel::tavren::capture;
using namespace kel::tavren::fuzz;
using namespace kel::tavren::tests;
namespace TEC = kel::tavren::TEC;

namespace {

void write(const std::string &path, const std::string &contents) {
  std::ofstream stream(path, std::ios::binary);
  stream << contents;
  require(static_cast<bool>(stream.flush()), path.c_str());
}

// A tenth of a second of silence.
std::string silence() {
  const std::string header(
      "RIFF\x44\x03\0\0WAVEfmt \x10\0\0\0\1\0\1\0\x40\x1f\0\0\x40\x1f\0\0\1\0\x08\0"
      "data\x20\x03\0\0",
      44);
  return header + std::string(800, '\x80');
}

const std::string &folder() {
  static const std::string path = [] {
    std::string name = std::string(g_get_tmp_dir()) + "/tavren-fuzz-XXXXXX";
    require(g_mkdtemp(name.data()) != nullptr, name.c_str());
    return name;
  }();
  return path;
}

// Returns the file that the framework would open, with the path as the framework determines it.
std::string path_of(const std::string &uri) {
  const std::unique_ptr<char, decltype(&g_free)> path(
      g_filename_from_uri(uri.c_str(), nullptr, nullptr), g_free);
  return path ? path.get() : "";
}

bool is_in_folder(const std::string &path) {
  return path.rfind(folder() + "/", 0) == 0 && path.find("..") == std::string::npos;
}

}  // namespace

int LLVMFuzzerInitialize(int *, char ***) {
  kel::tavren::fuzz::start_framework({"coreelements", "typefindfunctions", "playback", "wavparse"});
  // The only other source here. It would read from any open file descriptor.
  GstPluginFeature *const descriptors = gst_registry_lookup_feature(gst_registry_get(), "fdsrc");
  gst_registry_remove_feature(gst_registry_get(), descriptors);
  gst_object_unref(descriptors);

  write(folder() + "/silence.wav", silence());
  write(folder() + "/noise.bin", std::string("\x00\xff\x1a\x45\xdf\xa3", 6));
  write(folder() + "/empty", "");
  return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  const std::string text(reinterpret_cast<const char *>(data), size);
  const std::string uri = size > 0 && text[0] == '/' ? "file://" + folder() + text : text;
  const std::string path = path_of(uri);
  if (!path.empty() && !is_in_folder(path)) return 0;

  // The framework may log criticals about the URI.
  const Tolerated_Criticals framework;
  std::unique_ptr<Media_Info> info;
  const auto outcome = run({0, TEC::DISCOVERY_FAILED, TEC::DISCOVERER_RETURNED_ERROR},
                           [&] { info = Media_Helper::get_media_info(uri, GST_SECOND); });
  mark(outcome.text);
  require((outcome.code == 0) == (info != nullptr), "the call returns a record or throws");
  if (outcome.code == TEC::DISCOVERER_RETURNED_ERROR)
    require(outcome.text.rfind("Discoverer returned error: GST_DISCOVERER_", 0) == 0,
            "the error names the result");
  if (!info) return 0;

  require(info->uri == uri, "the record contains the URI");
  require(g_file_test(path.c_str(), G_FILE_TEST_IS_REGULAR), "only a file contains media");
  require(info->video_caps.empty() && info->audio_caps.size() == 1, "silence is one audio stream");
  require(info->duration == GST_SECOND / 10, "silence lasts a tenth of a second");
  require(GST_IS_CAPS(info->audio_caps[0].get()), "a stream has caps");
  return 0;
}
