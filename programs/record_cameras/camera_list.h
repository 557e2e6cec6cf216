// The cameras that a configuration file describes.

#ifndef TAVREN_PROGRAMS_CAMERA_LIST_H
#define TAVREN_PROGRAMS_CAMERA_LIST_H

#include <map>
#include <string>

#include "recorder/camera_recorder.h"

namespace kel::tavren::programs {

using Camera_Settings = std::map<std::string, std::string>;  // values by key

struct Listed_Camera {
  Camera_Settings settings;  // with the defaults
  Recorder_Options options;
  std::string output;  // without symbolic links: two cameras with the same output would collide
};

using Camera_List = std::map<std::string, Listed_Camera>;  // by name

// Reads a key file with a group for each camera. The keys are the options of record_camera. The
// group "defaults" applies to all cameras. Without "duration" a camera is recorded until the
// program ends, without "retry" it is always retried, and without "output" the file is NAME.mkv.
//
// Throws std::runtime_error, with the name of the group in the text, if the file cannot be read, a
// key or value is invalid, a group has no uri, or two cameras have the same output.
Camera_List read_cameras(const std::string &file);

}  // namespace kel::tavren::programs

#endif
