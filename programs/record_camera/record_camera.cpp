// Records a real camera, or the simulated one without --uri, into one or more files.

#include <iostream>
#include <optional>

#include <tavren/capture/media_helper.h>

#include "command_line/program.h"
#include "command_line/signal_watch.h"
#include "probe_media/media_table.h"
#include "progress_display.h"
#include "recorder/camera_recorder.h"
#include "recorder/recorder_arguments.h"
#include "simulated_camera/simulated_camera.h"

namespace kel::tavren::programs {

namespace {

using capture::Media_Helper;

constexpr GstClockTime probe_timeout = 10 * GST_SECOND;
constexpr double default_duration = 10;  // s

//! [look into the file]
void print_streams(const std::string &file) {
  const std::unique_ptr<char, Emancipator<char>> uri(gst_filename_to_uri(file.c_str(), nullptr));
  if (!uri) throw std::runtime_error("no URI can be made of " + file);
  print_media_table(std::cout, *Media_Helper::get_media_info(uri.get(), probe_timeout));
}
//! [look into the file]

void record(const Recorder_Options &options, bool quiet) {
  Progress_Display display(quiet);
  Camera_Recorder recorder(options, nullptr, display);
  const Signal_Watch signals({SIGINT, SIGTERM, SIGHUP}, [&recorder] { recorder.stop(); });
  recorder.record();
  const std::string file = recorder.only_file();
  if (quiet || file.empty()) return;
  try {
    print_streams(file);
  } catch (const std::exception &error) {  // a missing decoder, for example
    std::cout << "its streams cannot be listed: " << error.what() << std::endl;
  }
}

// The options that only this program has.
struct Arguments {
  Text_Option video;
  Text_Option audio;
  int quiet = 0;
  int metadata = 0;

  std::vector<GOptionEntry> entries() {
    return {{"quiet", 0, 0, G_OPTION_ARG_NONE, &quiet, "print errors only", nullptr},
            {"video", 0, 0, G_OPTION_ARG_STRING, video.target(),
             "video of the simulated camera: h264 (default), jpeg, mpeg4, vp8 or none", "KIND"},
            {"audio", 0, 0, G_OPTION_ARG_STRING, audio.target(),
             "audio of the simulated camera: aac (default), mulaw, opus or none", "KIND"},
            {"metadata", 0, 0, G_OPTION_ARG_NONE, &metadata,
             "make the simulated camera send ONVIF metadata too", nullptr}};
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
  Recorder_Arguments recorder("recording.mkv", default_duration, 0);
  Diagnosis_Arguments diagnosis;
  Arguments arguments;
  std::vector<GOptionEntry> entries = camera.entries();
  for (const auto &more : {recorder.entries(), diagnosis.entries(), arguments.entries()})
    entries.insert(entries.end(), more.begin(), more.end());
  return run_program(argc, argv, "Records a camera into a file.", entries, [&] {
    Recorder_Options options = recorder.options();
    options.diagnoses = diagnosis.folder();
    std::optional<Simulated_Camera> simulated;
    if (camera.has_uri()) {
      options.camera = camera.options();
    } else {
      simulated.emplace(arguments.simulated_streams());
      options.camera = camera.options(simulated->uri());
    }
    record(options, arguments.quiet != 0);
  });
}
