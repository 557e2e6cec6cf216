// Relays a camera's streams over RTSP without decoding them. The first line on stdout is the
// address for viewers, followed by one line for each of the camera's streams.

#include <iostream>

#include <tavren/capture/media_helper.h>

#include "command_line/program.h"
#include "stream_relay.h"

namespace kel::tavren::programs {

using capture::Media_Helper;

namespace {

// RTP video H264: rtph264depay -> rtph264pay
std::string describe(const Camera_Stream &stream) {
  GstCaps *const caps = stream.caps.get();
  const char *const media = gst_structure_get_string(gst_caps_get_structure(caps, 0), "media");
  std::string text = Media_Helper::get_media_type_string(Media_Helper::get_media_type(caps)) + " " +
                     (media != nullptr ? media : "-") + " " + encoding_name_of(caps) + ": ";
  return text + (stream.relayed() ? stream.depayloader + " -> " + stream.payloader
                                  : "not relayed, " + stream.obstacle);
}

void show(const std::string &uri, const std::vector<Camera_Stream> &streams) {
  std::cout << uri << '\n';
  for (const Camera_Stream &stream : streams)
    std::cout << describe(stream) << '\n';
  std::cout << std::flush;
}

void check_options(const Camera_Arguments &camera, const Relay_Options &options) {
  if (!camera.has_uri()) throw std::invalid_argument("--uri is missing");
  if (options.port < 0 || options.port > 65535)
    throw std::invalid_argument("--port takes 0 to 65535");
  if (options.duration < 0) throw std::invalid_argument("--duration must not be negative");
  if (options.retry < 0) throw std::invalid_argument("--retry must not be negative");
}

}  // namespace

}  // namespace kel::tavren::programs

int main(int argc, char **argv) {
  using namespace kel::tavren::programs;
  Camera_Arguments camera;
  Relay_Options options;
  std::vector<GOptionEntry> entries = camera.entries();
  entries.push_back({"port", 0, 0, G_OPTION_ARG_INT, &options.port,
                     "listen on this port (default 0: the system chooses)", "N"});
  entries.push_back({"duration", 0, 0, G_OPTION_ARG_INT, &options.duration,
                     "stop after this time (default 0: on a signal)", "SECONDS"});
  entries.push_back({"retry", 0, 0, G_OPTION_ARG_INT, &options.retry,
                     "keep trying an unavailable camera for this time (default 0: do not retry)",
                     "SECONDS"});
  return run_program(argc, argv, "Relays a camera's RTSP streams on 127.0.0.1.", entries, [&] {
    check_options(camera, options);
    options.camera = camera.options();
    Stream_Relay(options, show).run();
  });
}
