// A camera that is not there: a real RTSP server on loopback that serves test pictures and tones.

#ifndef TAVREN_PROGRAMS_SIMULATED_CAMERA_H
#define TAVREN_PROGRAMS_SIMULATED_CAMERA_H

#include <memory>
#include <string>

namespace kel::tavren::programs {

// What the camera sends.
struct Camera_Streams {
  std::string video = "h264";  // h264, jpeg, mpeg4, vp8 or none
  std::string audio = "aac";   // aac, mulaw, opus or none
  bool metadata = false;       // an ONVIF metadata stream beside them
};

// Serves from its making to its end, on 127.0.0.1 and a port that the system picks, from a thread
// of its own. The framework must have been initialised.
class Simulated_Camera {
public:
  // Throws std::invalid_argument for a stream that it does not know, std::runtime_error when it
  // cannot listen, and what the library throws when it lacks a payloader.
  explicit Simulated_Camera(const Camera_Streams &streams);
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
