// The operations with the framework's C functions, with hand-written versions of the library's
// checks.

#ifndef TAVREN_BENCHMARKS_RAW_CALLS_H
#define TAVREN_BENCHMARKS_RAW_CALLS_H

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include <gst/app/gstappsink.h>
#include <gst/gst.h>

namespace kel::tavren::benchmarks {

// Hand-written error handling. No failure occurs in these benchmarks.
inline void require(bool good, const char *what) {
  if (G_LIKELY(good)) return;
  g_printerr("benchmark: %s failed\n", what);
  std::abort();
}

inline GstPadProbeReturn pass_buffer(GstPad *, GstPadProbeInfo *, gpointer) noexcept {
  return GST_PAD_PROBE_OK;
}

inline void ignore_pad(GstElement *, GstPad *, gpointer) noexcept {}

struct Raw_Calls {
  static constexpr const char *implementation = "raw";
  using Element = GstElement *;
  using Bin = GstElement *;
  using Pad = GstPad *;
  using Stream = std::pair<GstPad *, GstPad *>;  // sink pad and source pad of a multiqueue

  // Returns this implementation's handle to an element that was created elsewhere.
  static GstElement *see(GstElement *element) { return element; }
  static GstElement *see_bin(GstElement *bin) { return bin; }
  static GObject *object(GstElement *element) { return G_OBJECT(element); }

  // Returns a floating reference.
  static GstElement *make(const char *factory) {
    GstElement *const element = gst_element_factory_make(factory, nullptr);
    require(element != nullptr, "making an element");
    return element;
  }
  static void drop(GstElement *&element) { gst_clear_object(&element); }

  static void add(GstElement *bin, GstElement *element) {
    require(GST_IS_BIN(bin), "the check of a bin");
    require(GST_IS_ELEMENT(element), "the check of an element");
    add_checked(bin, element);
  }

  static GstElement *make_and_add(GstElement *bin, const char *factory) {
    require(GST_IS_BIN(bin), "the check of a bin");
    GstElement *const element = make(factory);
    add_checked(bin, element);
    return element;
  }

  // Transfer full.
  static GstElementFactory *find_factory(const std::string &name) {
    GstElementFactory *const found = gst_element_factory_find(name.c_str());
    require(found != nullptr, "finding a factory");
    return found;
  }

  static GstElement *get_by_name(GstElement *bin, const std::string &name) {
    require(bin != nullptr, "the check of a bin");
    GstElement *const element = gst_bin_get_by_name(GST_BIN_CAST(bin), name.c_str());
    require(element != nullptr, "finding an element");
    return element;
  }

  static GstBus *get_bus(GstElement *element) {
    require(GST_IS_ELEMENT(element), "the check of an element");
    GstBus *const bus = gst_element_get_bus(element);
    require(bus != nullptr, "getting a bus");
    return bus;
  }

  static GSource *create_watch(GstBus *bus) {
    require(GST_IS_BUS(bus), "the check of a bus");
    GSource *const watch = gst_bus_create_watch(bus);
    require(watch != nullptr, "making a watch");
    return watch;
  }

  static GstElement *get_parent(GstElement *element) {
    require(GST_IS_ELEMENT(element), "the check of an element");
    GstObject *const parent = gst_object_get_parent(GST_OBJECT_CAST(element));
    require(GST_IS_ELEMENT(parent), "the check of a parent");
    return GST_ELEMENT_CAST(parent);
  }

  static gulong connect(GstElement *element, const std::string &signal) {
    require(GST_IS_ELEMENT(element), "the check of an element");
    const gulong handler =
        g_signal_connect(element, signal.c_str(), G_CALLBACK(ignore_pad), nullptr);
    require(handler != 0, "connecting to a signal");
    return handler;
  }

  static void link(GstElement *source, GstElement *sink) {
    require(GST_IS_ELEMENT(source), "the check of an element");
    require(GST_IS_ELEMENT(sink), "the check of an element");
    require(gst_element_link(source, sink), "linking elements");
  }

  static void link_chain(const std::vector<GstElement *> &chain) {
    require(GST_IS_ELEMENT(chain[0]), "the check of an element");
    for (std::size_t i = 1; i < chain.size(); ++i) {
      require(GST_IS_ELEMENT(chain[i]), "the check of an element");
      require(gst_element_link(chain[i - 1], chain[i]), "linking elements");
    }
  }

