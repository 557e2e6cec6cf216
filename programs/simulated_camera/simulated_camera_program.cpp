// Serves a simulated camera until its lifetime is over or it is asked to end; the first line on
// stdout is where to reach it.

#include <iostream>

#include <tavren/capture/media_helper.h>

#include "command_line/program.h"
#include "command_line/signal_watch.h"
#include "simulated_camera.h"

namespace kel::tavren::programs {

namespace {

void serve(const Camera_Streams &streams, int lifetime) {
  const boost::intrusive_ptr<GMainLoop> loop(g_main_loop_new(nullptr, FALSE), false);
  const auto quit = [&loop] { g_main_loop_quit(loop.get()); };
  const Signal_Watch signals(quit);
  const Simulated_Camera camera(streams);
  std::cout << camera.uri() << std::endl;

  const guint timer = g_timeout_add_seconds(
      static_cast<guint>(lifetime),
      [](gpointer ended) -> gboolean {
        g_main_loop_quit(static_cast<GMainLoop *>(ended));
        return G_SOURCE_CONTINUE;
      },
      loop.get());
  g_main_loop_run(loop.get());
  g_source_remove(timer);
}

}  // namespace

}  // namespace kel::tavren::programs

int main(int argc, char **argv) {
  using namespace kel::tavren::programs;
  Text_Option video;
  Text_Option audio;
  int metadata = 0;
  int lifetime = 3600;
  const std::vector<GOptionEntry> options = {
      {"video", 0, 0, G_OPTION_ARG_STRING, video.target(),
       "h264 (default), jpeg, mpeg4, vp8 or none", "KIND"},
      {"audio", 0, 0, G_OPTION_ARG_STRING, audio.target(), "aac (default), mulaw, opus or none",
       "KIND"},
      {"metadata", 0, 0, G_OPTION_ARG_NONE, &metadata, "send ONVIF metadata too", nullptr},
      {"lifetime", 0, 0, G_OPTION_ARG_INT, &lifetime, "serve this long (default 3600)", "SECONDS"}};
  return run_program(argc, argv, "Serves a simulated camera over RTSP on 127.0.0.1.", options, [&] {
    const Camera_Streams streams{video.value_or("h264"), audio.value_or("aac"), metadata != 0};
    if (lifetime <= 0) throw std::invalid_argument("--lifetime must be positive");
    serve(streams, lifetime);
  });
}
