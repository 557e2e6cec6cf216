// Performs the requested misbehaviour of a simulated camera.

#ifndef TAVREN_PROGRAMS_MISBEHAVING_SERVER_H
#define TAVREN_PROGRAMS_MISBEHAVING_SERVER_H

#include <list>
#include <utility>
#include <vector>

#include "camera_media.h"
#include "main_loop/timer.h"
#include "misbehaviour.h"
#include "rtsp_server/loopback_server.h"
#include "stream_gate.h"

namespace kel::tavren::programs {

class Misbehaving_Server {
public:
  Misbehaving_Server(GMainContext *context, Loopback_Server &server,
                     std::vector<Misbehaviour> misbehaviour)
      : context_(context), server_(server), misbehaviour_(std::move(misbehaviour)) {}
  ~Misbehaving_Server() = default;

  Misbehaving_Server(const Misbehaving_Server &) = delete;
  Misbehaving_Server &operator=(const Misbehaving_Server &) = delete;

  // Adds gates after the payloaders. Propagates the library's exception if a payloader is missing.
  void guard(const Camera_Elements &elements);

  // Call this when the first viewer plays; further calls have no effect. Only for the thread that
  // runs the context.
  void start();

  // Opens all gates. Thread-safe.
  void stop() noexcept;

private:
  void schedule(double seconds, std::function<void()> action);
  void begin(const Misbehaviour &misbehaviour);
  void listen_again() noexcept;

  GMainContext *const context_;
  Loopback_Server &server_;
  const std::vector<Misbehaviour> misbehaviour_;
  bool started_ = false;
  Stream_Gate video_;
  Stream_Gate audio_;
  Stream_Gate metadata_;
  std::list<Timer> timers_;
};

}  // namespace kel::tavren::programs

#endif
