// How a camera is reached: the options that all programs share, and the source element they make.

#ifndef TAVREN_PROGRAMS_CAMERA_SOURCE_H
#define TAVREN_PROGRAMS_CAMERA_SOURCE_H

#include <string>
#include <vector>

#include <gst/gst.h>

#include "camera_address.h"
#include "command_line/program.h"

namespace kel::tavren::programs {

struct Camera_Options {
  Camera_Address address;
  Transport transport = Transport::automatic;
  guint latency = 200;  // of the jitter buffer in ms
  bool is_encrypted() const { return address.location.rfind("rtsps", 0) == 0; }

  std::string ca_file;  // certificate authorities to trust instead of the system's; empty: none
};

// The transports to try in turn: for Transport::automatic TCP, which loses nothing, then UDP.
std::vector<Transport> transports_to_try(Transport transport);

// Adds an RTSP source to a bin, which owns it. The element's location does not contain the
// credentials, so no message of the framework can show them. Throws Bus_Error if the file of
// certificate authorities cannot be read, and what the library throws if the element is missing.
GstElement *add_camera_source(GstElement *bin, const Camera_Options &options, Transport transport);

// The number of the stream, as the camera describes it, that a pad of the source carries. Throws
// Bus_Error if it is not a pad of an RTSP source.
guint stream_number(GstPad *pad);

// The command line options --uri, --transport, --latency, --user, --password-file and --ca-file.
class Camera_Arguments {
public:
  // The entries for GLib's parser, without a terminator. They refer to this object.
  std::vector<GOptionEntry> entries();

  bool has_uri() const noexcept { return uri_.given(); }

  // The options given, for another URI if one is passed. The password is, in this order, the first
  // line of --password-file, the environment variable TAVREN_CAMERA_PASSWORD, or that of the URI.
  // Throws std::invalid_argument for a bad value, std::runtime_error if the password file cannot be
  // read, Bus_Error if the URI is not an RTSP address.
  Camera_Options options(const std::string &uri) const;
  Camera_Options options() const { return options(uri_.value_or("")); }

private:
  Text_Option uri_;
  Text_Option transport_;
  Text_Option user_;
  Text_Option password_file_;
  Text_Option ca_file_;
  int latency_ = 200;
};

}  // namespace kel::tavren::programs

#endif
