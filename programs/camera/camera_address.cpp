#include "camera_address.h"

#include <memory>

#include <gst/rtsp/rtsp.h>
#include <tavren/handles/emancipator.h>

#include "command_line/program.h"

namespace kel::tavren::programs {

namespace {

using Url = std::unique_ptr<GstRTSPUrl, decltype(&gst_rtsp_url_free)>;

// The user information in a URI: the text between "scheme://" and "@", by position.
struct User_Info {
  std::size_t begin = 0;
  std::size_t end = 0;
  bool present = false;
};

bool is_port(const std::string &text) {
  return text.find_first_not_of("0123456789") == std::string::npos;
}

// A password may contain "@", so the last one is the separator. It may also contain "/", although
// URIs do not allow that; the text after the last ":" is then not a port number.
User_Info find_user_info(const std::string &uri) {
  const std::size_t scheme = uri.find("://");
  if (scheme == std::string::npos) return {};
  const std::size_t begin = scheme + 3;
  std::string authority = uri.substr(begin, uri.find('/', begin) - begin);
  const std::size_t colon = authority.rfind(':');
  if (authority.find('@') == std::string::npos && authority.find(']') == std::string::npos &&
      colon != std::string::npos && !is_port(authority.substr(colon + 1)))
    authority = uri.substr(begin, uri.find('?', begin) - begin);
  const std::size_t at = authority.rfind('@');
  if (at == std::string::npos) return {};
  return {begin, begin + at, true};
}

// Quotes an address in a message without its password. If the password cannot be located, omits the
// address.
std::string quoted(const std::string &uri) {
  const std::string concealed = conceal_password(uri);
  const bool may_hold_password = concealed == uri && uri.find('@') != std::string::npos;
  return may_hold_password ? "it does not begin with rtsp://" : '"' + concealed + '"';
}

// Decodes percent-encoded characters. Text with an invalid escape is returned unchanged.
std::string unescape(const std::string &text) {
  const std::unique_ptr<char, Emancipator<char>> unescaped(
      g_uri_unescape_string(text.c_str(), nullptr));
  return unescaped ? unescaped.get() : text;
}

Transport requested_transport(GstRTSPLowerTrans transports) {
  if ((transports & (GST_RTSP_LOWER_TRANS_UDP | GST_RTSP_LOWER_TRANS_UDP_MCAST)) == 0)
    return Transport::tcp;
  return (transports & GST_RTSP_LOWER_TRANS_TCP) != 0 ? Transport::automatic : Transport::udp;
}

}  // namespace

Camera_Address parse_camera_address(const std::string &uri) {
  Camera_Address address;
  address.location = uri;
  if (const User_Info info = find_user_info(uri); info.present) {
    const std::string text = uri.substr(info.begin, info.end - info.begin);
    const std::size_t colon = text.find(':');
    address.user = unescape(text.substr(0, colon));
    if (colon != std::string::npos) address.password = unescape(text.substr(colon + 1));
    address.location.erase(info.begin, info.end + 1 - info.begin);
  }

  GstRTSPUrl *url = nullptr;
  if (gst_rtsp_url_parse(address.location.c_str(), &url) != GST_RTSP_OK)
    throw Bus_Error(GST_RESOURCE_ERROR_NOT_FOUND, "not the address of a camera: " + quoted(uri));
  const Url owned(url, gst_rtsp_url_free);
  if (url->host == nullptr || *url->host == '\0')
    throw Bus_Error(GST_RESOURCE_ERROR_NOT_FOUND,
                    "the address of the camera names no host: " + quoted(uri));
  address.transport = requested_transport(url->transports);
  return address;
}

std::string conceal_password(const std::string &uri) {
  const User_Info info = find_user_info(uri);
  const std::size_t colon = uri.find(':', info.begin);
  if (!info.present || colon == std::string::npos || colon >= info.end) return uri;
  return uri.substr(0, colon + 1) + "***" + uri.substr(info.end);
}

}  // namespace kel::tavren::programs
