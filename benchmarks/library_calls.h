// The operations with this library.

#ifndef TAVREN_BENCHMARKS_LIBRARY_CALLS_H
#define TAVREN_BENCHMARKS_LIBRARY_CALLS_H

#include <array>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include <tavren/capture/media_helper.h>

#include "raw_calls.h"

namespace kel::tavren::benchmarks {

using capture::Media_Helper;

struct Library_Calls {
  static constexpr const char *implementation = "library";
  using Element = GstElement *;
  using Bin = GstElement *;
  using Pad = GstPad *;
  using Stream = std::pair<GstPad *, GstPad *>;

  static GstElement *see(GstElement *element) { return element; }
  static GstElement *see_bin(GstElement *bin) { return bin; }
  static GObject *object(GstElement *element) { return G_OBJECT(element); }

  static GstElement *make(const char *factory) {
    return Media_Helper::gst_element_factory_make_or_throw(factory, "");
  }
  static void drop(GstElement *&element) { gst_clear_object(&element); }

  static void add(GstElement *bin, GstElement *element) {
    Media_Helper::gst_bin_add_or_throw(GST_BIN_CAST(bin), element);
  }

  static GstElement *make_and_add(GstElement *bin, const std::string &factory) {
    return Media_Helper::create_and_add_element_to_bin(factory, bin, "");
  }

  static GstElementFactory *find_factory(const std::string &name) {
    return Media_Helper::gst_element_factory_find_or_throw(name);
  }

  static GstElement *get_by_name(GstElement *bin, const std::string &name) {
    return Media_Helper::gst_bin_get_by_name_or_throw(GST_BIN_CAST(bin), name);
  }

  static GstBus *get_bus(GstElement *element) {
    return Media_Helper::gst_element_get_bus_or_throw(element);
  }

  static GSource *create_watch(GstBus *bus) {
    return Media_Helper::gst_bus_create_watch_or_throw(bus);
  }

  static GstElement *get_parent(GstElement *element) {
    return Media_Helper::gst_element_get_parent_or_throw(element);
  }

  static gulong connect(GstElement *element, const std::string &signal) {
    return Media_Helper::g_signal_connect_or_throw(element, signal, G_CALLBACK(ignore_pad),
                                                   nullptr);
  }

  static void link(GstElement *source, GstElement *sink) {
    Media_Helper::gst_element_link_many_or_throw(source, sink, nullptr);
  }

  static void link_chain(const std::vector<GstElement *> &chain) {
    switch (chain.size()) {
    case 2:
      return link_all(chain, std::make_index_sequence<2>());
    case 8:
      return link_all(chain, std::make_index_sequence<8>());
    case 32:
      return link_all(chain, std::make_index_sequence<32>());
    default:
      require(false, "linking a chain of another length");
    }
  }

  static void set_state(GstElement *element, GstState state) {
    Media_Helper::gst_element_set_state_or_throw(element, state, "");
  }

  static void sync_state_with_parent(GstElement *element) {
    Media_Helper::gst_element_sync_state_with_parent_or_throw(element);
  }

  static GstPad *static_pad(GstElement *element, const char *name) {
    return Media_Helper::gst_element_get_static_pad_or_throw(element, name);
  }
  static void drop(GstPad *&pad) { gst_clear_object(&pad); }

  static void add_probe(GstElement *element) {
    Media_Helper::add_probe_to_sink_pad_or_throw(element, GST_PAD_PROBE_TYPE_BUFFER, pass_buffer,
                                                 nullptr, nullptr);
  }

  static void link_tee(GstElement *tee, GstElement *element) {
    Media_Helper::link_tee_to_element(tee, element);
  }

  static GstPad *sink_peer(GstElement *element) {
    return Media_Helper::get_element_sink_peer_pad_or_throw(element);
  }

  static void drop_branch(GstElement *tee, GstElement *element) {
    const boost::intrusive_ptr<GstPad> tee_pad(sink_peer(element), false);
    gst_element_release_request_pad(tee, tee_pad.get());
  }

  static Stream new_stream(GstElement *multiqueue) {
    return Media_Helper::request_new_multiqueue_pads(multiqueue, "", nullptr);
  }

  static void release_stream(GstElement *multiqueue, Stream &stream) {
    gst_element_release_request_pad(multiqueue, stream.first);
    drop(stream.first);
    drop(stream.second);
  }

  static void link_element_to_pad(GstElement *element, GstPad *pad) {
    require(Media_Helper::link_element_to_pad(element, pad), "linking pads");
  }

  static void link_pad_to_element(GstPad *pad, GstElement *element) {
    Media_Helper::link_pad_to_element_or_throw(pad, element);
  }

  static void unlink_pad_from_element(GstPad *pad, GstElement *element) {
    require(Media_Helper::unlink_pad_from_element(pad, element), "unlinking pads");
  }

  static bool find(GstElement *bin, GType type, GstCaps *caps) {
    const boost::intrusive_ptr<GstElement> found(
        Media_Helper::find_element_with_caps_and_type(GST_BIN_CAST(bin), type, caps), false);
    return found != nullptr;
  }

  static bool has_type(GstElement *bin, GType type) {
    return Media_Helper::bin_has_element_type(GST_BIN_CAST(bin), type);
  }

  static std::string select_muxer() { return Media_Helper::select_muxer("camera.mkv"); }
  static std::string select_parser(bool is_video) {
    return Media_Helper::select_parser(is_video ? capture::H264 : capture::MULAW);
  }
  static std::string select_video_rate() { return Media_Helper::select_video_rate(capture::H264); }

private:
  template <std::size_t... I>
  static void link_all(const std::vector<GstElement *> &chain, std::index_sequence<I...>) {
    Media_Helper::gst_element_link_many_or_throw(chain[I]..., nullptr);
  }
};

}  // namespace kel::tavren::benchmarks

#endif
