#include "password_challenges.h"

#include <memory>
#include <string>
#include <vector>

#include <glib.h>
#include <tavren/handles/emancipator.h>

namespace kel::tavren::programs {

namespace {

bool starts_with_digest(const std::string &challenge) {
  return challenge.rfind("digest", 0) == 0;
}

// Returns whether a Digest challenge, in lower case, can be met.
bool is_supported(const std::string &challenge) {
  const std::string parameter = "algorithm=";
  const auto start = challenge.find(parameter);
  if (start == std::string::npos) return true;
  const auto begin = challenge.find_first_not_of("\" ", start + parameter.size());
  if (begin == std::string::npos) return true;
  return challenge.substr(begin, challenge.find_first_of("\", ", begin) - begin) == "md5";
}

}  // namespace

void remove_unsupported_challenges(GstRTSPMessage *answer) {
  std::vector<int> unsupported;
  bool supports_any = false;
  gchar *header = nullptr;
  for (int index = 0; gst_rtsp_message_get_header(answer, GST_RTSP_HDR_WWW_AUTHENTICATE, &header,
                                                  index) == GST_RTSP_OK;
       ++index) {
    const std::unique_ptr<char, Emancipator<char>> lower(g_ascii_strdown(header, -1));
    const std::string challenge = lower.get();
    if (!starts_with_digest(challenge)) continue;
    if (is_supported(challenge))
      supports_any = true;
    else
      unsupported.push_back(index);
  }
  if (!supports_any) return;
  for (auto index = unsupported.rbegin(); index != unsupported.rend(); ++index)
    gst_rtsp_message_remove_header(answer, GST_RTSP_HDR_WWW_AUTHENTICATE, *index);
}

}  // namespace kel::tavren::programs
