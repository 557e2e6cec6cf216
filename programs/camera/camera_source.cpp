#include "camera_source.h"

#include <memory>
#include <stdexcept>

#include <gio/gio.h>
#include <gst/rtp/gstrtcpbuffer.h>
#include <tavren/capture/media_helper.h>

#include "rtsp_extension.h"

namespace kel::tavren::programs {

using capture::Media_Helper;

namespace {

constexpr guint64 connection_timeout = guint64{10} * G_USEC_PER_SEC;
constexpr guint64 stopping_timeout = G_USEC_PER_SEC;  // rtspsrc rounds it up to seconds
constexpr GstClockTime late_start = GST_SECOND;

using Error = std::unique_ptr<GError, decltype(&g_error_free)>;
using Tls_Database = std::unique_ptr<GTlsDatabase, decltype(&g_object_unref)>;

// Makes rtspsrc validate certificates only against the authorities in the file.
void trust_authorities(GstElement *source, const std::string &file) {
  GError *error = nullptr;
  const Tls_Database database(g_tls_file_database_new(file.c_str(), &error), g_object_unref);
  const Error owned(error, g_error_free);
  if (!database)
    throw Bus_Error(GST_RESOURCE_ERROR_OPEN_READ,
                    "cannot read the certificate authorities: " + std::string(error->message));
  g_object_set(source, "tls-database", database.get(), nullptr);
}

// The response to PLAY contains the sequence number of the first packet. A jitter buffer that knows
// this number discards packets with lower numbers: those of a restarted encoder and, permanently,
// those of a camera that reports a wrong number.
GstPadProbeReturn drop_first_number(GstPad *, GstPadProbeInfo *info, gpointer) noexcept {
  GstEvent *const event = gst_pad_probe_info_get_event(info);
  if (GST_EVENT_TYPE(event) != GST_EVENT_CAPS) return GST_PAD_PROBE_OK;
  GstCaps *caps = nullptr;
  gst_event_parse_caps(event, &caps);
  const boost::intrusive_ptr<GstCaps> plain(gst_caps_copy(caps), false);
  gst_structure_remove_field(gst_caps_get_structure(plain.get(), 0), "seqnum-base");
  info->data = gst_event_new_caps(plain.get());
  gst_event_unref(event);
  return GST_PAD_PROBE_OK;
}

void on_new_jitter_buffer(GstElement *, GstElement *jitter_buffer, guint, guint,
                          gpointer) noexcept {
  const boost::intrusive_ptr<GstPad> pad(gst_element_get_static_pad(jitter_buffer, "sink"), false);
  if (pad)
    gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, drop_first_number, nullptr,
                      nullptr);
}

// A restarted encoder sends RTCP BYE for its old SSRC. rtspsrc would end the stream and reject the
// packets of the new SSRC. The end of a stream is detected by a timeout instead.
GstPadProbeReturn drop_goodbye(GstPad *, GstPadProbeInfo *info, gpointer) noexcept {
  GstRTCPBuffer rtcp = GST_RTCP_BUFFER_INIT;
  if (!gst_rtcp_buffer_map(gst_pad_probe_info_get_buffer(info), GST_MAP_READ, &rtcp))
    return GST_PAD_PROBE_OK;
  bool says_goodbye = false;
  GstRTCPPacket packet = {};
  for (gboolean more = gst_rtcp_buffer_get_first_packet(&rtcp, &packet); more;
       more = gst_rtcp_packet_move_to_next(&packet))
    says_goodbye = says_goodbye || gst_rtcp_packet_get_type(&packet) == GST_RTCP_TYPE_BYE;
  gst_rtcp_buffer_unmap(&rtcp);
  return says_goodbye ? GST_PAD_PROBE_DROP : GST_PAD_PROBE_OK;
}

// Over TCP, rtspsrc stamps the first packet of each stream with the arrival time of the first
// packet of any stream, although a stream may start much later. Behind this pad, a packet may wait
// while the elements for its stream are created.
GstPadProbeReturn stamp_late_start(GstPad *pad, GstPadProbeInfo *info, gpointer) noexcept {
  GstBuffer *packet = gst_pad_probe_info_get_buffer(info);
  const GstClockTime now = gst_element_get_current_running_time(GST_PAD_PARENT(pad));
  if (GST_BUFFER_PTS_IS_VALID(packet) && GST_CLOCK_TIME_IS_VALID(now) &&
      now > GST_BUFFER_PTS(packet) + late_start) {
    packet = gst_buffer_make_writable(packet);
    GST_BUFFER_PTS(packet) = now;
    info->data = packet;
  }
  return GST_PAD_PROBE_REMOVE;
}

void on_manager_pad(GstElement *, GstPad *pad, gpointer source) noexcept {
  if (g_str_has_prefix(GST_PAD_NAME(pad), "recv_rtcp_sink"))
    gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, drop_goodbye, nullptr, nullptr);
  if (source == nullptr || !g_str_has_prefix(GST_PAD_NAME(pad), "recv_rtp_sink")) return;
  keep_session_alive(GST_ELEMENT(source), pad);
  gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, stamp_late_start, nullptr, nullptr);
}

