// Records a camera into a file: a real one, or without --uri the simulated one.

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

//! [look into the file]
void print_streams(const std::string &file) {
  const std::unique_ptr<char, Emancipator<char>> uri(gst_filename_to_uri(file.c_str(), nullptr));
  if (!uri) throw std::runtime_error("no URI can be made of " + file);
  print_media_table(std::cout, *Media_Helper::get_media_info(uri.get(), probe_timeout));
}
//! [look into the file]

void record(const Recording_Options &options) {
  Camera_Recorder recorder(options);
  const Signal_Watch signals([&recorder] { recorder.stop(); });
  recorder.record();
  const Recording_Result result = recorder.result();
  if (result.bytes > 0)
    std::cout << "wrote " << options.output << ": "
              << Media_Helper::gst_time_to_string(result.duration) << ", " << result.bytes
              << " bytes; the viewer saw " << result.viewed_pictures << " pictures" << std::endl;
  recorder.rethrow_failure();
  print_streams(options.output);
}

}  // namespace

}  // namespace kel::tavren::programs

int main(int argc, char **argv) {
  using namespace kel::tavren::programs;
  Text_Option uri;
  Text_Option output;
  Text_Option graph;
  Text_Option video;
  Text_Option audio;
  double duration = 10;
  int metadata = 0;
  int verbose = 0;
  const GOptionEntry entries[] = {
      {"uri", 0, 0, G_OPTION_ARG_STRING, uri.target(), "the camera; without it, a simulated one",
       "rtsp://…"},
      {"output", 0, 0, G_OPTION_ARG_FILENAME, output.target(),
       "the file: .mkv, .mp4, .avi or .mov (default recording.mkv)", "FILE"},
      {"duration", 0, 0, G_OPTION_ARG_DOUBLE, &duration,
       "how long to record; 0: until Ctrl-C (default 10)", "SECONDS"},
      {"verbose", 0, 0, G_OPTION_ARG_NONE, &verbose, "tell how full the queues are, and warnings",
       nullptr},
      {"graph", 0, 0, G_OPTION_ARG_FILENAME, graph.target(), "draw the running pipeline",
       "FILE.svg"},
      {"video", 0, 0, G_OPTION_ARG_STRING, video.target(),
       "of the simulated camera: h264 (default), jpeg, mpeg4, vp8 or none", "KIND"},
      {"audio", 0, 0, G_OPTION_ARG_STRING, audio.target(),
       "of the simulated camera: aac (default), mulaw, opus or none", "KIND"},
      {"metadata", 0, 0, G_OPTION_ARG_NONE, &metadata,
       "the simulated camera sends ONVIF metadata too", nullptr},
      {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr}};

  return run_program(argc, argv, "Records a camera into a file.", entries, [&] {
    if (!(duration >= 0 && duration <= 1e9))
      throw std::invalid_argument("--duration must be from 0 to 1000000000 seconds");
    Recording_Options options;
    options.uri = uri.value_or("");
    options.output = output.value_or("recording.mkv");
    options.duration = static_cast<GstClockTime>(std::ceil(duration * GST_SECOND));
    options.verbose = verbose != 0;
    options.graph = graph.value_or("");

    std::optional<Simulated_Camera> camera;
    if (!uri.given()) {
      camera.emplace(Camera_Streams{video.value_or("h264"), audio.value_or("aac"), metadata != 0});
      options.uri = camera->uri();
    }
    record(options);
  });
}
