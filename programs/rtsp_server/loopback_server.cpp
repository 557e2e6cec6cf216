#include "loopback_server.h"

#include <memory>

#include <gst/rtsp-server/rtsp-server.h>

#include "command_line/program.h"

namespace kel::tavren::programs {

namespace {

constexpr guint expiry_interval = 2000;  // ms
// A client that connects while the queue is full tries again after a second.
constexpr int connections_to_queue = 128;

using Mount_Points = boost::intrusive_ptr<GstRTSPMountPoints>;

GstRTSPFilterResult remove_client(GstRTSPServer *, GstRTSPClient *, gpointer) noexcept {
  return GST_RTSP_FILTER_REMOVE;
}

// Without this, the connection of a viewer that has stopped would remain after its session has
// expired.
void close_after_session(GstRTSPServer *, GstRTSPClient *client, gpointer) noexcept {
  g_object_set(client, "post-session-timeout", 5, nullptr);
}

// Ends the sessions of viewers that no longer respond.
void expire_sessions(GstRTSPServer *server) noexcept {
  const std::unique_ptr<GstRTSPSessionPool, decltype(&g_object_unref)> sessions(
      gst_rtsp_server_get_session_pool(server), g_object_unref);
  gst_rtsp_session_pool_cleanup(sessions.get());
}

}  // namespace

Loopback_Server::Loopback_Server(GMainContext *context, int port)
    : context_(context != nullptr ? context : g_main_context_default()),
      server_(gst_rtsp_server_new(), false), port_(port) {
  g_signal_connect(server_.get(), "client-connected", G_CALLBACK(close_after_session), nullptr);
  // A client that blocks in a request must not block the others.
  const std::unique_ptr<GstRTSPThreadPool, decltype(&g_object_unref)> threads(
      gst_rtsp_server_get_thread_pool(server_.get()), g_object_unref);
  gst_rtsp_thread_pool_set_max_threads(threads.get(), -1);
  gst_rtsp_server_set_address(server_.get(), "127.0.0.1");
  gst_rtsp_server_set_backlog(server_.get(), connections_to_queue);
  listen();
  keep_port();
  expiry_.emplace(context_.get(), expiry_interval, Timer::Kind::repeated,
                  [this] { expire_sessions(server_.get()); });
}

// Keep the port for the next call of listen().
void Loopback_Server::keep_port() noexcept {
  port_ = gst_rtsp_server_get_bound_port(server_.get());
}

Loopback_Server::~Loopback_Server() {
  stop_listening();
  disconnect_clients();
}

std::string Loopback_Server::uri(const std::string &path) const {
  return "rtsp://127.0.0.1:" + std::to_string(port_) + path;
}

void Loopback_Server::mount(const std::string &path,
                            const boost::intrusive_ptr<GstRTSPMediaFactory> &factory) {
  const Mount_Points mounts(gst_rtsp_server_get_mount_points(server_.get()), false);
  // transfer full
  gst_rtsp_mount_points_add_factory(mounts.get(), path.c_str(),
                                    GST_RTSP_MEDIA_FACTORY(g_object_ref(factory.get())));
}

void Loopback_Server::unmount(const std::string &path) {
  const Mount_Points mounts(gst_rtsp_server_get_mount_points(server_.get()), false);
  gst_rtsp_mount_points_remove_factory(mounts.get(), path.c_str());
}

void Loopback_Server::disconnect_clients() noexcept {
  // The list does not contain the removed clients, but must still be freed.
  GList *const clients = gst_rtsp_server_client_filter(server_.get(), remove_client, nullptr);
  g_list_free_full(clients, g_object_unref);
}

void Loopback_Server::stop_listening() noexcept {
  if (!listener_) return;
  g_source_destroy(listener_.get());
  listener_.reset();
}

void Loopback_Server::listen() {
  gst_rtsp_server_set_service(server_.get(), std::to_string(port_).c_str());
  GError *error = nullptr;
  listener_ = {gst_rtsp_server_create_source(server_.get(), nullptr, &error), false};
  const std::unique_ptr<GError, decltype(&g_error_free)> owned(error, g_error_free);
  if (!listener_)
    throw Bus_Error(GST_RESOURCE_ERROR_OPEN_READ_WRITE,
                    "cannot listen on 127.0.0.1 port " + std::to_string(port_) + ": " +
                        (error != nullptr ? error->message : "unknown reason"));
  g_source_attach(listener_.get(), context_.get());
}

}  // namespace kel::tavren::programs