  static void set_state(GstElement *element, GstState state) {
    require(GST_IS_ELEMENT(element), "the check of an element");
    require(gst_element_set_state(element, state) != GST_STATE_CHANGE_FAILURE, "setting a state");
  }

  static void sync_state_with_parent(GstElement *element) {
    require(GST_IS_ELEMENT(element), "the check of an element");
    require(gst_element_sync_state_with_parent(element), "following a parent's state");
  }

  // Transfer full.
  static GstPad *static_pad(GstElement *element, const char *name) {
    require(GST_IS_ELEMENT(element), "the check of an element");
    GstPad *const pad = gst_element_get_static_pad(element, name);
    require(pad != nullptr, "looking up a pad");
    return pad;
  }
  static void drop(GstPad *&pad) { gst_clear_object(&pad); }

  static void add_probe(GstElement *element) {
    GstPad *const pad = static_pad(element, "sink");
    require(gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, pass_buffer, nullptr, nullptr) != 0,
            "adding a probe");
    gst_object_unref(pad);
  }

  static void link_tee(GstElement *tee, GstElement *element) {
    require(GST_IS_ELEMENT(tee), "the check of an element");
    require(GST_IS_ELEMENT(element), "the check of an element");
    GstPad *const tee_pad = request_pad(tee, "src_%u");
    GstPad *const sink_pad = gst_element_get_static_pad(element, "sink");
    require(sink_pad != nullptr, "looking up a pad");
    require(gst_pad_link(tee_pad, sink_pad) == GST_PAD_LINK_OK, "linking a tee");
    gst_object_unref(sink_pad);
    gst_object_unref(tee_pad);
  }

  // Transfer full.
  static GstPad *sink_peer(GstElement *element) {
    GstPad *const sink_pad = static_pad(element, "sink");
    require(gst_pad_is_linked(sink_pad), "the check of a link");
    GstPad *const peer = gst_pad_get_peer(sink_pad);
    require(peer != nullptr, "looking up a peer");
    gst_object_unref(sink_pad);
    return peer;
  }

  // The tee unlinks the pad when it is released.
  static void drop_branch(GstElement *tee, GstElement *element) {
    GstPad *const tee_pad = sink_peer(element);
    gst_element_release_request_pad(tee, tee_pad);
    gst_object_unref(tee_pad);
  }

  // Transfer full for both pads.
  static Stream new_stream(GstElement *multiqueue) {
    require(GST_IS_ELEMENT(multiqueue), "the check of an element");
    GstPad *const sink_pad = request_pad(multiqueue, "sink_%u");
    gchar *const sink_name = gst_object_get_name(GST_OBJECT_CAST(sink_pad));
    require(g_str_has_prefix(sink_name, "sink_"), "the check of a pad's name");
    gchar *const src_name = g_strconcat("src_", sink_name + 5, nullptr);
    GstPad *const src_pad = gst_element_get_static_pad(multiqueue, src_name);
    require(src_pad != nullptr, "looking up a pad");
    g_free(src_name);
    g_free(sink_name);
    return {sink_pad, src_pad};
  }

  static void release_stream(GstElement *multiqueue, Stream &stream) {
    gst_element_release_request_pad(multiqueue, stream.first);
    drop(stream.first);
    drop(stream.second);
  }

  static void link_element_to_pad(GstElement *element, GstPad *pad) {
    GstPad *const src_pad = static_pad(element, "src");
    require(gst_pad_link(src_pad, pad) == GST_PAD_LINK_OK, "linking pads");
    gst_object_unref(src_pad);
  }

  static void link_pad_to_element(GstPad *pad, GstElement *element) {
    require(GST_IS_PAD(pad), "the check of a pad");
    GstPad *const sink_pad = static_pad(element, "sink");
    require(gst_pad_link(pad, sink_pad) == GST_PAD_LINK_OK, "linking pads");
    gst_object_unref(sink_pad);
  }

