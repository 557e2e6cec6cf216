#include "password_challenges.h"

#include <memory>
#include <string>
#include <vector>

#include <glib.h>
#include <tavren/handles/emancipator.h>

namespace kel::tavren::programs {

namespace {

bool is_supported(const char *challenge) {
  const std::unique_ptr<char, Emancipator<char>> lower(g_ascii_strdown(challenge, -1));
  const std::string text = lower.get();
  const std::string parameter = "algorithm=";
  const auto start = text.find(parameter);
  if (text.rfind("digest", 0) != 0 || start == std::string::npos) return true;
  const auto begin = text.find_first_not_of("\" ", start + parameter.size());
  if (begin == std::string::npos) return true;
  return text.substr(begin, text.find_first_of("\", ", begin) - begin) == "md5";
}

}  // namespace

void remove_unsupported_challenges(GstRTSPMessage *answer) {
  std::vector<int> unsupported;
  gchar *challenge = nullptr;
  int count = 0;
  for (; gst_rtsp_message_get_header(answer, GST_RTSP_HDR_WWW_AUTHENTICATE, &challenge, count) ==
         GST_RTSP_OK;
       ++count)
    if (!is_supported(challenge)) unsupported.push_back(count);
  if (static_cast<int>(unsupported.size()) == count) return;
  for (auto index = unsupported.rbegin(); index != unsupported.rend(); ++index)
    gst_rtsp_message_remove_header(answer, GST_RTSP_HDR_WWW_AUTHENTICATE, *index);
}

}  // namespace kel::tavren::programs
