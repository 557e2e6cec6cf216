#include "viewer.h"

#include <array>
#include <memory>
#include <utility>

#include <tavren/capture/media_helper.h>

namespace kel::tavren::tests {

using capture::Media_Helper;

namespace {

constexpr gint64 longest_wait = gint64{20} * G_USEC_PER_SEC;

}  // namespace

Viewer::Viewer(const std::string &uri, std::string media, const std::string &transport)
    : media_(std::move(media)),
      pipeline_(GST_ELEMENT_CAST(gst_object_ref_sink(Media_Helper::gst_parse_launch_or_throw(
                    "rtspsrc name=source latency=0 protocols=" + transport +
                    // GStreamer 1.18 also adds pads for streams that were not selected.
                    " ! application/x-rtp, media=" + media_ +
                    " ! fakesink name=sink sync=false async=false signal-handoffs=true"))),
                false) {
  g_object_set(element("source").get(), "location", uri.c_str(), nullptr);
  Media_Helper::g_signal_connect_or_throw(element("source").get(), "select-stream",
                                          G_CALLBACK(select), this);
  Media_Helper::g_signal_connect_or_throw(element("sink").get(), "handoff", G_CALLBACK(note_packet),
                                          this);
  Media_Helper::gst_element_set_state_or_throw(pipeline_.get(), GST_STATE_PLAYING, "watching");
}

Viewer::~Viewer() {
  gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
}

bool Viewer::sees(std::size_t packets) const {
  const std::size_t enough = count() + packets;
  const gint64 deadline = g_get_monotonic_time() + longest_wait;
  while (count() < enough && g_get_monotonic_time() < deadline)
    g_usleep(5000);
  return count() >= enough;
}

std::string Viewer::error() const {
  const boost::intrusive_ptr<GstBus> bus(
      Media_Helper::gst_element_get_bus_or_throw(pipeline_.get()), false);
  const boost::intrusive_ptr<GstMessage> message(gst_bus_pop_filtered(bus.get(), GST_MESSAGE_ERROR),
                                                 false);
  if (!message) return {};
  GError *failure = nullptr;
  gchar *details = nullptr;
  gst_message_parse_error(message.get(), &failure, &details);
  const std::unique_ptr<GError, decltype(&g_error_free)> owned_failure(failure, g_error_free);
  const std::unique_ptr<gchar, decltype(&g_free)> owned_details(details, g_free);
  return std::string(failure->message) + (details != nullptr ? details : "");
}

bool Viewer::sees_end() const {
  const boost::intrusive_ptr<GstBus> bus(
      Media_Helper::gst_element_get_bus_or_throw(pipeline_.get()), false);
  const boost::intrusive_ptr<GstMessage> end(
      gst_bus_timed_pop_filtered(bus.get(), longest_wait * GST_USECOND,
                                 static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)),
      false);
  return end != nullptr;
}

std::vector<Packet> Viewer::packets() const {
  const std::lock_guard lock(mutex_);
  return packets_;
}

std::vector<gint32> Viewer::timestamp_steps() const {
  std::vector<gint32> steps;
  const std::vector<Packet> packets = this->packets();
  for (std::size_t i = 1; i < packets.size(); ++i)
    if (packets[i].timestamp != packets[i - 1].timestamp)
      steps.push_back(static_cast<gint32>(packets[i].timestamp - packets[i - 1].timestamp));
  return steps;
}

gboolean Viewer::select(GstElement *, guint, GstCaps *caps, gpointer viewer) noexcept {
  const GstStructure *const structure = gst_caps_get_structure(caps, 0);
  const std::string &media = static_cast<Viewer *>(viewer)->media_;
  return g_strcmp0(gst_structure_get_string(structure, "media"), media.c_str()) == 0;
}

void Viewer::note_packet(GstElement *, GstBuffer *packet, GstPad *, gpointer viewer) noexcept {
  std::array<guint8, 13> start = {};  // the header of a packet and one more byte
  gst_buffer_extract(packet, 0, start.data(), start.size());
  auto &self = *static_cast<Viewer *>(viewer);
  const std::lock_guard lock(self.mutex_);
  self.packets_.push_back({GST_READ_UINT16_BE(start.data() + 2),
                           GST_READ_UINT32_BE(start.data() + 4), start.back(),
                           g_get_monotonic_time()});
}

Element Viewer::element(const char *name) const {
  return Element(Media_Helper::gst_bin_get_by_name_or_throw(GST_BIN(pipeline_.get()), name), false);
}

std::size_t Viewer::count() const {
  const std::lock_guard lock(mutex_);
  return packets_.size();
}

}  // namespace kel::tavren::tests
