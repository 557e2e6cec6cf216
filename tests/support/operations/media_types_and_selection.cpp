// Media types, selection of elements and discovery.

#include "operation_families.h"

namespace kel::tavren::tests {
namespace {

// A few bytes of mu-law in a WAVE file.
constexpr const char *media_uri = "data:audio/x-wav;base64,UklGRiwAAABXQVZFZm10IBAAAAAHAAEAQB8AAEAf"
                                  "AAABAAgAZGF0YQgAAAD//////////w==";

void classify_media(const Scene &scene) {
  require(Media_Helper::get_media_type(scene.jpeg.get()) == capture::JPEG, "not JPEG");
  require(Media_Helper::get_media_type(scene.raw.get()) == capture::VIDEO_RAW, "not raw video");
  require(Media_Helper::get_media_type(scene.rtp.get()) == capture::RTP, "not RTP");
  require(Media_Helper::get_media_type_string(capture::MULAW) == "MULAW", "another name");
  require(Media_Helper::is_video(capture::JPEG, false), "no video");
  require(!Media_Helper::is_audio(capture::RTP, true), "audio");
}

void select_elements(const Scene &) {
  require(Media_Helper::select_muxer("/recordings/a.mp4") == "mp4mux", "another muxer");
  require(Media_Helper::select_demuxer("a.mkv") == "matroskademux", "another demuxer");
  require(Media_Helper::select_parser(capture::H264) == "h264parse", "another parser");
  require(Media_Helper::select_decoder(capture::JPEG) == "jpegdec", "another decoder");
  require(Media_Helper::select_payloader(capture::MULAW) == "rtppcmupay", "another payloader");
  require(Media_Helper::select_video_rate(capture::JPEG) == "identity", "another frame rate");
}

void select_proxies(const Scene &scene) {
  require(Media_Helper::select_proxy_elements(scene.rtp.get()) ==
              std::pair<std::string, std::string>("rtppcmudepay", "rtppcmupay"),
          "other proxies");
}

void discover(const Scene &) {
  const std::unique_ptr<capture::Media_Info> info =
      Media_Helper::get_media_info(media_uri, 30 * GST_SECOND);
  require(!info->audio_caps.empty() && info->video_caps.empty(), "not an audio file");
  require(Media_Helper::get_media_type(info->audio_caps.at(0).get()) == capture::MULAW,
          "not mu-law");
}

}  // namespace

// clang-format off
std::vector<Operation> media_types_and_selection_operations() {
  return {
    {"media kinds", Operation::SHARED, {}, classify_media},
    {"get_media_type of nothing", Operation::SHARED, {TEC::NOT_CAPS, {"caps in get_media_type"}}, [](const Scene &) { Media_Helper::get_media_type(nullptr); }},
    {"element selection", Operation::SHARED, {}, select_elements},
    {"select_muxer in vain", Operation::SHARED, {TEC::KEY_NOT_FOUND, {"Unknown file extension : could not create muxer"}}, [](const Scene &) { Media_Helper::select_muxer("a.MKV"); }},
    {"select_demuxer in vain", Operation::SHARED, {TEC::KEY_NOT_FOUND, {"Unknown file extension : could not create demuxer"}}, [](const Scene &) { Media_Helper::select_demuxer("a.mp4"); }},
    {"select_parser in vain", Operation::SHARED, {TEC::KEY_NOT_FOUND, {"Unknown video format : could not create video parser"}}, [](const Scene &) { Media_Helper::select_parser(capture::RTP); }},
    {"select_decoder in vain", Operation::SHARED, {TEC::KEY_NOT_FOUND, {"Unknown video format : could not create video parser"}}, [](const Scene &) { Media_Helper::select_decoder(capture::UNKNOWN); }},
    {"select_payloader in vain", Operation::SHARED, {TEC::KEY_NOT_FOUND, {"Unsupported format : could not select payloader"}}, [](const Scene &) { Media_Helper::select_payloader(capture::VIDEO_RAW); }},
    {"select_video_rate in vain", Operation::SHARED, {TEC::KEY_NOT_FOUND, {"Unknown video format : could not create video parser"}}, [](const Scene &) { Media_Helper::select_video_rate(capture::MULAW); }},
    {"select_proxy_elements", Operation::SHARED, {}, select_proxies},
    {"select_proxy_elements in vain", Operation::SHARED, {TEC::NO_PROXY_ELEMENTS_FOR_CAPS}, [](const Scene &scene) { Media_Helper::select_proxy_elements(scene.raw.get()); }},
    {"get_media_info", Operation::RARE, {}, discover},
    {"get_media_info of no file", Operation::RARE, {TEC::DISCOVERER_RETURNED_ERROR, {"GST_DISCOVERER_ERROR"}}, [](const Scene &) { Media_Helper::get_media_info("file:///nowhere", 30 * GST_SECOND); }},
    {"get_media_info without timeout", Operation::OWN, {TEC::DISCOVERER_CREATION_FAILED}, [](const Scene &) { Media_Helper::get_media_info("file:///nowhere", GST_CLOCK_TIME_NONE); }},
  };
}
// clang-format on

}  // namespace kel::tavren::tests
