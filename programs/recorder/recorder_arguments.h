// The options of a recording.

#ifndef TAVREN_PROGRAMS_RECORDER_ARGUMENTS_H
#define TAVREN_PROGRAMS_RECORDER_ARGUMENTS_H

#include <string>
#include <vector>

#include <glib.h>

#include "camera_recorder.h"
#include "command_line/program.h"

namespace kel::tavren::programs {

// Parses the options of a recording, except those of the camera: --output, --duration and others.
class Recorder_Arguments {
public:
  // `duration` and `retry` are default values in seconds.
  Recorder_Arguments(std::string output, double duration, double retry);

  // Returns the entries for GLib's option parser, without a terminator. They refer to this object.
  std::vector<GOptionEntry> entries();

  // Returns the parsed options. Throws std::invalid_argument for an invalid value.
  Recorder_Options options() const;

private:
  Text_Option output_;
  Text_Option graph_;
  std::string default_output_;
  double duration_;
  double retry_;
  double segment_ = 0;
  gint64 keep_free_ = 0;
  int overwrite_ = 0;
  int view_ = 0;
  int verbose_ = 0;
};

// Parses the options --diagnose and --diagnose-limit.
class Diagnosis_Arguments {
public:
  std::vector<GOptionEntry> entries();

  // Returns the folder for diagnoses; null if there is none. Throws std::invalid_argument for an
  // invalid limit and std::runtime_error if the folder is not writable.
  std::shared_ptr<Diagnosis_Folder> folder() const;

private:
  Text_Option folder_;
  int limit_ = 10;
};

}  // namespace kel::tavren::programs

#endif
