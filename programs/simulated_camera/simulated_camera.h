// A simulated camera: an RTSP server on loopback that serves test pictures and tones.

#ifndef TAVREN_PROGRAMS_SIMULATED_CAMERA_H
#define TAVREN_PROGRAMS_SIMULATED_CAMERA_H

#include <memory>
#include <string>
#include <vector>

#include "camera_media.h"
#include "misbehaviour.h"

namespace kel::tavren::programs {

// The server options of a simulated camera.
struct Camera_Service {
  int port = 0;                   // 0: the system chooses
  std::string transport = "any";  // tcp, udp or any
  std::vector<Misbehaviour> misbehaviour;
};

// Serves on 127.0.0.1 from construction to destruction, in a separate thread. The framework must be
// initialised.
class Simulated_Camera {
public:
  // Throws std::invalid_argument for an unknown stream or transport, and Bus_Error if the server
  // cannot listen. Propagates the library's exception if a payloader is missing.
  explicit Simulated_Camera(const Camera_Streams &streams, const Camera_Service &service = {});
  ~Simulated_Camera();

  Simulated_Camera(const Simulated_Camera &) = delete;
  Simulated_Camera &operator=(const Simulated_Camera &) = delete;

  // The address of the camera: rtsp://127.0.0.1:PORT/camera
  const std::string &uri() const noexcept;

private:
  class Server;
  std::unique_ptr<Server> server_;
};

}  // namespace kel::tavren::programs

#endif
