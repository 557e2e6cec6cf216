#include "stream_setup.h"

#include <gst/rtsp/gstrtspdefs.h>
#include <gst/sdp/gstsdpmessage.h>
#include <tavren/capture/media_helper.h>

#include "description_repair.h"
#include "rtsp_extension.h"

namespace kel::tavren::programs {

using capture::Media_Helper;

namespace {

// Returns whether rtspsrc ends the session because of the status. It authenticates, or tries
// another transport, because of the others.
bool is_refusal(guint status) {
  return status >= GST_RTSP_STS_BAD_REQUEST && status != GST_RTSP_STS_UNAUTHORIZED &&
         status != GST_RTSP_STS_UNSUPPORTED_TRANSPORT;
}

// GStreamer 1.18 also sets up streams that were not selected.
bool can_omit_streams() {
  guint major = 0;
  guint minor = 0;
  guint micro = 0;
  guint nano = 0;
  gst_version(&major, &minor, &micro, &nano);
  return major > 1 || minor >= 20;
}

}  // namespace

void Stream_Setup::observe(GstElement *source) {
  Media_Helper::g_signal_connect_or_throw(source, "on-sdp", G_CALLBACK(on_description), this);
  on_setup_response(source, [this](guint status) { note_response(status); });
}

void Stream_Setup::on_description(GstElement *, gpointer description, gpointer setup) noexcept {
  auto &self = *static_cast<Stream_Setup *>(setup);
  const auto *const message = static_cast<const GstSDPMessage *>(description);
  const std::lock_guard lock(self.mutex_);
  self.described_ = 0;
  for (guint i = 0; i < gst_sdp_message_medias_len(message); ++i) {
    const GstSDPMedia *const media = gst_sdp_message_get_media(message, i);
    if (is_video(media) || is_audio(media)) ++self.described_;
  }
}

void Stream_Setup::note_offer(guint number) {
  const std::lock_guard lock(mutex_);
  offered_ = number;
}

void Stream_Setup::note_response(guint status) {
  const std::lock_guard lock(mutex_);
  status_ = status;
}

bool Stream_Setup::add_refused(Refused_Streams &refused) const {
  const std::lock_guard lock(mutex_);
  if (!can_omit_streams() || !is_refusal(status_) || refused.size() + 1 >= described_) return false;
  const char *const text = gst_rtsp_status_as_text(static_cast<GstRTSPStatusCode>(status_));
  return refused
      .emplace(offered_, std::to_string(status_) + ' ' + text + ": the camera refuses the stream")
      .second;
}

}  // namespace kel::tavren::programs
