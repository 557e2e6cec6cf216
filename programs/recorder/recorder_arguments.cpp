#include "recorder_arguments.h"

#include <cmath>
#include <stdexcept>
#include <utility>

namespace kel::tavren::programs {

namespace {

constexpr double longest_time = 1e9;  // s

double checked_seconds(double seconds, const char *option) {
  if (!(seconds >= 0 && seconds <= longest_time))
    throw std::invalid_argument(std::string(option) + " must be from 0 to 1000000000 seconds");
  return seconds;
}

GstClockTime in_ns(double seconds) {
  return static_cast<GstClockTime>(std::ceil(seconds * GST_SECOND));
}

}  // namespace

Recorder_Arguments::Recorder_Arguments(std::string output, double duration, double retry)
    : default_output_(std::move(output)), duration_(duration), retry_(retry) {}

std::vector<GOptionEntry> Recorder_Arguments::entries() {
  return {
      {"output", 0, 0, G_OPTION_ARG_FILENAME, output_.target(),
       "output file: .mkv, .mp4, .avi or .mov (default recording.mkv)", "FILE"},
      {"overwrite", 0, 0, G_OPTION_ARG_NONE, &overwrite_, "overwrite an existing file", nullptr},
      {"duration", 0, 0, G_OPTION_ARG_DOUBLE, &duration_,
       "how long to record; 0: until a signal arrives (default 10)", "SECONDS"},
      {"retry", 0, 0, G_OPTION_ARG_DOUBLE, &retry_,
       "how long to keep trying if the camera is unreachable or disconnects (default 0)",
       "SECONDS"},
      {"segment", 0, 0, G_OPTION_ARG_DOUBLE, &segment_,
       "begin a new file at the first key frame after this time, named by its UTC time", "SECONDS"},
      {"keep-free", 0, 0, G_OPTION_ARG_INT64, &keep_free_,
       "remove the oldest files of this recording to keep this much space free", "BYTES"},
      {"view", 0, 0, G_OPTION_ARG_NONE, &view_, "show the pictures in a window", nullptr},
      {"verbose", 0, 0, G_OPTION_ARG_NONE, &verbose_,
       "show warnings and the fill levels of the queues", nullptr},
      {"graph", 0, 0, G_OPTION_ARG_FILENAME, graph_.target(),
       "draw the pipeline while it runs, or when it fails", "FILE.svg"}};
}

Recorder_Options Recorder_Arguments::options() const {
  if (keep_free_ < 0) throw std::invalid_argument("--keep-free must not be negative");
  Recorder_Options options;
  options.recording.output = output_.value_or(default_output_);
  options.recording.overwrite = overwrite_ != 0;
  options.recording.duration = in_ns(checked_seconds(duration_, "--duration"));
  options.recording.segment = in_ns(checked_seconds(segment_, "--segment"));
  options.recording.keep_free = static_cast<guint64>(keep_free_);
  options.retry = static_cast<gint64>(checked_seconds(retry_, "--retry") * G_TIME_SPAN_SECOND);
  options.view = view_ != 0;
  options.verbose = verbose_ != 0;
  options.graph = graph_.value_or("");
  return options;
}

std::vector<GOptionEntry> Diagnosis_Arguments::entries() {
  return {{"diagnose", 0, 0, G_OPTION_ARG_FILENAME, folder_.target(),
           "write a diagnosis of each failure to a new folder inside this one", "FOLDER"},
          {"diagnose-limit", 0, 0, G_OPTION_ARG_INT, &limit_,
           "how many diagnoses to keep (default 10)", "NUMBER"}};
}

std::shared_ptr<Diagnosis_Folder> Diagnosis_Arguments::folder() const {
  if (limit_ < 1) throw std::invalid_argument("--diagnose-limit must be at least 1");
  if (!folder_.given()) return nullptr;
  return std::make_shared<Diagnosis_Folder>(folder_.value_or(""),
                                            static_cast<unsigned int>(limit_));
}

}  // namespace kel::tavren::programs