  static void unlink_pad_from_element(GstPad *pad, GstElement *element) {
    require(pad != nullptr, "the check of a pad");
    require(element != nullptr, "the check of an element");
    GstPad *const sink_pad = gst_element_get_static_pad(element, "sink");
    require(sink_pad != nullptr, "looking up a pad");
    require(gst_pad_unlink(pad, sink_pad), "unlinking pads");
    gst_object_unref(sink_pad);
  }

  static bool find(GstElement *bin, GType type, GstCaps *caps) {
    require(GST_IS_BIN(bin), "the check of a bin");
    require(type != G_TYPE_INVALID, "the check of a type");
    require(GST_IS_CAPS(caps), "the check of caps");
    Wanted wanted{type, caps};
    GValue result = G_VALUE_INIT;
    GstIterator *const iterator = gst_bin_iterate_recurse(GST_BIN_CAST(bin));
    const gboolean is_found = gst_iterator_find_custom(iterator, compare, &result, &wanted);
    gst_iterator_free(iterator);
    if (!is_found) return false;
    GstElement *const found = GST_ELEMENT_CAST(g_value_get_object(&result));
    gst_object_unref(found);
    return true;
  }

  static bool has_type(GstElement *bin, GType type) {
    require(GST_IS_BIN(bin), "the check of a bin");
    require(type != G_TYPE_INVALID, "the check of a type");
    GValue found = G_VALUE_INIT;
    GstIterator *const iterator = gst_bin_iterate_recurse(GST_BIN_CAST(bin));
    const gboolean is_found = gst_iterator_find_custom(iterator, compare_type, &found, &type);
    gst_iterator_free(iterator);
    if (is_found) g_value_unset(&found);
    return is_found;
  }

  static const char *select_muxer() { return "matroskamux"; }
  static const char *select_parser(bool is_video) { return is_video ? "h264parse" : "identity"; }
  static const char *select_video_rate() { return "tavrenvideorate"; }

private:
  struct Wanted {
    GType type;
    GstCaps *caps;
  };

  // A bin destroys an element that it rejects, so keep a reference for the error message.
  static void add_checked(GstElement *bin, GstElement *element) {
    gst_object_ref(element);
    const gboolean is_added = gst_bin_add(GST_BIN_CAST(bin), element);
    require(is_added, GST_OBJECT_NAME(element));
    gst_object_unref(element);
  }

  static GstPad *request_pad(GstElement *element, const char *name) {
    GstPadTemplate *const pad_template =
        gst_element_class_get_pad_template(GST_ELEMENT_GET_CLASS(element), name);
    require(pad_template != nullptr, "looking up a template");
    GstPad *const pad = gst_element_request_pad(element, pad_template, nullptr, nullptr);
    require(pad != nullptr, "requesting a pad");
    return pad;
  }

  // Transfer full; null if the element has no caps.
  static GstCaps *caps_of(GstElement *element) noexcept {
    if (GST_IS_APP_SINK(element)) return gst_app_sink_get_caps(GST_APP_SINK_CAST(element));
    GstPad *const pad = gst_element_get_static_pad(element, "sink");
    if (pad == nullptr) return nullptr;
    GstCaps *const caps = gst_pad_has_current_caps(pad) ? gst_pad_get_current_caps(pad)
                                                        : gst_pad_peer_query_caps(pad, nullptr);
    gst_object_unref(pad);
    return caps;
  }

  static gint compare(gconstpointer item, gconstpointer data) noexcept {
    const auto *const wanted = static_cast<const Wanted *>(data);
    GstElement *const element =
        GST_ELEMENT_CAST(g_value_get_object(static_cast<const GValue *>(item)));
    if (G_OBJECT_TYPE(element) != wanted->type) return -1;
    GstCaps *const caps = caps_of(element);
    if (caps == nullptr) return -1;
    const gboolean is_subset = gst_caps_is_subset(caps, wanted->caps);
    gst_caps_unref(caps);
    return is_subset ? 0 : -1;
  }

  static gint compare_type(gconstpointer item, gconstpointer type) noexcept {
    return G_OBJECT_TYPE(g_value_get_object(static_cast<const GValue *>(item))) ==
                   *static_cast<const GType *>(type)
               ? 0
               : -1;
  }
};

}  // namespace kel::tavren::benchmarks

#endif
