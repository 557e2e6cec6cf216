// Serves metrics over HTTP.

#ifndef TAVREN_PROGRAMS_METRICS_SERVER_H
#define TAVREN_PROGRAMS_METRICS_SERVER_H

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

struct MHD_Daemon;

namespace kel::tavren::programs {

// Answers GET requests for /metrics on 127.0.0.1, in a separate thread.
class Metrics_Server {
public:
  // If the port is 0, the system chooses one. Throws std::runtime_error if the port is in use.
  explicit Metrics_Server(std::uint16_t port);
  ~Metrics_Server();

  Metrics_Server(const Metrics_Server &) = delete;
  Metrics_Server &operator=(const Metrics_Server &) = delete;

  std::uint16_t port() const noexcept { return port_; }

  // Sets the text of the following responses.
  void publish(std::string text);

private:
  struct Callbacks;
  struct Stop {
    void operator()(MHD_Daemon *daemon) const noexcept;
  };

  std::string text() const;

  mutable std::mutex mutex_;
  std::string text_;  // guarded by the mutex
  std::uint16_t port_ = 0;
  std::unique_ptr<MHD_Daemon, Stop> daemon_;
};

}  // namespace kel::tavren::programs

#endif
