// A simulated camera: a real RTSP server on loopback that serves test pictures and tones.

#ifndef TAVREN_PROGRAMS_SIMULATED_CAMERA_H
#define TAVREN_PROGRAMS_SIMULATED_CAMERA_H

#include <memory>
#include <string>
#include <vector>

#include "camera_media.h"
#include "misbehaviour.h"

namespace kel::tavren::programs {

// How a simulated camera serves its streams.
struct Camera_Service {
  int port = 0;                   // 0: the system chooses
  std::string transport = "any";  // tcp, udp or any
  std::vector<Misbehaviour> misbehaviour;
};

// Serves on 127.0.0.1 from its construction to its destruction, in a thread that it starts. The
// framework must have been initialised.
class Simulated_Camera {
public:
  // Throws std::invalid_argument for a stream or transport that it does not know, Bus_Error if it
  // cannot listen, and what the library throws if it lacks a payloader.
  explicit Simulated_Camera(const Camera_Streams &streams, const Camera_Service &service = {});
  ~Simulated_Camera();

  Simulated_Camera(const Simulated_Camera &) = delete;
  Simulated_Camera &operator=(const Simulated_Camera &) = delete;

  // Where to reach it: rtsp://127.0.0.1:PORT/camera
  const std::string &uri() const noexcept;

private:
  class Server;
  std::unique_ptr<Server> server_;
};

}  // namespace kel::tavren::programs

#endif
