// Shows the streams of media files.

#include <charconv>
#include <iostream>
#include <sstream>

#include <tavren/capture/media_helper.h>

#include "camera/rtsp_extension.h"
#include "command_line/program.h"
#include "media_table.h"

namespace kel::tavren::programs {

using capture::Media_Helper;

namespace {

// The arguments that are not options.
class Arguments {
public:
  Arguments() = default;
  ~Arguments() { g_strfreev(list_); }
  Arguments(const Arguments &) = delete;
  Arguments &operator=(const Arguments &) = delete;

  char ***target() noexcept { return &list_; }
  std::vector<std::string> values() const {
    return list_ != nullptr ? std::vector<std::string>(list_, list_ + g_strv_length(list_))
                            : std::vector<std::string>();
  }

private:
  char **list_ = nullptr;
};

Resolution parse_box(const std::string &text) {
  Resolution box;
  const char *const end = text.data() + text.size();
  const auto width = std::from_chars(text.data(), end, box.first);
  const bool separated = width.ec == std::errc() && width.ptr != end && *width.ptr == 'x';
  const auto height = std::from_chars(separated ? width.ptr + 1 : end, end, box.second);
  if (height.ec != std::errc() || height.ptr != end)
    throw std::invalid_argument("--fit takes WIDTHxHEIGHT in pixels, not \"" + text + "\"");
  // The library rejects a side of 0. Check this before anything is probed.
  Media_Helper::calculate_resolution(box, {1, 1});
  return box;
}

GstClockTime parse_timeout(double seconds) {
  // The range that the framework's discoverer accepts. The comparison also rejects NaN.
  if (!(seconds >= 1 && seconds <= 3600))
    throw std::invalid_argument("--timeout takes 1 to 3600 seconds");
  return static_cast<GstClockTime>(seconds * GST_SECOND);
}

// An argument that names an existing file is a file name, even if it looks like a URI.
std::string to_uri(const std::string &source) {
  if (!g_file_test(source.c_str(), G_FILE_TEST_EXISTS) && gst_uri_is_valid(source.c_str()))
    return source;
  GError *error = nullptr;
  const std::unique_ptr<char, Emancipator<char>> uri(gst_filename_to_uri(source.c_str(), &error));
  if (uri) return uri.get();
  const std::unique_ptr<GError, decltype(&g_error_free)> owned(error, g_error_free);
  throw std::runtime_error(owned->message);
}

void probe(const std::string &source, GstClockTime timeout, const std::optional<Resolution> &box) {
  const auto info = Media_Helper::get_media_info(to_uri(source), timeout);
  std::ostringstream table;
  print_media_table(table, *info, box);
  std::cout << table.str() << std::endl;
}

// Probes all sources, even if some of them fail. Returns whether all succeeded.
bool probe_all(const std::vector<std::string> &sources, GstClockTime timeout,
               const std::optional<Resolution> &box) {
  bool good = true;
  for (const std::string &source : sources) {
    try {
      probe(source, timeout, box);
    } catch (const std::exception &error) {
      good = false;
      print_failure("probe_media: " + source, error);
    }
  }
  return good;
}

}  // namespace

}  // namespace kel::tavren::programs

int main(int argc, char **argv) {
  using namespace kel::tavren::programs;
  Arguments sources;
  Text_Option fit;
  double timeout = 10;
  bool good = true;
  const std::vector<GOptionEntry> options = {
      {"fit", 0, 0, G_OPTION_ARG_STRING, fit.target(),
       "also show the size of the pictures scaled to fit this box", "WxH"},
      {"timeout", 0, 0, G_OPTION_ARG_DOUBLE, &timeout,
       "how long to wait for each source (default 10)", "SECONDS"},
      {G_OPTION_REMAINING, 0, 0, G_OPTION_ARG_FILENAME_ARRAY, sources.target(), nullptr,
       "URI|FILE..."}};
  const int status =
      run_program(argc, argv, "Shows the streams of media files and URIs.", options, [&] {
        if (sources.values().empty())
          throw std::invalid_argument("nothing to probe: name a URI or a file");
        register_rtsp_extension();
        const std::string box = fit.value_or("");
        good = probe_all(sources.values(), parse_timeout(timeout),
                         box.empty() ? std::nullopt : std::optional(parse_box(box)));
      });
  return good ? status : 1;
}
