#include "camera_streams.h"

#include <tuple>

#include <tavren/capture/media_helper.h>

namespace kel::tavren::programs {

using capture::Media_Helper;

boost::intrusive_ptr<GstCaps> offered_rtp_caps(GstCaps *offered) {
  boost::intrusive_ptr<GstCaps> caps(gst_caps_copy(offered), false);
  gst_structure_set_name(gst_caps_get_structure(caps.get(), 0), "application/x-rtp");
  return caps;
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
