// Discovery of media.

#include "log_watch.h"
#include "media_files.h"
#include "scenario.h"

namespace kel::tavren::tests {

using capture::Media_Helper;

namespace {

std::string discover(const std::string &uri, GstClockTime timeout) {
  const auto info = disturbed([&] { return Media_Helper::get_media_info(uri, timeout); });
  return info->uri.substr(info->uri.rfind('/') + 1) + ", " + std::to_string(info->duration) +
         " ns, " + std::to_string(info->video_caps.size()) + " video, " +
         std::to_string(info->audio_caps.size()) + " audio";
}

// Returns the URI of a file with two streams, which is recorded on first use.
std::string media_uri() {
  static const Media_Folder folder;
  static const std::string uri = [] {
    folder.record_video_and_audio("streams.mkv");
    return folder.uri("streams.mkv");
  }();
  return uri;
}

}  // namespace

std::vector<Scenario> discovery_scenarios() {
  return {
      {"get_media_info", "two streams",
       [] {
         const std::string uri = media_uri();
         return Call{{}, [uri] { return discover(uri, 10 * GST_SECOND); }};
       }},
      {"get_media_info", "no such file",
       [] {
         return Call{{}, [] { return discover("file:///there/is/no/such/file", 10 * GST_SECOND); }};
       }},
      {"get_media_info", "a timeout that is none",
       [] {
         return Call{{}, [] {
                       const Allowed_Log invalid("GST_CLOCK_TIME_IS_VALID");
                       return discover("file:///there/is/no/such/file", GST_CLOCK_TIME_NONE);
                     }};
       }},
      {"gst_discoverer_result_to_string", "known",
       [] {
         return alone([] {
           return Media_Helper::gst_discoverer_result_to_string(GST_DISCOVERER_MISSING_PLUGINS);
         });
       }},
      {"gst_discoverer_result_to_string", "unknown",
       [] {
         return alone([] {
           return Media_Helper::gst_discoverer_result_to_string(value<GstDiscovererResult>(99));
         });
       }},
  };
}

}  // namespace kel::tavren::tests
