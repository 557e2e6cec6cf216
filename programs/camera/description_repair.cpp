#include "description_repair.h"

#include <memory>
#include <string>
#include <vector>

#include <glib.h>
#include <tavren/handles/emancipator.h>

namespace kel::tavren::programs {

namespace {

// Medias are accessible only as constants.
std::vector<GstSDPMedia *> medias_of(GstSDPMessage *description) {
  std::vector<GstSDPMedia *> medias;
  for (guint i = 0; i < gst_sdp_message_medias_len(description); ++i)
    medias.push_back(const_cast<GstSDPMedia *>(gst_sdp_message_get_media(description, i)));
  return medias;
}

bool is_sent_by_camera(const GstSDPMedia *media) {
  return gst_sdp_media_get_attribute_val(media, "sendonly") == nullptr &&
         gst_sdp_media_get_attribute_val(media, "inactive") == nullptr;
}

bool ends_with(const std::string &text, const std::string &end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

void repair_protocol(GstSDPMedia *media) {
  const char *const announced = gst_sdp_media_get_proto(media);
  if (announced == nullptr) return;
  const std::unique_ptr<char, Emancipator<char>> upper(g_ascii_strup(announced, -1));
  std::string protocol = upper.get();
  for (const std::string transport : {"/TCP", "/UDP"})
    if (ends_with(protocol, transport)) protocol.resize(protocol.size() - transport.size());
  if (protocol.rfind("RTP/", 0) == 0) gst_sdp_media_set_proto(media, protocol.c_str());
}

}  // namespace

bool is_video(const GstSDPMedia *media) {
  return g_strcmp0(gst_sdp_media_get_media(media), "video") == 0;
}

bool is_audio(const GstSDPMedia *media) {
  return g_strcmp0(gst_sdp_media_get_media(media), "audio") == 0;
}

void repair_description(GstSDPMessage *description) {
  const std::vector<GstSDPMedia *> medias = medias_of(description);
  bool sends_any = false;
  for (GstSDPMedia *const media : medias) {
    repair_protocol(media);
    if ((is_video(media) || is_audio(media)) && is_sent_by_camera(media)) sends_any = true;
  }
  for (GstSDPMedia *const media : medias)
    if (sends_any && !is_video(media) && !is_sent_by_camera(media))
      gst_sdp_media_set_proto(media, "backchannel");
}

}  // namespace kel::tavren::programs
