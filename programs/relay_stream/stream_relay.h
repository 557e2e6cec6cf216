// A camera's streams, served again over RTSP as they are: unpacked and packed, never decoded.

#ifndef TAVREN_PROGRAMS_STREAM_RELAY_H
#define TAVREN_PROGRAMS_STREAM_RELAY_H

#include <memory>
#include <string>
#include <vector>

#include "camera/camera_streams.h"

namespace kel::tavren::programs {

// Serves from its making to its end, on 127.0.0.1, from the default main context. The camera is
// played while somebody watches, once for all who watch.
class Stream_Relay {
public:
  // Port 0 lets the system pick one. Throws std::runtime_error when none of the streams can be
  // relayed or it cannot listen.
  Stream_Relay(const std::string &camera_uri, std::vector<Camera_Stream> streams, int port);
  // Hangs up on everybody.
  ~Stream_Relay();

  Stream_Relay(const Stream_Relay &) = delete;
  Stream_Relay &operator=(const Stream_Relay &) = delete;

  // Where to watch.
  const std::string &uri() const noexcept;

  // Runs the default main context until it is asked to end, or for so many seconds when not 0.
  // Throws what made it impossible to go on: above all, that the camera went away.
  void run(int seconds);

private:
  class Server;
  std::unique_ptr<Server> server_;
};

}  // namespace kel::tavren::programs

#endif
