#include "relay_media.h"

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

// A payloader splits what does not fit into a packet. With the camera's own limit it splits where
// the camera did.
void allow_packets_as_large(GstElement *payloader, guint size) {
  guint limit = 0;
  g_object_get(payloader, "mtu", &limit, nullptr);
  if (size > limit) g_object_set(payloader, "mtu", size, nullptr);
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

}  // namespace

Relay_Media::Relay_Media(Loopback_Server &server, Relayed_Streams streams, const Running_Time &time)
    : streams_(std::move(streams)), bin_(make_elements(streams_)), media_(server, "/relay", bin_) {
  time.set_for(media_.pipeline());
  // Packets leave when they arrive, however far the camera's clock and this one drift apart.
  gst_rtsp_media_set_rate_control(media_.media(), FALSE);
  connect_streams();
  media_.start();
}

Relay_Media::~Relay_Media() {
  for (const auto &stream : streams_)
    stream->disconnect();
}

void Relay_Media::connect_streams() const {
  guint index = 0;
  for (const auto &stream : streams_)
    stream->connect(Element(
        Media_Helper::gst_bin_get_by_name_or_throw(GST_BIN(bin_.get()), appsrc_name(index++)),
        false));
}

}  // namespace kel::tavren::programs
