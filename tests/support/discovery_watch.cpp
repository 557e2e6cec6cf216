#include "discovery_watch.h"

#include <algorithm>

#include "replaced_function.h"

namespace kel::tavren::tests {

thread_local Discovery_Watch *Discovery_Watch::current = nullptr;

std::vector<Caps> caps_of_streams(GList *streams) {
  std::vector<Caps> caps;
  for (const GList *node = streams; node != nullptr; node = node->next)
    caps.emplace_back(gst_discoverer_stream_info_get_caps(GST_DISCOVERER_STREAM_INFO(node->data)),
                      false);
  gst_discoverer_stream_info_list_free(streams);
  return caps;
}

}  // namespace kel::tavren::tests

using kel::tavren::tests::Discovery_Watch;
using kel::tavren::tests::replaced_function;

namespace {

GList *note_list(const char *kind, GList *streams) {
  if (Discovery_Watch *const watch = Discovery_Watch::current; watch != nullptr) {
    watch->asked.emplace_back(kind);
    if (streams != nullptr) watch->lists.push_back(streams);
  }
  return streams;
}

}  // namespace

extern "C" {

GstDiscoverer *gst_discoverer_new(GstClockTime timeout, GError **error) {
  GstDiscoverer *const discoverer = replaced_function(gst_discoverer_new, __func__)(timeout, error);
  Discovery_Watch *const watch = Discovery_Watch::current;
  if (watch != nullptr) {
    watch->timeouts.push_back(timeout);
    if (error != nullptr) watch->error_wanted = true;
    if (discoverer != nullptr) watch->watch_end(discoverer, "discoverer");
  }
  return discoverer;
}

GstDiscovererInfo *gst_discoverer_discover_uri(GstDiscoverer *discoverer, const gchar *uri,
                                               GError **error) {
  Discovery_Watch *const watch = Discovery_Watch::current;
  if (watch != nullptr) {
    watch->uris.emplace_back(uri);
    if (error != nullptr) watch->error_wanted = true;
    if (watch->find_nothing) return nullptr;
  }
  GstDiscovererInfo *const found =
      replaced_function(gst_discoverer_discover_uri, __func__)(discoverer, uri, error);
  if (watch != nullptr) {
    watch->watch_end(found, "found");
    if (watch->hold_found) watch->found = GST_DISCOVERER_INFO(g_object_ref(found));
  }
  return found;
}

GstDiscovererResult gst_discoverer_info_get_result(const GstDiscovererInfo *found) {
  const Discovery_Watch *const watch = Discovery_Watch::current;
  if (watch != nullptr && watch->change_result)
    return static_cast<GstDiscovererResult>(watch->result);
  return replaced_function(gst_discoverer_info_get_result, __func__)(found);
}

GList *gst_discoverer_info_get_video_streams(GstDiscovererInfo *found) {
  return note_list("video",
                   replaced_function(gst_discoverer_info_get_video_streams, __func__)(found));
}

GList *gst_discoverer_info_get_audio_streams(GstDiscovererInfo *found) {
  return note_list("audio",
                   replaced_function(gst_discoverer_info_get_audio_streams, __func__)(found));
}

void gst_discoverer_stream_info_list_free(GList *streams) {
  if (Discovery_Watch *const watch = Discovery_Watch::current; watch != nullptr)
    watch->lists.erase(std::remove(watch->lists.begin(), watch->lists.end(), streams),
                       watch->lists.end());
  replaced_function(gst_discoverer_stream_info_list_free, __func__)(streams);
}

GstCaps *gst_discoverer_stream_info_get_caps(GstDiscovererStreamInfo *stream) {
  Discovery_Watch *const watch = Discovery_Watch::current;
  if (watch != nullptr && watch->without_caps > 0) {
    --watch->without_caps;
    return nullptr;
  }
  return replaced_function(gst_discoverer_stream_info_get_caps, __func__)(stream);
}
}
