#include "keep_alive.h"

#include <algorithm>
#include <cstring>

namespace kel::tavren::programs {

namespace {

constexpr gint64 default_timeout = 60;  // s, used if the session does not specify one

bool is_announced(const GstRTSPMessage *answer, GstRTSPMethod method) {
  gchar *methods = nullptr;
  return gst_rtsp_message_get_header(answer, GST_RTSP_HDR_PUBLIC, &methods, 0) == GST_RTSP_OK &&
         (gst_rtsp_options_from_text(methods) & method) != 0;
}

// Parses the timeout of a session header such as 12345678;timeout=60.
gint64 timeout_in(const char *session) {
  const char *const timeout = std::strstr(session, "timeout=");
  if (timeout == nullptr) return default_timeout;
  const gint64 seconds = g_ascii_strtoll(timeout + std::strlen("timeout="), nullptr, 10);
  return std::clamp<gint64>(seconds, 2, 2 * default_timeout);
}

}  // namespace

void Keep_Alive::note_answer(const GstRTSPMessage *request, const GstRTSPMessage *answer) {
  const auto &line = request->type_data.request;
  if (line.method == GST_RTSP_OPTIONS && is_announced(answer, GST_RTSP_GET_PARAMETER))
    request_.method = GST_RTSP_GET_PARAMETER;
  if (line.method == GST_RTSP_SETUP) note_timeout(answer);
  if (line.method != GST_RTSP_PLAY) return;
  request_.address = line.uri;
  next_request_ = g_get_monotonic_time() + interval_;
}

void Keep_Alive::note_timeout(const GstRTSPMessage *answer) {
  gchar *session = nullptr;
  if (gst_rtsp_message_get_header(answer, GST_RTSP_HDR_SESSION, &session, 0) != GST_RTSP_OK) return;
  interval_ = timeout_in(session) * G_TIME_SPAN_SECOND / 2;
}

std::optional<Keep_Alive::Request> Keep_Alive::take_request() {
  const gint64 now = g_get_monotonic_time();
  if (request_.address.empty() || interval_ == 0 || now < next_request_) return std::nullopt;
  next_request_ = now + interval_;
  return request_;
}

}  // namespace kel::tavren::programs
