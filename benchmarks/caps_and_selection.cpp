// Classification and comparison of caps, selection of elements, fitting of resolutions.

#include <cstddef>
#include <cstring>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "depayloaders.h"
#include "library_calls.h"
#include "owned.h"
#include "raw_calls.h"
#include "trial.h"

namespace kel::tavren::benchmarks {

namespace {

using benchmark::DoNotOptimize;

Owned_Caps caps_from(const char *description) {
  return owned(gst_caps_from_string(description));
}

// Typical C code for classifying caps: constant templates, tested in order.
capture::MediaType raw_kind_of(GstCaps *caps) {
  static GstStaticCaps templates[] = {
      GST_STATIC_CAPS("image/jpeg"),        GST_STATIC_CAPS("video/x-h264"),
      GST_STATIC_CAPS("audio/mpeg"),        GST_STATIC_CAPS("video/mpeg"),
      GST_STATIC_CAPS("video/x-divx"),      GST_STATIC_CAPS("video/x-raw"),
      GST_STATIC_CAPS("audio/x-mulaw"),     GST_STATIC_CAPS("audio/x-raw"),
      GST_STATIC_CAPS("application/x-rtp"),
  };
  static constexpr capture::MediaType kinds[] = {
      capture::JPEG,       capture::H264,       capture::MPEG_AUDIO,
      capture::MPEG_VIDEO, capture::MPEG_VIDEO, capture::VIDEO_RAW,
      capture::MULAW,      capture::AUDIO_RAW,  capture::RTP,
  };
  require(GST_IS_CAPS(caps), "the check of caps");
  if (gst_caps_is_empty(caps)) return capture::UNKNOWN;
  for (std::size_t i = 0; i < std::size(templates); ++i) {
    const Owned_Caps wanted = owned(gst_static_caps_get(&templates[i]));
    if (!gst_caps_is_subset(caps, wanted.get())) continue;
    if (kinds[i] != capture::RTP) return kinds[i];
    const char *const name =
        gst_structure_get_string(gst_caps_get_structure(caps, 0), "encoding-name");
    return g_strcmp0(name, "VND.ONVIF.METADATA") == 0 ? capture::RTP_METADATA : capture::RTP;
  }
  return capture::UNKNOWN;
}

void add_classification(Programme &programme) {
  const std::pair<const char *, const char *> kinds[] = {
      {"JPEG", "image/jpeg, width=640, height=480, framerate=25/1"},
      {"H.264", "video/x-h264, stream-format=byte-stream, alignment=au, width=1920, height=1080"},
      {"AAC", "audio/mpeg, mpegversion=4, rate=16000, channels=1"},
      {"MPEG-4 video", "video/mpeg, mpegversion=4, systemstream=false"},
      {"DivX", "video/x-divx, divxversion=5"},
      {"raw video", "video/x-raw, format=I420, width=640, height=480, framerate=25/1"},
      {"mu-law", "audio/x-mulaw, rate=8000, channels=1"},
      {"raw audio", "audio/x-raw, format=S16LE, rate=8000, channels=1, layout=interleaved"},
      {"RTP", "application/x-rtp, media=video, clock-rate=90000, encoding-name=H264"},
      {"RTP metadata",
       "application/x-rtp, media=application, clock-rate=90000, encoding-name=VND.ONVIF.METADATA"},
      {"unknown", "text/x-raw, format=utf8"},
      {"empty", "EMPTY"},
  };
  for (const auto &[kind, description] : kinds) {
    const Owned_Caps caps = caps_from(description);
    const std::string operation = std::string("classification/") + kind;
    programme.add_call(operation, "raw", [caps] { DoNotOptimize(raw_kind_of(caps.get())); });
    programme.add_call(operation, "library",
                       [caps] { DoNotOptimize(Media_Helper::get_media_type(caps.get())); });
  }
}

// The tables as typical C code.
const char *extension_of(const char *filename) {
  const char *const slash = std::strrchr(filename, '/');
  const char *const dot = std::strrchr(slash != nullptr ? slash : filename, '.');
  return dot != nullptr ? dot : "";
}

const char *raw_muxer(const char *filename) {
  const char *const extension = extension_of(filename);
  return std::strcmp(extension, ".mkv") == 0   ? "matroskamux"
         : std::strcmp(extension, ".mp4") == 0 ? "mp4mux"
         : std::strcmp(extension, ".avi") == 0 ? "avimux"
         : std::strcmp(extension, ".mov") == 0 ? "qtmux"
                                               : nullptr;
}

const char *raw_demuxer(const char *filename) {
  return std::strcmp(extension_of(filename), ".mkv") == 0 ? "matroskademux" : nullptr;
}

const char *raw_parser(capture::MediaType kind) {
  switch (kind) {
  case capture::JPEG:
  case capture::MULAW:
    return "identity";
  case capture::H264:
    return "h264parse";
  case capture::MPEG_AUDIO:
    return "aacparse";
  case capture::MPEG_VIDEO:
    return "mpeg4videoparse";
  default:
    return nullptr;
  }
}

const char *raw_decoder(capture::MediaType kind) {
  switch (kind) {
  case capture::JPEG:
    return "jpegdec";
  case capture::H264:
    return "avdec_h264";
  case capture::MPEG_VIDEO:
    return "avdec_mpeg4";
  case capture::MULAW:
    return "mulawdec";
  default:
    return nullptr;
  }
}

const char *raw_payloader(capture::MediaType kind) {
  switch (kind) {
  case capture::JPEG:
    return "rtpjpegpay";
  case capture::H264:
    return "rtph264pay";
  case capture::MPEG_AUDIO:
    return "rtpmp4apay";
  case capture::MPEG_VIDEO:
    return "rtpmp4vpay";
  case capture::MULAW:
    return "rtppcmupay";
  default:
    return nullptr;
  }
}

const char *raw_video_rate(capture::MediaType kind) {
  switch (kind) {
  case capture::JPEG:
  case capture::MPEG_VIDEO:
    return "identity";
  case capture::H264:
    return "tavrenvideorate";
  default:
    return nullptr;
  }
}

// A table lookup, by both implementations. The compiler must not know the key.
template <typename Key, typename Raw, typename Library>
void add_table(Programme &programme, const char *table, Key wanted, Raw raw, Library library) {
  const std::string operation = std::string("selection/") + table;
  programme.add_call(operation, "raw", [raw, wanted]() mutable {
    DoNotOptimize(wanted);
    const char *const selected = raw(wanted);
    require(selected != nullptr, "selecting an element");
  });
  programme.add_call(operation, "library", [library, wanted] { DoNotOptimize(library(wanted)); });
}

void add_selection(Programme &programme) {
  const char *const file = "/recordings/front door.mkv";
  add_table(programme, "muxer", file, raw_muxer, Media_Helper::select_muxer);
  add_table(programme, "demuxer", file, raw_demuxer, Media_Helper::select_demuxer);
  add_table(programme, "parser", capture::H264, raw_parser, Media_Helper::select_parser);
  add_table(programme, "decoder", capture::H264, raw_decoder, Media_Helper::select_decoder);
  add_table(programme, "payloader", capture::H264, raw_payloader, Media_Helper::select_payloader);
  add_table(programme, "frame-rate element", capture::H264, raw_video_rate,
            Media_Helper::select_video_rate);
}

const char *raw_proxy(const GstCaps *caps) {
  for (const char *const name : tests::depayloaders) {
    GstElementFactory *const factory = gst_element_factory_find(name);
    require(factory != nullptr, "finding a factory");
    const gboolean fits = gst_element_factory_can_sink_all_caps(factory, caps);
    gst_object_unref(factory);
    if (fits) return name;
  }
  return nullptr;
}

void add_proxy_selection(Programme &programme) {
  const std::pair<const char *, const char *> choices[] = {
      {"the first of the pairs",
       "application/x-rtp, media=video, clock-rate=90000, encoding-name=H264"},
      {"the last of the pairs",
       "application/x-rtp, media=video, clock-rate=90000, encoding-name=MPEG4-GENERIC, "
       "mode=AAC-hbr"},
  };
  for (const auto &[choice, description] : choices) {
    const Owned_Caps caps = caps_from(description);
    const std::string operation = std::string("RTP proxy choice/") + choice;
    programme.add_call(
        operation, "raw",
        [caps] { require(raw_proxy(caps.get()) != nullptr, "selecting a proxy"); }, 10);
    programme.add_call(
        operation, "library",
        [caps] { DoNotOptimize(Media_Helper::select_proxy_elements(caps.get())); }, 10);
  }
}

// Compares caps lists that contain the same caps in opposite order.
bool raw_lists_equal(const std::vector<Owned_Caps> &first, const std::vector<Owned_Caps> &second) {
  if (first.size() != second.size()) return false;
  std::vector<bool> is_taken(second.size(), false);
  for (const Owned_Caps &caps : first) {
    std::size_t i = 0;
    while (i < second.size() && (is_taken[i] || !gst_caps_is_equal(caps.get(), second[i].get())))
      ++i;
    if (i == second.size()) return false;
    is_taken[i] = true;
  }
  return true;
}

void add_caps_lists(Programme &programme) {
  for (const int length : {1, 4, 16, 64}) {
    std::vector<Owned_Caps> list;
    list.reserve(static_cast<std::size_t>(length));
    for (int i = 0; i < length; ++i)
      list.push_back(
          owned(gst_caps_new_simple("video/x-raw", "width", G_TYPE_INT, i + 1, nullptr)));
    const std::vector<Owned_Caps> reversed(list.rbegin(), list.rend());
    const int times = length < 16 ? 20 : 1;
    const std::string operation = "caps lists/equal, in opposite orders/" + std::to_string(length);
    programme.add_call(
        operation, "raw", [list, reversed] { DoNotOptimize(raw_lists_equal(list, reversed)); },
        times);
    programme.add_call(
        operation, "library",
        [list, reversed] { DoNotOptimize(Media_Helper::caps_equal(list, reversed)); }, times);
  }
}

using Resolution = std::pair<unsigned long long, unsigned long long>;

Resolution raw_fit(const Resolution &bounds, const Resolution &source) {
  require(bounds.first != 0 && bounds.second != 0 && source.first != 0 && source.second != 0,
          "the check of a resolution");
  const double ratio = static_cast<double>(source.first) / static_cast<double>(source.second);
  const auto width = static_cast<double>(bounds.first);
  const auto height = static_cast<double>(bounds.second);
  return ratio > width / height
             ? Resolution{bounds.first, static_cast<unsigned long long>(width / ratio)}
             : Resolution{static_cast<unsigned long long>(ratio * height), bounds.second};
}

template <typename Fit>
void add_fit(Programme &programme, const char *implementation, Fit fit) {
  programme.add_call("resolution/fit", implementation, [fit] {
    Resolution bounds{640, 480};
    Resolution source{1920, 1080};
    DoNotOptimize(bounds);
    DoNotOptimize(source);
    DoNotOptimize(fit(bounds, source));
  });
}

void add_resolution_fit(Programme &programme) {
  add_fit(programme, "raw", raw_fit);
  add_fit(programme, "library", Media_Helper::calculate_resolution);
}

}  // namespace

void add_caps_and_selection(Programme &programme) {
  add_classification(programme);
  add_selection(programme);
  add_proxy_selection(programme);
  add_caps_lists(programme);
  add_resolution_fit(programme);
}

}  // namespace kel::tavren::benchmarks
