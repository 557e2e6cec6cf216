// The camera options shared by all programs, and the source element that they configure.

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
  guint latency = 200;  // of the jitter buffer, in ms
  bool is_encrypted() const { return address.location.rfind("rtsps", 0) == 0; }

  std::string ca_file;  // trusted certificate authorities, in place of the system's; empty: none
};

// Returns the transports to try in order. Transport::automatic tries TCP first, which does not lose
// packets, then UDP.
std::vector<Transport> transports_to_try(Transport transport);

// Adds an RTSP source to a bin, which owns it. The element's location does not contain the
// credentials, so messages of the framework cannot reveal them. Throws Bus_Error if the certificate
// authorities cannot be read. Propagates the library's exception if the element is missing.
GstElement *add_camera_source(GstElement *bin, const Camera_Options &options, Transport transport);

// Call this before the source is stopped. rtspsrc asks the camera to pause, and cannot be
// interrupted while it receives a message. If the message does not end, because the camera has
// paused or sends garbage, rtspsrc would wait for as long as for a connection.
void expect_no_response(GstElement *source) noexcept;

// Parses the command line options --uri, --transport, --latency, --user, --password-file and
// --ca-file.
class Camera_Arguments {
public:
  // Returns the entries for GLib's option parser, without a terminator. They refer to this object.
  std::vector<GOptionEntry> entries();

  bool has_uri() const noexcept { return uri_.given(); }

  // Returns the parsed options for the given URI. The password is taken from the first line of
  // --password-file, else from the environment variable TAVREN_CAMERA_PASSWORD, else from the URI.
  // Throws std::invalid_argument for an invalid value, std::runtime_error if the password file
  // cannot be read, and Bus_Error if the URI is not an RTSP address.
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
