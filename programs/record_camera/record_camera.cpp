// Records a real camera, or the simulated one without --uri, into one or more files.

#include <cmath>
#include <iostream>
#include <optional>

#include <tavren/capture/media_helper.h>

#include "camera_recorder.h"
#include "command_line/program.h"
#include "command_line/signal_watch.h"
#include "probe_media/media_table.h"
#include "simulated_camera/simulated_camera.h"

namespace kel::tavren::programs {

namespace {

using capture::Media_Helper;

constexpr GstClockTime probe_timeout = 10 * GST_SECOND;
constexpr double longest_time = 1e9;  // s

//! [look into the file]
void print_streams(const std::string &file) {
  const std::unique_ptr<char, Emancipator<char>> uri(gst_filename_to_uri(file.c_str(), nullptr));
  if (!uri) throw std::runtime_error("no URI can be made of " + file);
  print_media_table(std::cout, *Media_Helper::get_media_info(uri.get(), probe_timeout));
}
//! [look into the file]

void record(const Recorder_Options &options) {
  Camera_Recorder recorder(options);
  const Signal_Watch signals([&recorder] { recorder.stop(); });
  recorder.record();
  const std::string file = recorder.only_file();
  if (options.quiet || file.empty()) return;
  try {
    print_streams(file);
  } catch (const std::exception &error) {  // a missing decoder, for example
    std::cout << "its streams cannot be listed: " << error.what() << std::endl;
  }
}

double checked_seconds(double seconds, const char *option) {
  if (!(seconds >= 0 && seconds <= longest_time))
    throw std::invalid_argument(std::string(option) + " must be from 0 to 1000000000 seconds");
  return seconds;
}

GstClockTime in_ns(double seconds) {
  return static_cast<GstClockTime>(std::ceil(seconds * GST_SECOND));
}

// The options of the program, except those of the camera.
struct Arguments {
  Text_Option output;
  Text_Option graph;
  Text_Option video;
  Text_Option audio;
  double duration = 10;
  double retry = 0;
  double segment = 0;
  gint64 keep_free = 0;
  int overwrite = 0;
  int view = 0;
  int quiet = 0;
  int verbose = 0;
  int metadata = 0;

  std::vector<GOptionEntry> entries() {
    return {
        {"output", 0, 0, G_OPTION_ARG_FILENAME, output.target(),
         "output file: .mkv, .mp4, .avi or .mov (default recording.mkv)", "FILE"},
        {"overwrite", 0, 0, G_OPTION_ARG_NONE, &overwrite, "overwrite an existing file", nullptr},
        {"duration", 0, 0, G_OPTION_ARG_DOUBLE, &duration,
         "how long to record; 0: until a signal arrives (default 10)", "SECONDS"},
        {"retry", 0, 0, G_OPTION_ARG_DOUBLE, &retry,
         "how long to keep trying if the camera is unreachable or disconnects (default 0)",
         "SECONDS"},
        {"segment", 0, 0, G_OPTION_ARG_DOUBLE, &segment,
         "begin a new file at the first key frame after this time, named by its UTC time",
         "SECONDS"},
        {"keep-free", 0, 0, G_OPTION_ARG_INT64, &keep_free,
         "remove the oldest files of this recording to keep this much space free", "BYTES"},
        {"view", 0, 0, G_OPTION_ARG_NONE, &view, "show the pictures in a window", nullptr},
        {"quiet", 0, 0, G_OPTION_ARG_NONE, &quiet, "print errors only", nullptr},
        {"verbose", 0, 0, G_OPTION_ARG_NONE, &verbose, "show how full the queues are, and warnings",
         nullptr},
        {"graph", 0, 0, G_OPTION_ARG_FILENAME, graph.target(),
         "draw the pipeline while it runs, or when it fails", "FILE.svg"},
        {"video", 0, 0, G_OPTION_ARG_STRING, video.target(),
         "video of the simulated camera: h264 (default), jpeg, mpeg4, vp8 or none", "KIND"},
        {"audio", 0, 0, G_OPTION_ARG_STRING, audio.target(),
         "audio of the simulated camera: aac (default), mulaw, opus or none", "KIND"},
        {"metadata", 0, 0, G_OPTION_ARG_NONE, &metadata,
         "make the simulated camera send ONVIF metadata too", nullptr}};
  }

  // All options except those of the camera.
  Recorder_Options options() const {
    if (keep_free < 0) throw std::invalid_argument("--keep-free must not be negative");
    Recorder_Options options;
    options.recording.output = output.value_or("recording.mkv");
    options.recording.overwrite = overwrite != 0;
    options.recording.duration = in_ns(checked_seconds(duration, "--duration"));
    options.recording.segment = in_ns(checked_seconds(segment, "--segment"));
    options.recording.keep_free = static_cast<guint64>(keep_free);
    options.retry = static_cast<gint64>(checked_seconds(retry, "--retry") * G_TIME_SPAN_SECOND);
    options.view = view != 0;
    options.quiet = quiet != 0;
    options.verbose = verbose != 0;
    options.graph = graph.value_or("");
    return options;
  }

  Camera_Streams simulated_streams() const {
    return {video.value_or("h264"), audio.value_or("aac"), metadata != 0};
  }
};

}  // namespace

}  // namespace kel::tavren::programs

int main(int argc, char **argv) {
  using namespace kel::tavren::programs;
  Camera_Arguments camera;
  Arguments arguments;
  std::vector<GOptionEntry> entries = camera.entries();
  const std::vector<GOptionEntry> others = arguments.entries();
  entries.insert(entries.end(), others.begin(), others.end());
  return run_program(argc, argv, "Records a camera into a file.", entries, [&] {
    Recorder_Options options = arguments.options();
    std::optional<Simulated_Camera> simulated;
    if (camera.has_uri()) {
      options.camera = camera.options();
    } else {
      simulated.emplace(arguments.simulated_streams());
      options.camera = camera.options(simulated->uri());
    }
    record(options);
  });
}
