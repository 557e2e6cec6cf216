// An RTSP server on the loopback interface.

#ifndef TAVREN_PROGRAMS_LOOPBACK_SERVER_H
#define TAVREN_PROGRAMS_LOOPBACK_SERVER_H

#include <optional>
#include <string>

#include <tavren/handles/reference_adapters.h>

#include "main_loop/timer.h"

namespace kel::tavren::programs {

class Loopback_Server {
public:
  // Listens on 127.0.0.1 in a main context; a null context means the default context. If the port
  // is 0, the system chooses one. Throws Bus_Error if the server cannot listen there.
  Loopback_Server(GMainContext *context, int port);
  // Stops listening and disconnects all clients.
  ~Loopback_Server();

  Loopback_Server(const Loopback_Server &) = delete;
  Loopback_Server &operator=(const Loopback_Server &) = delete;

  GstRTSPServer *get() const noexcept { return server_.get(); }

  // Returns the address of a mount path such as "/camera".
  std::string uri(const std::string &path) const;

  // Serves the media of a factory at a path, in place of any factory that was mounted there.
  void mount(const std::string &path, const boost::intrusive_ptr<GstRTSPMediaFactory> &factory);
  void unmount(const std::string &path);

  void disconnect_clients() noexcept;

  // Refuses connections until the server listens again, on the same port.
  void stop_listening() noexcept;
  void listen();

private:
  void keep_port() noexcept;
  const boost::intrusive_ptr<GMainContext> context_;
  const boost::intrusive_ptr<GstRTSPServer> server_;
  boost::intrusive_ptr<GSource> listener_;
  int port_;
  std::optional<Timer> expiry_;
};

}  // namespace kel::tavren::programs

#endif
