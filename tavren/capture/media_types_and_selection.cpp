#include <boost/filesystem/path.hpp>

#include <tavren/capture/argument_checks.h>
#include <tavren/capture/media_helper.h>
#include <tavren/capture/message_text.h>
#include <tavren/capture/text_table.h>

namespace kel::tavren::capture {

namespace {

using Caps = boost::intrusive_ptr<GstCaps>;

// Returns the extension of a file name, including the dot. ".mkv" is an extension without a name.
// Boost's extension() differs for such names in newer versions, and terminates the process when
// memory is exhausted in older ones. "." and ".." return ".", which is in no table.
std::string extension_of(const std::string &filename) {
  const boost::filesystem::path path(filename);
  const boost::filesystem::path::string_type &whole = path.native();
#ifdef BOOST_FILESYSTEM_WINDOWS_API
  const std::size_t separator = whole.find_last_of(L"/\\");
#else
  const std::size_t separator = whole.find_last_of('/');
#endif
  const auto name = whole.substr(separator == std::string::npos ? 0 : separator + 1);
  const std::size_t dot = name.find_last_of('.');
  if (dot == std::string::npos) return {};
  return boost::filesystem::path(name.substr(dot)).string();
}

// Appends the caps of every stream that has caps, with a reference each.
void collect_stream_caps(GList *streams, std::vector<Caps> &stream_caps) {
  for (const GList *node = streams; node != nullptr; node = node->next) {
    Caps caps(gst_discoverer_stream_info_get_caps(GST_DISCOVERER_STREAM_INFO(node->data)), false);
    if (caps) stream_caps.push_back(std::move(caps));
  }
}

}  // namespace

MediaType Media_Helper::get_media_type(GstCaps *caps) {
  check_caps(caps, "caps in get_media_type");
  if (gst_caps_is_empty(caps)) return UNKNOWN;

  // clang-format off
  const struct {
    const char *name;
    MediaType type;
  } rows[] = {
      {"image/jpeg",        JPEG},
      {"video/x-h264",      H264},
      {"audio/mpeg",        MPEG_AUDIO},
      {"video/mpeg",        MPEG_VIDEO},
      {"video/x-divx",      MPEG_VIDEO},
      {"video/x-raw",       VIDEO_RAW},
      {"audio/x-mulaw",     MULAW},
      {"audio/x-raw",       AUDIO_RAW},
      {"application/x-rtp", RTP},
  };
  // clang-format on
  std::map<Caps, MediaType> templates;
  for (const auto &row : rows)
    templates.emplace(Caps(gst_caps_new_empty_simple(row.name), false), row.type);

  for (const auto &[template_caps, type] : templates) {
    if (!gst_caps_is_subset(caps, template_caps.get())) continue;
    // GCOVR_EXCL_BR_START: the comparison cannot throw
    if (type == RTP && get_encoding_name_from_caps(caps) == "VND.ONVIF.METADATA")
      return RTP_METADATA;
    // GCOVR_EXCL_BR_STOP
    return type;
  }
  return UNKNOWN;
}

std::string Media_Helper::get_media_type_string(MediaType type) {
  // clang-format off
  const auto table = make_text_table<MediaType>({
      {JPEG,         "JPEG"},
      {H264,         "H264"},
      {MPEG_VIDEO,   "MPEG_VIDEO"},
      {MPEG_AUDIO,   "MPEG_AUDIO"},
      {RTP,          "RTP"},
      {RTP_METADATA, "RTP_METADATA"},
      {VIDEO_RAW,    "VIDEO_RAW"},
      {MULAW,        "MULAW"},
      {AUDIO_RAW,    "AUDIO_RAW"},
  });
  // clang-format on
  return text_or(table, type, "UNKNOWN");
}

bool Media_Helper::is_video(MediaType type, bool include_raw) noexcept {
  return type == JPEG || type == H264 || type == MPEG_VIDEO || (type == VIDEO_RAW && include_raw);
}

bool Media_Helper::is_audio(MediaType type, bool include_raw) noexcept {
  return type == MPEG_AUDIO || type == MULAW || (type == AUDIO_RAW && include_raw);
}

std::string Media_Helper::select_muxer(const std::string &filename) {
  // clang-format off
  const auto table = make_text_table<std::string>({
      {".mkv", "matroskamux"},
      {".mp4", "mp4mux"},
      {".avi", "avimux"},
      {".mov", "qtmux"},
  });
  // clang-format on
  return string_from_map_or_throw_(extension_of(filename), table,
                                   "Unknown file extension : could not create muxer");
}

std::string Media_Helper::select_demuxer(const std::string &filename) {
  const auto table = make_text_table<std::string>({
      {".mkv", "matroskademux"},
  });
  return string_from_map_or_throw_(extension_of(filename), table,
                                   "Unknown file extension : could not create demuxer");
}

std::string Media_Helper::select_parser(MediaType type) {
  // clang-format off
  const auto table = make_text_table<MediaType>({
      {JPEG,       "identity"},
      {H264,       "h264parse"},
      {MPEG_AUDIO, "aacparse"},
      {MPEG_VIDEO, "mpeg4videoparse"},
      {MULAW,      "identity"},
  });
  // clang-format on
  return string_from_map_or_throw_(type, table,
                                   "Unknown video format : could not create video parser");
}

std::string Media_Helper::select_decoder(MediaType type) {
  // clang-format off
  const auto table = make_text_table<MediaType>({
      {JPEG,       "jpegdec"},
      {H264,       "avdec_h264"},
      {MPEG_VIDEO, "avdec_mpeg4"},
      {MULAW,      "mulawdec"},
  });
  // clang-format on
  return string_from_map_or_throw_(type, table,
                                   "Unknown video format : could not create video parser");
}

std::string Media_Helper::select_payloader(MediaType type) {
  // clang-format off
  const auto table = make_text_table<MediaType>({
      {JPEG,       "rtpjpegpay"},
      {H264,       "rtph264pay"},
      {MPEG_AUDIO, "rtpmp4apay"},
      {MPEG_VIDEO, "rtpmp4vpay"},
      {MULAW,      "rtppcmupay"},
  });
  // clang-format on
  return string_from_map_or_throw_(type, table, "Unsupported format : could not select payloader");
}

std::string Media_Helper::select_video_rate(MediaType type) {
  // clang-format off
  const auto table = make_text_table<MediaType>({
      {JPEG,       "identity"},
      {H264,       "tavrenvideorate"},
      {MPEG_VIDEO, "identity"},
  });
  // clang-format on
  return string_from_map_or_throw_(type, table,
                                   "Unknown video format : could not create video parser");
}

std::pair<std::string, std::string> Media_Helper::select_proxy_elements(const GstCaps *caps) {
  // clang-format off
  std::pair<std::string, std::string> candidates[] = {
      {"rtph264depay", "rtph264pay"},
      {"rtpjpegdepay", "rtpjpegpay"},
      {"rtppcmudepay", "rtppcmupay"},
      {"rtpmp4adepay", "rtpmp4apay"},
      {"rtpmp4vdepay", "rtpmp4vpay"},
      {"rtpmp4gdepay", "rtpmp4gpay"},
  };  // GCOVR_EXCL_BR_LINE: the strings are too short to allocate, so none throws
  // clang-format on
  for (auto &candidate : candidates) {
    // The reference is kept: the registry's factories live as long as the process.
    GstElementFactory *const depayloader = gst_element_factory_find_or_throw(candidate.first);
    if (gst_element_factory_can_sink_all_caps(depayloader, caps)) return std::move(candidate);
  }
  throw Error(TEC::NO_PROXY_ELEMENTS_FOR_CAPS,
              "Failed to select proxy elements: Unsupported caps.");
}

std::unique_ptr<Media_Info> Media_Helper::get_media_info(const std::string &uri,
                                                         const GstClockTime &timeout) {
  GstDiscoverer *const discoverer = gst_discoverer_new(timeout, nullptr);
  if (discoverer == nullptr)
    throw Error(TEC::DISCOVERER_CREATION_FAILED, "Error creating discoverer in get_media_info");
  Scope_Exit_Guard drop_discoverer;
  arm(drop_discoverer, [&discoverer] { g_object_unref(discoverer); });

  GstDiscovererInfo *const found = gst_discoverer_discover_uri(discoverer, uri.c_str(), nullptr);
  if (found == nullptr)
    throw Error(TEC::DISCOVERY_FAILED, "Error discovering media in get_media_info");
  Scope_Exit_Guard drop_found;
  arm(drop_found, [&found] { g_object_unref(found); });

  const GstDiscovererResult result = gst_discoverer_info_get_result(found);
  if (result != GST_DISCOVERER_OK)
    throw Error(TEC::DISCOVERER_RETURNED_ERROR,
                "Discoverer returned error: " + gst_discoverer_result_to_string(result));

  using Streams = std::unique_ptr<GList, decltype(&gst_discoverer_stream_info_list_free)>;
  const auto owned = [](GList *streams) {
    return Streams(streams, gst_discoverer_stream_info_list_free);
  };
  auto info = std::make_unique<Media_Info>();
  info->uri = uri;
  collect_stream_caps(owned(gst_discoverer_info_get_video_streams(found)).get(), info->video_caps);
  collect_stream_caps(owned(gst_discoverer_info_get_audio_streams(found)).get(), info->audio_caps);
  info->duration = gst_discoverer_info_get_duration(found);
  return info;
}

std::string Media_Helper::gst_discoverer_result_to_string(const GstDiscovererResult &result) {
  // clang-format off
  const auto table = make_text_table<GstDiscovererResult>({
      {GST_DISCOVERER_OK,              "GST_DISCOVERER_OK"},
      {GST_DISCOVERER_URI_INVALID,     "GST_DISCOVERER_URI_INVALID"},
      {GST_DISCOVERER_ERROR,           "GST_DISCOVERER_ERROR"},
      {GST_DISCOVERER_TIMEOUT,         "GST_DISCOVERER_TIMEOUT"},
      {GST_DISCOVERER_BUSY,            "GST_DISCOVERER_BUSY"},
      {GST_DISCOVERER_MISSING_PLUGINS, "GST_DISCOVERER_MISSING_PLUGINS"},
  });
  // clang-format on
  return text_or(table, result, "UNKNOWN");
}

}  // namespace kel::tavren::capture
