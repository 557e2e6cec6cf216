#include "camera_media.h"

#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>

#include <gst/app/gstappsrc.h>
#include <tavren/capture/media_helper.h>

#include "onvif_metadata_payloader.h"

namespace kel::tavren::programs {

using capture::Media_Helper;

namespace {

constexpr guint metadata_interval = 500;                  // ms
constexpr GstClockTime frame_duration = GST_SECOND / 25;  // ns

const std::string &row_of(const std::map<std::string, std::string> &table,
                          const std::string &stream, const char *kind) {
  const auto row = table.find(stream);
  if (row == table.end())
    throw std::invalid_argument("the simulated camera has no " + std::string(kind) + " of kind " +
                                stream);
  return row->second;
}

// The encoder and the payloader of each stream. For media that the library supports, the elements
// are taken from the library. The other kinds exist to show how the programs handle unsupported
// media.
std::string branch(const std::string &encoder, const std::string &payloader) {
  return encoder + " ! " + payloader;
}

// The parser repeats the parameter sets once before each key frame. The payloader would repeat them
// before each of its slices.
std::string h264_branch(int slices) {
  return branch("x264enc tune=zerolatency speed-preset=ultrafast bitrate=500 key-int-max=12 "
                "threads=1 option-string=slices=" +
                    std::to_string(slices) +
                    " ! video/x-h264, profile=baseline ! h264parse config-interval=-1",
                Media_Helper::select_payloader(capture::H264) + " pt=96");
}

std::string video_branch(const Camera_Streams &streams) {
  const std::map<std::string, std::string> branches = {
      {"h264", h264_branch(streams.slices)},
      {"jpeg", branch("jpegenc", Media_Helper::select_payloader(capture::JPEG) + " pt=26")},
      {"mpeg4", branch("avenc_mpeg4 name=mpeg4-encoder gop-size=12",
                       Media_Helper::select_payloader(capture::MPEG_VIDEO) +
                           " pt=96 config-interval=1 max-ptime=1")},
      {"vp8", branch("vp8enc deadline=1 keyframe-max-dist=12", "rtpvp8pay pt=96")},
  };
  return "videotestsrc is-live=true pattern=" + std::string(streams.noise ? "snow" : "ball") +
         " ! video/x-raw, width=320, height=240, framerate=25/1, format=I420 ! " +
         row_of(branches, streams.video, "video");
}

std::string audio_branch(const std::string &stream) {
  const std::map<std::string, std::string> branches = {
      {"aac", branch("audio/x-raw, rate=48000, channels=1 ! avenc_aac bitrate=64000 ! aacparse",
                     Media_Helper::select_payloader(capture::MPEG_AUDIO) + " pt=97")},
      {"mulaw", branch("audio/x-raw, rate=8000, channels=1 ! mulawenc",
                       Media_Helper::select_payloader(capture::MULAW) + " pt=0")},
      {"opus", branch("audio/x-raw, rate=48000, channels=1 ! opusenc", "rtpopuspay pt=97")},
  };
  return "audiotestsrc is-live=true wave=ticks ! audioconvert ! audioresample ! " +
         row_of(branches, stream, "audio");
}

std::string metadata_branch() {
  return branch("appsrc name=metadata is-live=true do-timestamp=true format=time "
                "caps=application/x-onvif-metadata",
                "onvifmetadatapay pt=107");
}

// Sends one metadata document. Stops when the receiving element has been destroyed.
gboolean send_metadata(gpointer data) {
  GstAppSrc *const source = static_cast<GstAppSrc *>(g_weak_ref_get(static_cast<GWeakRef *>(data)));
  if (source == nullptr) return G_SOURCE_REMOVE;
  const char document[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
                          "<tt:MetadataStream xmlns:tt=\"http://www.onvif.org/ver10/schema\"/>";
  GstBuffer *const buffer = gst_buffer_new_allocate(nullptr, sizeof document - 1, nullptr);
  gst_buffer_fill(buffer, 0, document, sizeof document - 1);
  gst_app_src_push_buffer(source, buffer);
  gst_object_unref(source);
  return G_SOURCE_CONTINUE;
}

void free_weak_reference(gpointer data) {
  auto *const reference = static_cast<GWeakRef *>(data);
  g_weak_ref_clear(reference);
  g_free(reference);
}

using Element = boost::intrusive_ptr<GstElement>;

void start_metadata(GstElement *source, GMainContext *context) {
  GWeakRef *const reference = g_new0(GWeakRef, 1);
  g_weak_ref_init(reference, source);
  const boost::intrusive_ptr<GSource> timer(g_timeout_source_new(metadata_interval), false);
  g_source_set_callback(timer.get(), send_metadata, reference, free_weak_reference);
  g_source_attach(timer.get(), context);
}

// Gives an encoder's frames the correct times, frame by frame from the start of the segment.
GstPadProbeReturn stamp(GstPad *, GstPadProbeInfo *info, gpointer data) {
  GstClockTime &next = *static_cast<GstClockTime *>(data);
  if ((info->type & GST_PAD_PROBE_TYPE_BUFFER) != 0) {
    GstBuffer *const frame = gst_buffer_make_writable(gst_pad_probe_info_get_buffer(info));
    GST_BUFFER_PTS(frame) = GST_BUFFER_DTS(frame) = next;
    next += frame_duration;
    info->data = frame;
  } else if (GST_EVENT_TYPE(gst_pad_probe_info_get_event(info)) == GST_EVENT_SEGMENT) {
    const GstSegment *segment = nullptr;
    gst_event_parse_segment(gst_pad_probe_info_get_event(info), &segment);
    next = segment->start;
  }
  return GST_PAD_PROBE_OK;
}

// With some versions of its codec library, the framework's MPEG-4 encoder loses the timestamps of
// its frames.
void restamp(GstElement *encoder) {
  const boost::intrusive_ptr<GstPad> pad(gst_element_get_static_pad(encoder, "src"), false);
  const auto mask =
      static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM);
  gst_pad_add_probe(pad.get(), mask, stamp, g_new0(GstClockTime, 1), g_free);
}

// Throws the library's exception if an element of the branch is not installed. gst_parse_launch()
// would omit the element.
void check_elements(const std::string &branch) {
  std::istringstream text(branch);
  for (std::string element; std::getline(text, element, '!');) {
    std::string factory;
    std::istringstream(element) >> factory;
    if (factory.find('/') != std::string::npos) continue;  // caps
    const std::unique_ptr<GstElementFactory, decltype(&gst_object_unref)> found(
        Media_Helper::gst_element_factory_find_or_throw(factory), gst_object_unref);
  }
}

// Adds a branch to a launch line. Returns the name of its payloader: the server serves payloaders
// named pay0, pay1 and so on.
std::string add_branch(std::string &line, const std::string &branch, int &count) {
  check_elements(branch);
  std::string name = "pay" + std::to_string(count++);
  line += branch + " name=" + name + " ";
  return name;
}

}  // namespace

Camera_Elements make_camera_elements(const Camera_Streams &streams, GMainContext *context) {
  register_onvif_metadata_payloader();
  Camera_Elements elements;
  std::string line;
  int count = 0;
  if (streams.video != "none") elements.video = add_branch(line, video_branch(streams), count);
  if (streams.audio != "none")
    elements.audio = add_branch(line, audio_branch(streams.audio), count);
  if (streams.metadata) elements.metadata = add_branch(line, metadata_branch(), count);
  if (count == 0) throw std::invalid_argument("the simulated camera has nothing to send");

  elements.bin = {GST_ELEMENT_CAST(gst_object_ref_sink(
                      Media_Helper::gst_parse_launch_or_throw("( " + line + ")"))),
                  false};
  GstBin *const bin = GST_BIN(elements.bin.get());
  if (const Element source{gst_bin_get_by_name(bin, "metadata"), false})
    start_metadata(source.get(), context);
  if (const Element encoder{gst_bin_get_by_name(bin, "mpeg4-encoder"), false})
    restamp(encoder.get());
  return elements;
}

void request_key_frame(const Camera_Elements &elements) noexcept {
  if (elements.video.empty()) return;
  const Element payloader(gst_bin_get_by_name(GST_BIN(elements.bin.get()), elements.video.c_str()),
                          false);
  gst_element_send_event(payloader.get(),
                         gst_event_new_custom(GST_EVENT_CUSTOM_UPSTREAM,
                                              gst_structure_new("GstForceKeyUnit", "all-headers",
                                                                G_TYPE_BOOLEAN, FALSE, nullptr)));
}

}  // namespace kel::tavren::programs
