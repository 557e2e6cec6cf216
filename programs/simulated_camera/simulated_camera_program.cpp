// Serves a simulated camera until its lifetime is over or a signal arrives. The first line on
// stdout is the camera's address.

#include <iostream>

#include <tavren/capture/media_helper.h>

#include "command_line/program.h"
#include "command_line/signal_watch.h"
#include "main_loop/timer.h"
#include "simulated_camera.h"

namespace kel::tavren::programs {

namespace {

constexpr int longest_lifetime = 24 * 3600;  // s

struct Options {
  Camera_Streams streams;
  Camera_Service service;
  int lifetime = 3600;  // s
};

void check(const Options &options) {
  if (options.service.port < 0 || options.service.port > 65535)
    throw std::invalid_argument("--port takes 0 to 65535");
  if (options.streams.slices < 1 || options.streams.slices > 8)
    throw std::invalid_argument("--slices takes 1 to 8");
  if (options.lifetime <= 0 || options.lifetime > longest_lifetime)
    throw std::invalid_argument("--lifetime takes 1 to " + std::to_string(longest_lifetime));
}

void serve(const Options &options) {
  const boost::intrusive_ptr<GMainLoop> loop(g_main_loop_new(nullptr, FALSE), false);
  const auto quit = [&loop] { g_main_loop_quit(loop.get()); };
  const Signal_Watch signals({SIGINT, SIGTERM, SIGHUP}, quit);
  const Simulated_Camera camera(options.streams, options.service);
  std::cout << camera.uri() << std::endl;
  const Timer end(nullptr, static_cast<guint>(options.lifetime) * 1000, Timer::Kind::once, quit);
  g_main_loop_run(loop.get());
}

}  // namespace

}  // namespace kel::tavren::programs

int main(int argc, char **argv) {
  using namespace kel::tavren::programs;
  Text_Option video;
  Text_Option audio;
  Text_Option transport;
  Text_Option misbehaviour;
  int metadata = 0;
  int noise = 0;
  Options options;
  const std::vector<GOptionEntry> entries = {
      {"video", 0, 0, G_OPTION_ARG_STRING, video.target(),
       "h264 (default), jpeg, mpeg4, vp8 or none", "KIND"},
      {"audio", 0, 0, G_OPTION_ARG_STRING, audio.target(), "aac (default), mulaw, opus or none",
       "KIND"},
      {"metadata", 0, 0, G_OPTION_ARG_NONE, &metadata, "send ONVIF metadata too", nullptr},
      {"slices", 0, 0, G_OPTION_ARG_INT, &options.streams.slices,
       "slices of each h264 picture (default 1)", "N"},
      {"noise", 0, 0, G_OPTION_ARG_NONE, &noise,
       "send noise instead of a moving ball, at a much higher bit rate", nullptr},
      {"port", 0, 0, G_OPTION_ARG_INT, &options.service.port,
       "listen on this port (default 0: the system chooses)", "N"},
      {"transport", 0, 0, G_OPTION_ARG_STRING, transport.target(),
       "offer any transport (default), tcp or udp only", "NAME"},
      {"lifetime", 0, 0, G_OPTION_ARG_INT, &options.lifetime, "serve this long (default 3600)",
       "SECONDS"},
      {"misbehave", 0, 0, G_OPTION_ARG_STRING, misbehaviour.target(),
       "faults T seconds after the first viewer starts to play: pause:S@T, drop:S@T, stop-video@T, "
       "stop-audio@T, silent@T, close@T, gone:S@T; S: duration in seconds; separated by commas",
       "LIST"}};
  return run_program(argc, argv, "Serves a simulated camera over RTSP on 127.0.0.1.", entries, [&] {
    options.streams.video = video.value_or("h264");
    options.streams.audio = audio.value_or("aac");
    options.streams.metadata = metadata != 0;
    options.streams.noise = noise != 0;
    options.service.transport = transport.value_or("any");
    options.service.misbehaviour = parse_misbehaviour(misbehaviour.value_or(""));
    check(options);
    serve(options);
  });
}
