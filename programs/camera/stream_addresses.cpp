#include "stream_addresses.h"

#include <memory>

#include <gst/gst.h>
#include <tavren/handles/emancipator.h>

namespace kel::tavren::programs {

void Stream_Addresses::note_answer(const GstRTSPMessage *request, const GstRTSPMessage *answer) {
  if (request->type_data.request.method != GST_RTSP_DESCRIBE) return;
  gchar *base = nullptr;
  has_base_ =
      gst_rtsp_message_get_header(answer, GST_RTSP_HDR_CONTENT_BASE, &base, 0) == GST_RTSP_OK;
  description_ = request->type_data.request.uri;
}

void Stream_Addresses::note_description(const GstSDPMessage *description) {
  appended_.clear();
  substitutes_.clear();
  const char *const session = gst_sdp_message_get_attribute_val(description, "control");
  if (has_base_ || (session != nullptr && gst_uri_is_valid(session))) return;
  for (guint i = 0; i < gst_sdp_message_medias_len(description); ++i) {
    const GstSDPMedia *const media = gst_sdp_message_get_media(description, i);
    const char *const control = gst_sdp_media_get_attribute_val(media, "control");
    if (control != nullptr) add(control);
  }
}

void Stream_Addresses::add(const std::string &control) {
  if (description_.empty() || control.empty() || control == "*" ||
      gst_uri_is_valid(control.c_str()))
    return;
  const std::unique_ptr<char, Emancipator<char>> resolved(
      gst_uri_join_strings(description_.c_str(), control.c_str()));
  if (!resolved) return;
  const bool has_slash = description_.back() == '/' || control.front() == '/';
  appended_[resolved.get()] = description_ + (has_slash ? "" : "/") + control;
}

// If the camera does not find the appended address, rtspsrc assumes that the resolved one failed
// and requests the appended one. The resolved one, which has not been sent yet, is then sent
// instead.
void Stream_Addresses::rewrite(GstRTSPMessage *request) {
  gchar *&uri = request->type_data.request.uri;
  if (const auto found = appended_.find(uri); found != appended_.end()) {
    substitutes_[found->first] = found->second;
    substitutes_[found->second] = found->first;
  }
  const auto substitute = substitutes_.find(uri);
  if (substitute == substitutes_.end()) return;
  g_free(uri);
  uri = g_strdup(substitute->second.c_str());
}

}  // namespace kel::tavren::programs
