// A typical user's program: it includes one header of the library and one of the framework, uses
// handles for objects of the framework, and catches an error that the library throws.

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

// Each handle adopts the reference from the creation of the object, and a copy adds another one.
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

template <typename Class, typename Call>
bool is_caught_as(Call call) {
  try {
    call();
  } catch (const Class &) {
    return true;
  } catch (...) {
    return false;
  }
  return false;
}

// The program catches errors of the library by each of their classes, with code and text.
bool errors_are_caught() {
  const auto find = [] { Media_Helper::gst_element_factory_find_or_throw("no_such_factory"); };
  const auto fit = [] { Media_Helper::calculate_resolution({0, 0}, {640, 480}); };
  if (!is_caught_as<Backend_Error<std::runtime_error>>(find) ||
      !is_caught_as<Backend_Error<std::exception>>(find) ||
      !is_caught_as<std::runtime_error>(find) || !is_caught_as<std::exception>(find) ||
      !is_caught_as<Tavren_Error<std::logic_error>>(fit) || !is_caught_as<std::logic_error>(fit))
    return false;
  try {
    find();
  } catch (const Tavren_Error<std::exception> &error) {
    const std::string text = dynamic_cast<const std::exception &>(error).what();
    std::cout << "0x" << std::hex << error.code() << ' ' << text << '\n';
    return error.code() == kel::tavren::TEC::FACTORY_NOT_FOUND &&
           text == "Could not find factory for \"no_such_factory\" in "
                   "gst_element_factory_find_or_throw";
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
