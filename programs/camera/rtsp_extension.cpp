#include "rtsp_extension.h"

#include <cstring>
#include <new>
#include <utility>

#include <boost/intrusive_ptr.hpp>
#include <gst/rtsp/gstrtspextension.h>
#include <tavren/capture/media_helper.h>
#include <tavren/handles/scope_exit_guard.h>

#include "description_repair.h"
#include "keep_alive.h"
#include "password_challenges.h"
#include "stream_addresses.h"

namespace kel::tavren::programs {

using capture::Media_Helper;

namespace {

constexpr const char *extension_key = "tavren-rtsp-extension";  // of the source's object data

struct Session {
  Stream_Addresses addresses;
  Keep_Alive keep_alive;
  std::function<void(guint)> on_setup_response;
};

// rtspsrc creates an element of each factory that implements the extension interface, and calls it
// with every request and response. All calls are made in the thread that also receives the packets
// of the connection.
struct Extension {
  GstElement element = {};
  Session session;
};

// The extension that this thread created last, for the source that is being created. GObject gives
// init_instance() no argument for it.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables)
thread_local Extension *newest_extension = nullptr;

Session &session_of(gpointer extension) {
  return static_cast<Extension *>(extension)->session;
}

// If memory is exhausted, the request is sent unchanged.
template <class Action>
GstRTSPResult call(Action action) noexcept {
  try {
    action();
  } catch (const std::bad_alloc &) {
  }
  return GST_RTSP_OK;
}

GstRTSPResult before_send(GstRTSPExtension *extension, GstRTSPMessage *request) noexcept {
  return call([=] { session_of(extension).addresses.rewrite(request); });
}

GstRTSPResult after_send(GstRTSPExtension *extension, GstRTSPMessage *request,
                         GstRTSPMessage *answer) noexcept {
  return call([=] {
    remove_unsupported_challenges(answer);
    Session &session = session_of(extension);
    session.addresses.note_answer(request, answer);
    session.keep_alive.note_answer(request, answer);
    if (request->type_data.request.method == GST_RTSP_SETUP && session.on_setup_response)
      session.on_setup_response(answer->type_data.response.code);
  });
}

GstRTSPResult parse_description(GstRTSPExtension *extension, GstSDPMessage *description,
                                GstStructure *) noexcept {
  return call([=] {
    repair_description(description);
    session_of(extension).addresses.note_description(description);
  });
}

// rtspsrc does not wait for a response if the response pointer is null.
void send(GstRTSPExtension *extension, const Keep_Alive::Request &request) {
  GstRTSPMessage message = {};
  Scope_Exit_Guard clear;
  arm(clear, [&message] { gst_rtsp_message_unset(&message); });
  gst_rtsp_message_init_request(&message, request.method, request.address.c_str());
  gst_rtsp_extension_send(extension, &message, nullptr);
}

GstPadProbeReturn on_packet(GstPad *, GstPadProbeInfo *, gpointer extension) noexcept {
  call([=] {
    if (const auto request = session_of(extension).keep_alive.take_request())
      send(GST_RTSP_EXTENSION(extension), *request);
  });
  return GST_PAD_PROBE_OK;
}

void init_interface(gpointer table, gpointer) {
  auto *const interface = static_cast<GstRTSPExtensionInterface *>(table);
  interface->before_send = before_send;
  interface->after_send = after_send;
  interface->parse_sdp = parse_description;
}

void init_instance(GTypeInstance *instance, gpointer) noexcept {
  auto *const extension = reinterpret_cast<Extension *>(instance);
  new (&extension->session) Session;
  newest_extension = extension;
}

void finalize(GObject *object) {
  session_of(object).~Session();
  G_OBJECT_CLASS(g_type_class_peek(GST_TYPE_ELEMENT))->finalize(object);
}

void init_class(gpointer type, gpointer) {
  gst_element_class_set_static_metadata(
      GST_ELEMENT_CLASS(type), "RTSP extension", "Network/Extension/Protocol",
      "Repairs descriptions, appends stream addresses and keeps sessions open", "The programs");
  G_OBJECT_CLASS(type)->finalize = finalize;
}

GType register_type() {
  const GType type = g_type_register_static_simple(
      GST_TYPE_ELEMENT, "TavrenRtspExtension", sizeof(GstElementClass), init_class,
      sizeof(Extension), init_instance, static_cast<GTypeFlags>(0));
  const GInterfaceInfo interface = {init_interface, nullptr, nullptr};
  g_type_add_interface_static(type, GST_TYPE_RTSP_EXTENSION, &interface);
  return type;
}

// rtspsrc resets its sequence number when it is stopped, even while its thread is sending the first
// events of the streams. gst_event_set_seqnum() then rejects the number. This has no effect,
// because the elements that receive the events have stopped.
void drop_rejected_number(const gchar *domain, GLogLevelFlags level, const gchar *message,
                          gpointer) noexcept {
  if (std::strstr(message, "seqnum != GST_SEQNUM_INVALID") == nullptr)
    g_log_default_handler(domain, level, message, nullptr);
}

}  // namespace

void register_rtsp_extension() {
  static const gboolean registered =
      gst_element_register(nullptr, "tavrenrtspextension", GST_RANK_MARGINAL, register_type());
  g_warn_if_fail(registered);
  static const guint log_handler =
      g_log_set_handler("GStreamer", G_LOG_LEVEL_CRITICAL, drop_rejected_number, nullptr);
  g_warn_if_fail(log_handler != 0);
}

GstElement *add_rtsp_source(GstElement *bin, const char *name) {
  register_rtsp_extension();
  newest_extension = nullptr;
  GstElement *const source = Media_Helper::create_and_add_element_to_bin("rtspsrc", bin, name);
  if (newest_extension != nullptr)
    g_object_set_data_full(G_OBJECT(source), extension_key, gst_object_ref(newest_extension),
                           gst_object_unref);
  return source;
}

void on_setup_response(GstElement *source, std::function<void(guint)> handler) {
  const gpointer extension = g_object_get_data(G_OBJECT(source), extension_key);
  if (extension != nullptr) session_of(extension).on_setup_response = std::move(handler);
}

void keep_session_alive(GstElement *source, GstPad *pad) {
  const gpointer extension = g_object_get_data(G_OBJECT(source), extension_key);
  if (extension == nullptr) return;
  gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, on_packet, gst_object_ref(extension),
                    gst_object_unref);
}

}  // namespace kel::tavren::programs
