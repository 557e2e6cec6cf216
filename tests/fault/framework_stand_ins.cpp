// Stand-ins for all functions of the framework that the library calls and that can fail. They
// replace the framework's functions in the whole program, and forward all calls that must not fail.

#include <gst/app/gstappsink.h>
#include <gst/gst.h>
#include <gst/pbutils/pbutils.h>

#include "disturbance.h"
#include "replaced_function.h"

namespace {

// Deduces the type of the function from its declaration.
template <typename Result, typename... Parameters>
class Stand_In {
public:
  Stand_In(Result (*function)(Parameters...), const char *name, const void *caller)
      : function_(function), name_(name), caller_(caller) {}

  Result answer(Result failure, Parameters... arguments) const {
    if (kel::tavren::tests::fails_now(name_, caller_)) return failure;
    return kel::tavren::tests::replaced_function(function_, name_)(arguments...);
  }

private:
  Result (*function_)(Parameters...);
  const char *name_;
  const void *caller_;
};

}  // namespace

// A macro, because the return address is only available in the stand-in itself.
#define STAND_IN(function) Stand_In(function, __func__, __builtin_return_address(0))

extern "C" {

// Types and signals.

gboolean g_type_check_instance_is_a(GTypeInstance *instance, GType type) {
  return STAND_IN(g_type_check_instance_is_a).answer(FALSE, instance, type);
}
gulong g_signal_connect_data(gpointer instance, const gchar *signal, GCallback handler,
                             gpointer data, GClosureNotify destroy_data, GConnectFlags flags) {
  return STAND_IN(g_signal_connect_data)
      .answer(0, instance, signal, handler, data, destroy_data, flags);
}

// Objects, factories, bins.

gboolean gst_is_initialized() {
  return STAND_IN(gst_is_initialized).answer(FALSE);
}
gchar *gst_object_get_name(GstObject *object) {
  return STAND_IN(gst_object_get_name).answer(nullptr, object);
}
GstObject *gst_object_get_parent(GstObject *object) {
  return STAND_IN(gst_object_get_parent).answer(nullptr, object);
}
GstElementFactory *gst_element_factory_find(const gchar *name) {
  return STAND_IN(gst_element_factory_find).answer(nullptr, name);
}
GstElement *gst_element_factory_make(const gchar *factory, const gchar *name) {
  return STAND_IN(gst_element_factory_make).answer(nullptr, factory, name);
}
GType gst_element_factory_get_element_type(GstElementFactory *factory) {
  return STAND_IN(gst_element_factory_get_element_type).answer(G_TYPE_INVALID, factory);
}
const gchar *gst_element_factory_get_metadata(GstElementFactory *factory, const gchar *key) {
  return STAND_IN(gst_element_factory_get_metadata).answer(nullptr, factory, key);
}
gboolean gst_element_factory_can_sink_all_caps(GstElementFactory *factory, const GstCaps *caps) {
  return STAND_IN(gst_element_factory_can_sink_all_caps).answer(FALSE, factory, caps);
}
GstPluginFeature *gst_plugin_feature_load(GstPluginFeature *feature) {
  return STAND_IN(gst_plugin_feature_load).answer(nullptr, feature);
}
GstElement *gst_parse_launch(const gchar *description, GError **error) {
  return STAND_IN(gst_parse_launch).answer(nullptr, description, error);
}
gboolean gst_bin_add(GstBin *bin, GstElement *element) {
  return STAND_IN(gst_bin_add).answer(FALSE, bin, element);
}
GstElement *gst_bin_get_by_name(GstBin *bin, const gchar *name) {
  return STAND_IN(gst_bin_get_by_name).answer(nullptr, bin, name);
}
GstIterator *gst_bin_iterate_recurse(GstBin *bin) {
  return STAND_IN(gst_bin_iterate_recurse).answer(nullptr, bin);
}
gboolean gst_iterator_find_custom(GstIterator *iterator, GCompareFunc compare, GValue *found,
                                  gpointer data) {
  return STAND_IN(gst_iterator_find_custom).answer(FALSE, iterator, compare, found, data);
}
GstIteratorResult gst_iterator_foreach(GstIterator *iterator, GstIteratorForeachFunction visit,
                                       gpointer data) {
  return STAND_IN(gst_iterator_foreach).answer(GST_ITERATOR_ERROR, iterator, visit, data);
}

// Elements.

GstStateChangeReturn gst_element_set_state(GstElement *element, GstState state) {
  return STAND_IN(gst_element_set_state).answer(GST_STATE_CHANGE_FAILURE, element, state);
}
gboolean gst_element_sync_state_with_parent(GstElement *element) {
  return STAND_IN(gst_element_sync_state_with_parent).answer(FALSE, element);
}
GstBus *gst_element_get_bus(GstElement *element) {
  return STAND_IN(gst_element_get_bus).answer(nullptr, element);
}
GSource *gst_bus_create_watch(GstBus *bus) {
  return STAND_IN(gst_bus_create_watch).answer(nullptr, bus);
}
GstElementFactory *gst_element_get_factory(GstElement *element) {
  return STAND_IN(gst_element_get_factory).answer(nullptr, element);
}
gboolean gst_element_link(GstElement *source, GstElement *sink) {
  return STAND_IN(gst_element_link).answer(FALSE, source, sink);
}
GstPad *gst_element_get_static_pad(GstElement *element, const gchar *name) {
  return STAND_IN(gst_element_get_static_pad).answer(nullptr, element, name);
}
GstPadTemplate *gst_element_class_get_pad_template(GstElementClass *element_class,
                                                   const gchar *name) {
  return STAND_IN(gst_element_class_get_pad_template).answer(nullptr, element_class, name);
}
GstPad *gst_element_request_pad(GstElement *element, GstPadTemplate *pad_template,
                                const gchar *name, const GstCaps *caps) {
  return STAND_IN(gst_element_request_pad).answer(nullptr, element, pad_template, name, caps);
}

// Pads.

GstPadLinkReturn gst_pad_link(GstPad *source, GstPad *sink) {
  return STAND_IN(gst_pad_link).answer(GST_PAD_LINK_REFUSED, source, sink);
}
gboolean gst_pad_unlink(GstPad *source, GstPad *sink) {
  return STAND_IN(gst_pad_unlink).answer(FALSE, source, sink);
}
gboolean gst_pad_is_linked(GstPad *pad) {
  return STAND_IN(gst_pad_is_linked).answer(FALSE, pad);
}
GstPad *gst_pad_get_peer(GstPad *pad) {
  return STAND_IN(gst_pad_get_peer).answer(nullptr, pad);
}
GstElement *gst_pad_get_parent_element(GstPad *pad) {
  return STAND_IN(gst_pad_get_parent_element).answer(nullptr, pad);
}
GstPadDirection gst_pad_get_direction(GstPad *pad) {
  return STAND_IN(gst_pad_get_direction).answer(GST_PAD_UNKNOWN, pad);
}
gulong gst_pad_add_probe(GstPad *pad, GstPadProbeType mask, GstPadProbeCallback callback,
                         gpointer data, GDestroyNotify destroy_data) {
  return STAND_IN(gst_pad_add_probe).answer(0, pad, mask, callback, data, destroy_data);
}
gboolean gst_pad_has_current_caps(GstPad *pad) {
  return STAND_IN(gst_pad_has_current_caps).answer(FALSE, pad);
}
GstCaps *gst_pad_get_current_caps(GstPad *pad) {
  return STAND_IN(gst_pad_get_current_caps).answer(nullptr, pad);
}
GstCaps *gst_pad_peer_query_caps(GstPad *pad, GstCaps *filter) {
  return STAND_IN(gst_pad_peer_query_caps).answer(nullptr, pad, filter);
}
GstCaps *gst_app_sink_get_caps(GstAppSink *appsink) {
  return STAND_IN(gst_app_sink_get_caps).answer(nullptr, appsink);
}

// Caps and their structures.

gboolean gst_caps_is_equal(const GstCaps *first, const GstCaps *second) {
  return STAND_IN(gst_caps_is_equal).answer(FALSE, first, second);
}
gboolean gst_caps_is_subset(const GstCaps *subset, const GstCaps *superset) {
  return STAND_IN(gst_caps_is_subset).answer(FALSE, subset, superset);
}
GstStructure *gst_caps_get_structure(const GstCaps *caps, guint index) {
  return STAND_IN(gst_caps_get_structure).answer(nullptr, caps, index);
}
gboolean gst_structure_get_fraction(const GstStructure *structure, const gchar *field,
                                    gint *numerator, gint *denominator) {
  return STAND_IN(gst_structure_get_fraction)
      .answer(FALSE, structure, field, numerator, denominator);
}
gboolean gst_structure_get_int(const GstStructure *structure, const gchar *field, gint *value) {
  return STAND_IN(gst_structure_get_int).answer(FALSE, structure, field, value);
}
const gchar *gst_structure_get_string(const GstStructure *structure, const gchar *field) {
  return STAND_IN(gst_structure_get_string).answer(nullptr, structure, field);
}

// The discoverer.

GstDiscoverer *gst_discoverer_new(GstClockTime timeout, GError **error) {
  return STAND_IN(gst_discoverer_new).answer(nullptr, timeout, error);
}
GstDiscovererInfo *gst_discoverer_discover_uri(GstDiscoverer *discoverer, const gchar *uri,
                                               GError **error) {
  return STAND_IN(gst_discoverer_discover_uri).answer(nullptr, discoverer, uri, error);
}
GstDiscovererResult gst_discoverer_info_get_result(const GstDiscovererInfo *info) {
  return STAND_IN(gst_discoverer_info_get_result).answer(GST_DISCOVERER_ERROR, info);
}
GstClockTime gst_discoverer_info_get_duration(const GstDiscovererInfo *info) {
  return STAND_IN(gst_discoverer_info_get_duration).answer(GST_CLOCK_TIME_NONE, info);
}
GList *gst_discoverer_info_get_video_streams(GstDiscovererInfo *info) {
  return STAND_IN(gst_discoverer_info_get_video_streams).answer(nullptr, info);
}
GList *gst_discoverer_info_get_audio_streams(GstDiscovererInfo *info) {
  return STAND_IN(gst_discoverer_info_get_audio_streams).answer(nullptr, info);
}
GstCaps *gst_discoverer_stream_info_get_caps(GstDiscovererStreamInfo *info) {
  return STAND_IN(gst_discoverer_stream_info_get_caps).answer(nullptr, info);
}

}  // extern "C"
