// A program as a user of the library writes it: one header of the library, the framework's beside
// it, handles to the objects of both, and an error that the library throws and the program catches.

#include <iostream>
#include <string>

#include <gst/rtsp-server/rtsp-server.h>
#include <tavren/capture/media_helper.h>

namespace {

using kel::tavren::Backend_Error;
using kel::tavren::Tavren_Error;
using kel::tavren::capture::Media_Helper;

template <typename T>
using Handle = boost::intrusive_ptr<T>;

// Each handle adopts the reference that made the object, and a copy adds another.
bool handles_count() {
  const Handle<GstElement> pipeline(
      GST_ELEMENT_CAST(
          gst_object_ref_sink(Media_Helper::gst_parse_launch_or_throw("fakesrc ! tee ! fakesink"))),
      false);
  const Handle<GstBus> bus(Media_Helper::gst_element_get_bus_or_throw(pipeline.get()), false);
  const Handle<GMainLoop> loop(g_main_loop_new(nullptr, FALSE), false);
  const Handle<GstRTSPServer> server(gst_rtsp_server_new(), false);
  const Handle<GstRTSPMountPoints> mounts(gst_rtsp_server_get_mount_points(server.get()), false);
  const Handle<GstRTSPServer> second = server;
  return G_OBJECT(server.get())->ref_count == 2 && pipeline && bus && loop && mounts;
}

// The error crosses from the library into the program by its class, and is told apart there.
bool errors_are_caught() {
  try {
    Media_Helper::gst_element_factory_find_or_throw("no_such_factory");
  } catch (const Tavren_Error<std::exception> &error) {
    const auto *const raised = dynamic_cast<const Backend_Error<std::runtime_error> *>(&error);
    std::cout << "0x" << std::hex << error.code() << ' '
              << (raised != nullptr ? raised->what() : "of another class") << '\n';
    return error.code() == kel::tavren::TEC::FACTORY_NOT_FOUND && raised != nullptr;
  }
  return false;
}

}  // namespace

int main(int argc, char **argv) {
  gst_init(&argc, &argv);
  const bool good = handles_count() && errors_are_caught();
  gst_deinit();
  return good ? 0 : 1;
}