void on_new_manager(GstElement *source, GstElement *manager, gpointer is_over_udp) noexcept {
  g_signal_connect(manager, "pad-added", G_CALLBACK(on_manager_pad),
                   is_over_udp != nullptr ? nullptr : source);
  g_signal_connect(manager, "new-jitterbuffer", G_CALLBACK(on_new_jitter_buffer), nullptr);
}

Transport parse_transport(const std::string &name) {
  if (name == "auto") return Transport::automatic;
  if (name == "tcp") return Transport::tcp;
  if (name == "udp") return Transport::udp;
  throw std::invalid_argument("--transport takes auto, tcp or udp, not \"" + name + '"');
}

// GLib requires an absolute path for a certificate file.
std::string absolute_path(const std::string &path) {
  return std::unique_ptr<char, Emancipator<char>>(g_canonicalize_filename(path.c_str(), nullptr))
      .get();
}

// Returns the first line of a file.
std::string read_password(const std::string &file) {
  gchar *contents = nullptr;
  GError *error = nullptr;
  const bool read = g_file_get_contents(file.c_str(), &contents, nullptr, &error) != FALSE;
  const std::unique_ptr<char, Emancipator<char>> owned_contents(contents);
  const Error owned_error(error, g_error_free);
  if (!read) throw std::runtime_error("cannot read the password: " + std::string(error->message));
  const std::string text = contents;
  return text.substr(0, text.find_first_of("\r\n"));
}

}  // namespace

std::vector<Transport> transports_to_try(Transport transport) {
  if (transport == Transport::automatic) return {Transport::tcp, Transport::udp};
  return {transport};
}

GstElement *add_camera_source(GstElement *bin, const Camera_Options &options, Transport transport) {
  GstElement *const source = add_rtsp_source(bin, "camera");
  gst_util_set_object_arg(G_OBJECT(source), "protocols",
                          transport == Transport::udp ? "udp+udp-mcast" : "tcp+http");
  // The programs detect silence themselves. Over UDP, rtspsrc would fail if a camera pauses for
  // longer than its timeout.
  g_object_set(source, "location", options.address.location.c_str(), "tcp-timeout",
               connection_timeout, "timeout", guint64{0}, "latency", options.latency, nullptr);
  // Accept the first packet of a new SSRC without probation: the connection belongs to the camera.
  g_object_set(source, "probation", 1U, nullptr);
  if (!options.address.user.empty())
    g_object_set(source, "user-id", options.address.user.c_str(), "user-pw",
                 options.address.password.c_str(), nullptr);
  // Over UDP, the packets do not arrive in the thread that sends requests, and rtspsrc keeps the
  // session open.
  Media_Helper::g_signal_connect_or_throw(source, "new-manager", G_CALLBACK(on_new_manager),
                                          GINT_TO_POINTER(transport == Transport::udp));
  if (!options.ca_file.empty()) trust_authorities(source, options.ca_file);
  return source;
}

void expect_no_response(GstElement *source) noexcept {
  g_object_set(source, "tcp-timeout", stopping_timeout, nullptr);
}

std::vector<GOptionEntry> Camera_Arguments::entries() {
  // Not converted from the locale's encoding: services often run without a locale.
  return {
      {"uri", 0, 0, G_OPTION_ARG_FILENAME, uri_.target(), "address of the camera", "rtsp://..."},
      {"transport", 0, 0, G_OPTION_ARG_STRING, transport_.target(),
       "auto (TCP, or UDP if the camera refuses TCP; the default), tcp or udp", "NAME"},
      {"latency", 0, 0, G_OPTION_ARG_INT, &latency_,
       "how long to wait for late or reordered packets (default 200)", "MS"},
      {"user", 0, 0, G_OPTION_ARG_FILENAME, user_.target(), "user name for the camera", "NAME"},
      {"password-file", 0, 0, G_OPTION_ARG_FILENAME, password_file_.target(),
       "file with the password in its first line (default: $TAVREN_CAMERA_PASSWORD)", "FILE"},
      {"ca-file", 0, 0, G_OPTION_ARG_FILENAME, ca_file_.target(),
       "PEM file of the certificate authorities to trust for rtsps://", "FILE"}};
}

Camera_Options Camera_Arguments::options(const std::string &uri) const {
  if (latency_ < 0 || latency_ > 60000)
    throw std::invalid_argument("--latency takes 0 to 60000 milliseconds");
  Camera_Options options;
  options.transport = parse_transport(transport_.value_or("auto"));
  options.latency = static_cast<guint>(latency_);
  if (ca_file_.given()) options.ca_file = absolute_path(ca_file_.value_or(""));
  options.address = parse_camera_address(uri);
  if (options.transport == Transport::automatic) options.transport = options.address.transport;
  if (user_.given()) options.address.user = user_.value_or("");
  if (password_file_.given())
    options.address.password = read_password(password_file_.value_or(""));
  else if (const char *const password = g_getenv("TAVREN_CAMERA_PASSWORD"))
    options.address.password = password;
  if (password_file_.given() && options.address.user.empty())
    throw std::invalid_argument("--password-file needs --user or a user name in the URI");
  return options;
}

}  // namespace kel::tavren::programs
