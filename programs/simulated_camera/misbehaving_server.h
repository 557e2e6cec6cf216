// Does what a simulated camera is asked to do wrong.

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

  // Puts the gates behind the payloaders. Throws what the library throws if one is missing.
  void guard(const Camera_Elements &elements);

  // The first viewer plays; further calls have no effect. Only in a thread that runs the context.
  void start();

  // Lets everything through. Any thread.
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
