// Watches the bus of a pipeline on a main loop until the stream ends or fails.

#include <iostream>

#include <tavren/capture/media_helper.h>

using boost::intrusive_ptr;
using kel::tavren::capture::Media_Helper;

namespace {

struct Session {
  intrusive_ptr<GMainLoop> loop{g_main_loop_new(nullptr, FALSE), false};
  intrusive_ptr<GstMessage> last;
};

// C code calls this, so no exception may leave it: it only keeps a reference to the message.
gboolean on_message(GstBus *, GstMessage *message, gpointer data) noexcept {
  auto *const session = static_cast<Session *>(data);
  if ((GST_MESSAGE_TYPE(message) & (GST_MESSAGE_EOS | GST_MESSAGE_ERROR)) != 0) {
    session->last = message;
    g_main_loop_quit(session->loop.get());
  }
  return G_SOURCE_CONTINUE;
}

}  // namespace

int main(int argc, char **argv) {
  gst_init(&argc, &argv);
  try {
    Session session;
    GstElement *const parsed =
        Media_Helper::gst_parse_launch_or_throw("fakesrc num-buffers=20 ! fakesink");
    const intrusive_ptr<GstElement> pipeline(GST_ELEMENT(gst_object_ref_sink(parsed)), false);
    const intrusive_ptr<GstBus> bus(Media_Helper::gst_element_get_bus_or_throw(pipeline.get()),
                                    false);
    const intrusive_ptr<GSource> watch(Media_Helper::gst_bus_create_watch_or_throw(bus.get()),
                                       false);
    g_source_set_callback(watch.get(), G_SOURCE_FUNC(on_message), &session, nullptr);
    g_source_attach(watch.get(), nullptr);
    kel::tavren::Scope_Exit_Guard stop;
    kel::tavren::arm(stop, [&pipeline, &watch] {
      gst_element_set_state(pipeline.get(), GST_STATE_NULL);
      g_source_destroy(watch.get());
    });
    Media_Helper::gst_element_set_state_or_throw(pipeline.get(), GST_STATE_PLAYING, "starting");
    g_main_loop_run(session.loop.get());
    if (GST_MESSAGE_TYPE(session.last.get()) == GST_MESSAGE_ERROR) {
      GError *error = nullptr;
      gst_message_parse_error(session.last.get(), &error, nullptr);
      const std::unique_ptr<GError, decltype(&g_error_free)> owner(error, g_error_free);
      throw std::runtime_error(error->message);
    }
    std::cout << "the stream has ended\n";
  } catch (const std::exception &error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
