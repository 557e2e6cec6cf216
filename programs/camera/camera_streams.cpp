#include "camera_streams.h"

#include <tuple>

#include <gst/rtp/gstrtppayloads.h>
#include <tavren/capture/media_helper.h>

namespace kel::tavren::programs {

using capture::Media_Helper;

boost::intrusive_ptr<GstCaps> offered_rtp_caps(GstCaps *offered) {
  boost::intrusive_ptr<GstCaps> caps(gst_caps_copy(offered), false);
  gst_structure_set_name(gst_caps_get_structure(caps.get(), 0), "application/x-rtp");
  return caps;
}

std::string encoding_name_of(GstCaps *rtp_caps) {
  std::string name = Media_Helper::get_encoding_name_from_caps(rtp_caps);
  if (!name.empty()) return name;
  int type = -1;
  gst_structure_get_int(gst_caps_get_structure(rtp_caps, 0), "payload", &type);
  const bool is_static = type >= 0 && GST_RTP_PAYLOAD_IS_DYNAMIC(type) == 0;
  const GstRTPPayloadInfo *const info =
      is_static ? gst_rtp_payload_info_for_pt(static_cast<guint8>(type)) : nullptr;
  return info != nullptr ? info->encoding_name : "payload type " + std::to_string(type);
}

Camera_Stream describe_stream(guint number, GstCaps *offered) {
  Camera_Stream stream{number, offered_rtp_caps(offered), {}, {}, {}};
  GstCaps *const caps = stream.caps.get();
  if (Media_Helper::get_media_type(caps) == capture::RTP_METADATA) {
    stream.obstacle = "metadata is no media";
    return stream;
  }
  try {
    std::tie(stream.depayloader, stream.payloader) = Media_Helper::select_proxy_elements(caps);
  } catch (const Backend_Error<std::runtime_error> &error) {
    if (error.code() != TEC::NO_PROXY_ELEMENTS_FOR_CAPS) throw;
    stream.obstacle = error.what();
  }
  return stream;
}

}  // namespace kel::tavren::programs
