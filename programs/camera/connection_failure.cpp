#include "connection_failure.h"

#include <memory>

#include <gio/gio.h>
#include <tavren/error/tavren_error.h>

#include "command_line/program.h"

namespace kel::tavren::programs {

namespace {

constexpr guint timeout = 3;  // s
constexpr guint16 default_port = 554;

using Error = std::unique_ptr<GError, decltype(&g_error_free)>;
template <typename T>
using Object = std::unique_ptr<T, decltype(&g_object_unref)>;

void use_authorities(GSocketClient *, GSocketClientEvent event, GSocketConnectable *,
                     GIOStream *connection, gpointer database) noexcept {
  if (event == G_SOCKET_CLIENT_TLS_HANDSHAKING)
    g_tls_connection_set_database(G_TLS_CONNECTION(connection),
                                  static_cast<GTlsDatabase *>(database));
}

// Connects once. Returns the reason for the failure; empty if the connection succeeded.
std::string connect(const Camera_Options &options) {
  const Object<GSocketClient> client(g_socket_client_new(), g_object_unref);
  g_socket_client_set_timeout(client.get(), timeout);
  const bool is_tls = options.is_encrypted();
  g_socket_client_set_tls(client.get(), is_tls);
  const Object<GTlsDatabase> database(
      is_tls && !options.ca_file.empty() ? g_tls_file_database_new(options.ca_file.c_str(), nullptr)
                                         : nullptr,
      g_object_unref);
  if (database)
    g_signal_connect(client.get(), "event", G_CALLBACK(use_authorities), database.get());
  GError *error = nullptr;
  const Object<GSocketConnection> connection(
      g_socket_client_connect_to_uri(client.get(), options.address.location.c_str(), default_port,
                                     nullptr, &error),
      g_object_unref);
  const Error owned(error, g_error_free);
  return error != nullptr ? error->message : "";
}

}  // namespace

std::exception_ptr with_connection_failure(const std::exception_ptr &failure,
                                           const Camera_Options &options) {
  try {
    std::rethrow_exception(failure);
  } catch (const Bus_Error &error) {
    if (!error.is(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_OPEN_READ_WRITE)) return failure;
    const std::string reason = connect(options);
    if (reason.empty()) return failure;
    return std::make_exception_ptr(
        Bus_Error(GST_RESOURCE_ERROR_OPEN_READ_WRITE, "cannot connect to the camera: " + reason));
  } catch (...) {
    return failure;
  }
}

bool is_permanent(const std::exception_ptr &failure) {
  try {
    std::rethrow_exception(failure);
  } catch (const Bus_Error &error) {
    return error.is(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_NOT_AUTHORIZED);
  } catch (...) {
    return true;
  }
}

}  // namespace kel::tavren::programs
