#include "metrics_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <utility>

#include <glib.h>
#include <microhttpd.h>

namespace kel::tavren::programs {

namespace {

constexpr const char *content_type = "text/plain; version=0.0.4; charset=utf-8";
constexpr unsigned int connection_timeout = 10;  // s

using Response = std::unique_ptr<MHD_Response, decltype(&MHD_destroy_response)>;

Response make_response(std::string text) {
  Response response(
      MHD_create_response_from_buffer(text.size(), text.data(), MHD_RESPMEM_MUST_COPY),
      MHD_destroy_response);
  if (response) MHD_add_response_header(response.get(), MHD_HTTP_HEADER_CONTENT_TYPE, content_type);
  return response;
}

MHD_Result answer(MHD_Connection *connection, unsigned int status, std::string text) {
  const Response response = make_response(std::move(text));
  return response ? MHD_queue_response(connection, status, response.get()) : MHD_NO;
}

// Returns a socket that the server owns. The server would not report reliably why it cannot listen.
MHD_socket listen_on(std::uint16_t port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const int reuse = 1;
  const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (socket >= 0 && setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse) == 0 &&
      bind(socket, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0 &&
      listen(socket, SOMAXCONN) == 0)
    return socket;
  const int error = errno;
  if (socket >= 0) close(socket);
  throw std::runtime_error("cannot serve metrics on port " + std::to_string(port) + ": " +
                           g_strerror(error));
}

}  // namespace

struct Metrics_Server::Callbacks {
  static MHD_Result on_request(void *server, MHD_Connection *connection, const char *url,
                               const char *method, const char *, const char *, size_t *,
                               void **) noexcept {
    try {
      const std::string path = url;
      const std::string verb = method;
      if (verb != MHD_HTTP_METHOD_GET && verb != MHD_HTTP_METHOD_HEAD)
        return answer(connection, MHD_HTTP_METHOD_NOT_ALLOWED, "only GET is supported\n");
      if (path != "/metrics")
        return answer(connection, MHD_HTTP_NOT_FOUND, "the metrics are at /metrics\n");
      return answer(connection, MHD_HTTP_OK, static_cast<Metrics_Server *>(server)->text());
    } catch (const std::exception &) {  // the memory is exhausted
      return MHD_NO;
    }
  }
};

void Metrics_Server::Stop::operator()(MHD_Daemon *daemon) const noexcept {
  MHD_stop_daemon(daemon);
}

Metrics_Server::Metrics_Server(std::uint16_t port) {
  daemon_.reset(MHD_start_daemon(MHD_USE_INTERNAL_POLLING_THREAD | MHD_USE_AUTO, port, nullptr,
                                 nullptr, Callbacks::on_request, this, MHD_OPTION_LISTEN_SOCKET,
                                 listen_on(port), MHD_OPTION_CONNECTION_TIMEOUT, connection_timeout,
                                 MHD_OPTION_END));
  if (!daemon_) throw std::runtime_error("cannot serve metrics on port " + std::to_string(port));
  const MHD_DaemonInfo *const info = MHD_get_daemon_info(daemon_.get(), MHD_DAEMON_INFO_BIND_PORT);
  port_ = info != nullptr ? info->port : port;
}

Metrics_Server::~Metrics_Server() = default;

void Metrics_Server::publish(std::string text) {
  const std::lock_guard lock(mutex_);
  text_ = std::move(text);
}

std::string Metrics_Server::text() const {
  const std::lock_guard lock(mutex_);
  return text_;
}

}  // namespace kel::tavren::programs
