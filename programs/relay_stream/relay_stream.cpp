// Relays a camera's streams: serves them again over RTSP, without decoding them. The first line on
// stdout is where to watch; then comes a line for each of the camera's streams.

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
                     (media != nullptr ? media : "-") + " " +
                     Media_Helper::get_encoding_name_from_caps(caps) + ": ";
  return text + (stream.relayed() ? stream.depayloader + " -> " + stream.payloader
                                  : "not relayed, " + stream.obstacle);
}

void relay(const std::string &uri, int port, int duration) {
  const std::vector<Camera_Stream> streams = ask_for_streams(uri);
  Stream_Relay relay(uri, streams, port);
  std::cout << relay.uri() << '\n';
  for (const Camera_Stream &stream : streams)
    std::cout << describe(stream) << '\n';
  std::cout << std::flush;
  relay.run(duration);
}

}  // namespace

}  // namespace kel::tavren::programs

int main(int argc, char **argv) {
  using namespace kel::tavren::programs;
  Text_Option uri;
  int port = 0;
  int duration = 0;
  const std::vector<GOptionEntry> options = {
      {"uri", 0, 0, G_OPTION_ARG_STRING, uri.target(), "the camera", "rtsp://..."},
      {"port", 0, 0, G_OPTION_ARG_INT, &port, "listen here (default 0: the system picks)", "N"},
      {"duration", 0, 0, G_OPTION_ARG_INT, &duration,
       "end after this long (default 0: when asked to by a signal)", "SECONDS"}};
  return run_program(argc, argv, "Serves a camera's RTSP streams again on 127.0.0.1.", options,
                     [&] {
                       if (uri.value_or("").empty())
                         throw std::invalid_argument("--uri is missing");
                       if (port < 0 || port > 65535)
                         throw std::invalid_argument("--port takes 0 to 65535");
                       if (duration < 0)
                         throw std::invalid_argument("--duration must not be negative");
                       relay(uri.value_or(""), port, duration);
                     });
}
