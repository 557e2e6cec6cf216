#include "simulated_camera.h"

#include <map>
#include <stdexcept>
#include <thread>

#include <gst/app/gstappsrc.h>
#include <gst/rtsp-server/rtsp-server.h>
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

// Encoder and payloader of each stream. What the library knows, the library names; the kinds that
// it does not know are there to show what happens to them.
std::string branch(const std::string &encoder, const std::string &payloader) {
  // A client need not take every stream: the tee keeps those left out from failing.
  return encoder + " ! tee allow-not-linked=true ! " + payloader;
}

std::string video_branch(const std::string &stream) {
  const std::map<std::string, std::string> branches = {
      {"h264", branch("x264enc tune=zerolatency speed-preset=ultrafast bitrate=500 key-int-max=12 "
                      "! video/x-h264, profile=baseline",
                      Media_Helper::select_payloader(capture::H264) + " pt=96 config-interval=-1")},
      {"jpeg", branch("jpegenc", Media_Helper::select_payloader(capture::JPEG) + " pt=26")},
      {"mpeg4", branch("avenc_mpeg4 name=mpeg4-encoder gop-size=12",
                       Media_Helper::select_payloader(capture::MPEG_VIDEO) +
                           " pt=96 config-interval=1 max-ptime=1")},
      {"vp8", branch("vp8enc deadline=1 keyframe-max-dist=12", "rtpvp8pay pt=96")},
  };
  return "videotestsrc is-live=true pattern=ball "
         "! video/x-raw, width=320, height=240, framerate=25/1, format=I420 ! " +
         row_of(branches, stream, "video");
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

std::string launch_line(const Camera_Streams &streams) {
  std::string branches;
  int count = 0;
  const auto add = [&](const std::string &added) {
    branches += added + " name=pay" + std::to_string(count++) + " ";
  };
  if (streams.video != "none") add(video_branch(streams.video));
  if (streams.audio != "none") add(audio_branch(streams.audio));
  if (streams.metadata)
    add(branch("appsrc name=metadata is-live=true do-timestamp=true format=time "
               "caps=application/x-onvif-metadata",
               "onvifmetadatapay pt=107"));
  if (count == 0) throw std::invalid_argument("the simulated camera has nothing to send");
  return "( " + branches + ")";
}

// Sends one metadata document; stops when the element that takes them is gone.
gboolean send_metadata(gpointer data) {
  GstAppSrc *const source = static_cast<GstAppSrc *>(g_weak_ref_get(static_cast<GWeakRef *>(data)));
  if (source == nullptr) return G_SOURCE_REMOVE;
  const char document[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
                          "<tt:MetadataStream xmlns:tt=\"http://www.onvif.org/ver10/schema\"/>";
  gst_app_src_push_buffer(source, gst_buffer_new_memdup(document, sizeof document - 1));
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

// Gives an encoder's frames the times that they should have: from the segment's start, frame by
// frame.
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

// The framework's MPEG-4 encoder loses its frames' times with some versions of its codec library.
void restamp(GstElement *encoder) {
  const boost::intrusive_ptr<GstPad> pad(gst_element_get_static_pad(encoder, "src"), false);
  const auto mask =
      static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM);
  gst_pad_add_probe(pad.get(), mask, stamp, g_new0(GstClockTime, 1), g_free);
}

// Prepares a media that a client has asked for.
void configure_media(GstRTSPMediaFactory *, GstRTSPMedia *media, gpointer context) {
  const Element bin(gst_rtsp_media_get_element(media), false);
  const auto element = [&bin](const char *name) {
    return Element(gst_bin_get_by_name(GST_BIN(bin.get()), name), false);
  };
  if (const Element source = element("metadata"))
    start_metadata(source.get(), static_cast<GMainContext *>(context));
  if (const Element encoder = element("mpeg4-encoder")) restamp(encoder.get());
}

GstRTSPFilterResult remove_client(GstRTSPServer *, GstRTSPClient *, gpointer) {
  return GST_RTSP_FILTER_REMOVE;
}

}  // namespace

class Simulated_Camera::Server {
public:
  explicit Server(const Camera_Streams &streams)
      : context_(g_main_context_new(), false), loop_(g_main_loop_new(context_.get(), FALSE), false),
        server_(gst_rtsp_server_new(), false) {
    register_onvif_metadata_payloader();
    gst_rtsp_server_set_address(server_.get(), "127.0.0.1");
    gst_rtsp_server_set_service(server_.get(), "0");
    mount(launch_line(streams));
    const guint listener = gst_rtsp_server_attach(server_.get(), context_.get());
    if (listener == 0) throw std::runtime_error("the simulated camera cannot listen on 127.0.0.1");
    listener_ = g_main_context_find_source_by_id(context_.get(), listener);
    uri_ = "rtsp://127.0.0.1:" + std::to_string(gst_rtsp_server_get_bound_port(server_.get())) +
           "/camera";
    thread_ = std::thread([this] { g_main_loop_run(loop_.get()); });
  }

  ~Server() {
    g_source_destroy(listener_.get());
    gst_rtsp_server_client_filter(server_.get(), remove_client, nullptr);
    // Queued, so that it ends the loop also when the thread has not entered it yet.
    g_main_context_invoke(
        context_.get(),
        [](gpointer loop) -> gboolean {
          g_main_loop_quit(static_cast<GMainLoop *>(loop));
          return G_SOURCE_REMOVE;
        },
        loop_.get());
    thread_.join();
  }

  Server(const Server &) = delete;
  Server &operator=(const Server &) = delete;

  const std::string &uri() const noexcept { return uri_; }

private:
  void mount(const std::string &launch) {
    const boost::intrusive_ptr<GstRTSPMountPoints> mounts(
        gst_rtsp_server_get_mount_points(server_.get()), false);
    GstRTSPMediaFactory *const factory = gst_rtsp_media_factory_new();
    gst_rtsp_media_factory_set_launch(factory, launch.c_str());
    gst_rtsp_media_factory_set_shared(factory, TRUE);
    g_signal_connect(factory, "media-configure", G_CALLBACK(configure_media), context_.get());
    gst_rtsp_mount_points_add_factory(mounts.get(), "/camera", factory);
  }

  boost::intrusive_ptr<GMainContext> context_;
  boost::intrusive_ptr<GMainLoop> loop_;
  boost::intrusive_ptr<GstRTSPServer> server_;
  boost::intrusive_ptr<GSource> listener_;
  std::string uri_;
  std::thread thread_;
};

Simulated_Camera::Simulated_Camera(const Camera_Streams &streams)
    : server_(std::make_unique<Server>(streams)) {}

Simulated_Camera::~Simulated_Camera() = default;

const std::string &Simulated_Camera::uri() const noexcept {
  return server_->uri();
}

}  // namespace kel::tavren::programs
