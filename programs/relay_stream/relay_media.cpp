#include "relay_media.h"

#include <algorithm>
#include <new>
#include <string>
#include <utility>

#include <tavren/capture/media_helper.h>

namespace kel::tavren::programs {

using capture::Media_Helper;

namespace {

using Element = boost::intrusive_ptr<GstElement>;

std::string appsrc_name(guint index) {
  return "stream" + std::to_string(index);
}

// A payloader splits frames that do not fit into one packet. With the camera's packet size, it
// splits them where the camera did.
void allow_packets_as_large(GstElement *payloader, guint size) {
  guint limit = 0;
  g_object_get(payloader, "mtu", &limit, nullptr);
  if (size > limit) g_object_set(payloader, "mtu", size, nullptr);
}

GstPadProbeReturn add_duration(GstPad *, GstPadProbeInfo *info, gpointer) noexcept {
  GstBuffer *const frame = gst_buffer_make_writable(gst_pad_probe_info_get_buffer(info));
  if (!GST_BUFFER_DURATION_IS_VALID(frame)) GST_BUFFER_DURATION(frame) = GST_MSECOND;
  info->data = frame;
  return GST_PAD_PROBE_OK;
}

// The MPEG-4 payloader collects frames into one packet, which has only one time, until their
// duration exceeds a limit.
void send_frames_one_by_one(GstElement *payloader) {
  g_object_set(payloader, "max-ptime", gint64{1}, nullptr);
  Media_Helper::add_probe_to_sink_pad_or_throw(payloader, GST_PAD_PROBE_TYPE_BUFFER, add_duration,
                                               nullptr, nullptr);
}

void add_stream(GstElement *bin, const Relayed_Stream &relayed, guint index) {
  const Camera_Stream &stream = relayed.description();
  GstElement *const appsrc =
      Media_Helper::create_and_add_element_to_bin("appsrc", bin, appsrc_name(index));
  g_object_set(appsrc, "is-live", TRUE, "format", GST_FORMAT_TIME, nullptr);
  GstElement *const payloader = Media_Helper::create_and_add_element_to_bin(
      stream.payloader, bin, "pay" + std::to_string(index));
  gint payload_type = 0;
  if (gst_structure_get_int(gst_caps_get_structure(stream.caps.get(), 0), "payload", &payload_type))
    g_object_set(payloader, "pt", static_cast<guint>(payload_type), nullptr);
  if (stream.payloader == "rtpmp4vpay") send_frames_one_by_one(payloader);
  allow_packets_as_large(payloader, relayed.largest_packet());
  Media_Helper::gst_element_link_many_or_throw(appsrc, payloader, nullptr);
}

Element make_elements(const Relayed_Streams &streams) {
  Element bin(GST_ELEMENT_CAST(gst_object_ref_sink(gst_bin_new("relay"))), false);
  guint index = 0;
  for (const auto &stream : streams)
    add_stream(bin.get(), *stream, index++);
  return bin;
}

bool is_video(const Camera_Stream &stream) {
  const GstStructure *const caps = gst_caps_get_structure(stream.caps.get(), 0);
  return g_strcmp0(gst_structure_get_string(caps, "media"), "video") == 0;
}

// The gate and the stream, for the signal handlers of a client.
struct Entrance {
  std::shared_ptr<Key_Frame_Gate> gate;
  guint stream = 0;  // stream of the gate

  bool leads_to(const GstRTSPContext *context) const {
    return context->sessmedia != nullptr &&
           gst_rtsp_session_media_get_transport(context->sessmedia, stream) != nullptr;
  }
};

void drop_entrance(gpointer entrance, GClosure *) noexcept {
  delete static_cast<Entrance *>(entrance);
}

GstRTSPStatusCode before_play(GstRTSPClient *, GstRTSPContext *context, gpointer data) noexcept {
  const auto &entrance = *static_cast<Entrance *>(data);
  if (entrance.leads_to(context)) entrance.gate->enter();
  return GST_RTSP_STS_OK;
}

void after_play(GstRTSPClient *, GstRTSPContext *context, gpointer data) noexcept {
  const auto &entrance = *static_cast<Entrance *>(data);
  if (entrance.leads_to(context)) entrance.gate->leave();
}

void connect_client(GstRTSPClient *client, const char *signal, GCallback handler,
                    const Entrance &entrance) noexcept {
  if (auto *const copy = new (std::nothrow) Entrance(entrance))
    g_signal_connect_data(client, signal, handler, copy, drop_entrance, GConnectFlags{});
}

void on_client(GstRTSPServer *, GstRTSPClient *client, gpointer data) noexcept {
  const auto &entrance = *static_cast<Entrance *>(data);
  connect_client(client, "pre-play-request", G_CALLBACK(before_play), entrance);
  connect_client(client, "play-request", G_CALLBACK(after_play), entrance);
}

// The server's sinks wait for the time of each packet. A camera that reorders frames sends packets
// early, and a camera with a fast clock sends them earlier and earlier. With this offset, the time
// has always passed, and packets are sent when they arrive.
void on_element(GstBin *, GstBin *, GstElement *element, gpointer) noexcept {
  GObjectClass *const properties = G_OBJECT_GET_CLASS(element);
  if (g_object_class_find_property(properties, "sync") != nullptr &&
      g_object_class_find_property(properties, "ts-offset") != nullptr)
    g_object_set(element, "ts-offset", -G_MAXINT64, nullptr);
}

}  // namespace

Relay_Media::Relay_Media(Loopback_Server &server, Relayed_Streams streams, const Running_Time &time)
    : server_(server), streams_(std::move(streams)), gate_(std::make_shared<Key_Frame_Gate>()),
      bin_(make_elements(streams_)), media_(server, "/relay", bin_) {
  time.set_for(media_.pipeline());
  Media_Helper::g_signal_connect_or_throw(GST_ELEMENT_CAST(media_.pipeline()), "deep-element-added",
                                          G_CALLBACK(on_element), nullptr);
  admit_viewers();
  connect_streams();
  media_.start();
}

Relay_Media::~Relay_Media() {
  gate_->remove();
  if (client_handler_ != 0) g_signal_handler_disconnect(server_.get(), client_handler_);
  for (const auto &stream : streams_)
    stream->disconnect();
}

// Returns the index of the first video stream, or the number of streams if there is no video.
guint Relay_Media::video_stream() const {
  const auto video = std::find_if(streams_.begin(), streams_.end(), [](const auto &stream) {
    return is_video(stream->description());
  });
  return static_cast<guint>(video - streams_.begin());
}

// Makes each client wait at the gate before it plays, if there is video. Each client has a separate
// thread, so it may block.
void Relay_Media::admit_viewers() {
  if (video_stream() == streams_.size()) return;
  client_handler_ =
      g_signal_connect_data(server_.get(), "client-connected", G_CALLBACK(on_client),
                            new Entrance{gate_, video_stream()}, drop_entrance, GConnectFlags{});
}

void Relay_Media::connect_streams() const {
  for (guint index = 0; index < streams_.size(); ++index) {
    const Element appsrc(
        Media_Helper::gst_bin_get_by_name_or_throw(GST_BIN(bin_.get()), appsrc_name(index)), false);
    streams_[index]->connect(appsrc, index == video_stream() ? gate_ : nullptr);
  }
}

}  // namespace kel::tavren::programs
