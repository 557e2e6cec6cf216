// The operations with gstreamermm, the framework's C++ binding, in its usual style.

#ifndef TAVREN_BENCHMARKS_GSTREAMERMM_CALLS_H
#define TAVREN_BENCHMARKS_GSTREAMERMM_CALLS_H

#include <string>
#include <utility>
#include <vector>

#include <gstreamermm.h>

#include "raw_calls.h"

namespace kel::tavren::benchmarks {

// gstreamermm throws if an element cannot be added or linked. Other operations return null on
// failure, which the code here checks.
struct Gstreamermm_Calls {
  static constexpr const char *implementation = "gstreamermm";
  using Element = Glib::RefPtr<Gst::Element>;
  using Bin = Glib::RefPtr<Gst::Bin>;
  using Pad = Glib::RefPtr<Gst::Pad>;
  using Stream = std::pair<Pad, Pad>;

  static Element see(GstElement *element) { return Glib::wrap(element, true); }
  static Bin see_bin(GstElement *bin) { return Glib::wrap(GST_BIN_CAST(bin), true); }
  static GObject *object(const Element &element) { return G_OBJECT(element->gobj()); }

  static Element make(const char *factory) {
    Element element = Gst::ElementFactory::create_element(factory);
    require(static_cast<bool>(element), "making an element");
    return element;
  }
  static void drop(Element &element) { element.reset(); }

  static void add(const Bin &bin, const Element &element) { bin->add(element); }

  static Element make_and_add(const Bin &bin, const char *factory) {
    Element element = make(factory);
    bin->add(element);
    return element;
  }

  static void link(const Element &source, const Element &sink) { source->link(sink); }

  static void link_chain(const std::vector<Element> &chain) {
    for (std::size_t i = 1; i < chain.size(); ++i)
      chain[i - 1]->link(chain[i]);
  }

  static void set_state(const Element &element, GstState state) {
    require(element->set_state(static_cast<Gst::State>(state)) != Gst::STATE_CHANGE_FAILURE,
            "setting a state");
  }

  static void sync_state_with_parent(const Element &element) {
    require(element->sync_state_with_parent(), "following a parent's state");
  }

  static Pad static_pad(const Element &element, const char *name) {
    Pad pad = element->get_static_pad(name);
    require(static_cast<bool>(pad), "looking up a pad");
    return pad;
  }
  static void drop(Pad &pad) { pad.reset(); }

  static void add_probe(const Element &element) {
    const auto slot = [](const Pad &, const Gst::PadProbeInfo &) { return Gst::PAD_PROBE_OK; };
    require(static_pad(element, "sink")->add_probe(Gst::PAD_PROBE_TYPE_BUFFER, slot) != 0,
            "adding a probe");
  }

  static void link_tee(const Element &tee, const Element &element) {
    const Pad tee_pad = tee->get_request_pad("src_%u");
    require(static_cast<bool>(tee_pad), "requesting a pad");
    require(tee_pad->link(static_pad(element, "sink")) == Gst::PAD_LINK_OK, "linking a tee");
  }

  static void drop_branch(const Element &tee, const Element &element) {
    const Pad sink_pad = static_pad(element, "sink");
    const Pad tee_pad = sink_pad->get_peer();
    require(static_cast<bool>(tee_pad), "looking up a peer");
    tee->release_request_pad(tee_pad);
  }

  static Stream new_stream(const Element &multiqueue) {
    Pad sink_pad = multiqueue->get_request_pad("sink_%u");
    require(static_cast<bool>(sink_pad), "requesting a pad");
    const std::string src_name = "src_" + std::string(sink_pad->get_name()).substr(5);
    return {sink_pad, static_pad(multiqueue, src_name.c_str())};
  }

  static void release_stream(const Element &multiqueue, Stream &stream) {
    multiqueue->release_request_pad(stream.first);
    stream = {};
  }

  static void link_element_to_pad(const Element &element, const Pad &pad) {
    require(static_pad(element, "src")->link(pad) == Gst::PAD_LINK_OK, "linking pads");
  }

  static void link_pad_to_element(const Pad &pad, const Element &element) {
    require(pad->link(static_pad(element, "sink")) == Gst::PAD_LINK_OK, "linking pads");
  }

  static bool find(const Bin &bin, GType type, GstCaps *caps) {
    const Glib::RefPtr<Gst::Caps> wanted = Glib::wrap(caps, true);
    Gst::Iterator<Gst::Element> iterator = bin->iterate_recurse();
    while (iterator.next() == Gst::ITERATOR_OK) {
      const Element element = *iterator;
      if (G_OBJECT_TYPE(element->gobj()) != type) continue;
      const Pad pad = element->get_static_pad("sink");
      if (!pad) continue;
      const Glib::RefPtr<Gst::Caps> caps_of_pad =
          pad->has_current_caps() ? pad->get_current_caps()
                                  : pad->peer_query_caps(Glib::RefPtr<Gst::Caps>());
      if (caps_of_pad && caps_of_pad->is_subset(wanted)) return true;
    }
    return false;
  }

  static bool has_type(const Bin &bin, GType type) {
    Gst::Iterator<Gst::Element> iterator = bin->iterate_recurse();
    while (iterator.next() == Gst::ITERATOR_OK)
      if (G_OBJECT_TYPE((*iterator)->gobj()) == type) return true;
    return false;
  }

  // gstreamermm has no selection of elements: use the raw calls.
  static const char *select_muxer() { return Raw_Calls::select_muxer(); }
  static const char *select_parser(bool is_video) { return Raw_Calls::select_parser(is_video); }
  static const char *select_video_rate() { return Raw_Calls::select_video_rate(); }
};

}  // namespace kel::tavren::benchmarks

#endif
