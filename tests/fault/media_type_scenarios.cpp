// Media types and selection.

#include "log_watch.h"
#include "scenario.h"

namespace kel::tavren::tests {

using capture::Media_Helper;

namespace {

Call choose_proxies(const Caps &caps) {
  Call call{kept_factories(), [caps] {
              const auto names =
                  disturbed([&] { return Media_Helper::select_proxy_elements(caps.get()); });
              return names.first + ", " + names.second;
            }};
  call.involved.emplace_back("caps", caps);
  return call;
}

Call classify(const Caps &caps) {
  return {involve(caps), [caps] {
            const Allowed_Log no_structure("structure != NULL");
            return number_from([&] { return Media_Helper::get_media_type(caps.get()); });
          }};
}

}  // namespace

std::vector<Scenario> media_type_scenarios() {
  return {
      {"get_media_type", "video", [] { return classify(make_caps("video/x-h264, width=640")); },
       Trait::CALLS_VARY},
      {"get_media_type", "metadata",
       [] { return classify(make_caps("application/x-rtp, encoding-name=VND.ONVIF.METADATA")); },
       Trait::CALLS_VARY},
      {"get_media_type", "unknown", [] { return classify(make_caps("video/x-h265")); }},
      {"get_media_type", "empty", [] { return classify(make_caps("EMPTY")); }},
      {"get_media_type", "no caps", [] { return classify(nullptr); }},
      {"get_media_type_string", "a kind",
       [] {
         return alone([] { return Media_Helper::get_media_type_string(capture::RTP_METADATA); });
       }},
      {"get_media_type_string", "no kind",
       [] { return alone([] { return Media_Helper::get_media_type_string(capture::UNKNOWN); }); }},
      {"is_video", "video",
       [] {
         return Call{{}, [] {
                       return number_from(
                           [] { return Media_Helper::is_video(capture::VIDEO_RAW, true); });
                     }};
       }},
      {"is_audio", "audio",
       [] {
         return Call{{}, [] {
                       return number_from(
                           [] { return Media_Helper::is_audio(capture::MULAW, false); });
                     }};
       }},
      {"select_muxer", "known",
       [] {
         return Call{{}, [] {
                       const std::string file = "/var/recordings/camera.mkv";
                       return disturbed([&] { return Media_Helper::select_muxer(file); });
                     }};
       }},
      {"select_muxer", "unknown",
       [] {
         return Call{{}, [] {
                       const std::string file = "/var/recordings/camera.an_extension_of_length";
                       return disturbed([&] { return Media_Helper::select_muxer(file); });
                     }};
       }},
      {"select_demuxer", "known",
       [] {
         return Call{{}, [] {
                       const std::string file = "/var/recordings/camera.mkv";
                       return disturbed([&] { return Media_Helper::select_demuxer(file); });
                     }};
       }},
      {"select_demuxer", "unknown",
       [] { return alone([] { return Media_Helper::select_demuxer(""); }); }},
      {"select_parser", "known",
       [] { return alone([] { return Media_Helper::select_parser(capture::MPEG_VIDEO); }); }},
      {"select_parser", "unknown",
       [] { return alone([] { return Media_Helper::select_parser(capture::RTP); }); }},
      {"select_decoder", "known",
       [] { return alone([] { return Media_Helper::select_decoder(capture::H264); }); }},
      {"select_decoder", "unknown",
       [] { return alone([] { return Media_Helper::select_decoder(capture::MPEG_AUDIO); }); }},
      {"select_payloader", "known",
       [] { return alone([] { return Media_Helper::select_payloader(capture::MULAW); }); }},
      {"select_payloader", "unknown",
       [] { return alone([] { return Media_Helper::select_payloader(capture::AUDIO_RAW); }); }},
      {"select_video_rate", "known",
       [] { return alone([] { return Media_Helper::select_video_rate(capture::H264); }); }},
      {"select_video_rate", "unknown",
       [] { return alone([] { return Media_Helper::select_video_rate(capture::MULAW); }); }},
      {"select_proxy_elements", "the first pair",
       [] {
         const Caps caps =
             make_caps("application/x-rtp, media=video, clock-rate=90000, encoding-name=H264");
         return choose_proxies(caps);
       }},
      {"select_proxy_elements", "the last pair",
       [] {
         const Caps caps =
             make_caps("application/x-rtp, media=audio, clock-rate=8000, "
                       "encoding-name=MPEG4-GENERIC, mode=AAC-hbr, sizelength=(string)13");
         return choose_proxies(caps);
       }},
      {"select_proxy_elements", "no pair", [] { return choose_proxies(make_caps("video/x-raw")); }},
  };
}

}  // namespace kel::tavren::tests
