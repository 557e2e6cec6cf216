// A camera that is recorded in a thread.

#ifndef TAVREN_PROGRAMS_RECORDER_THREAD_H
#define TAVREN_PROGRAMS_RECORDER_THREAD_H

#include <atomic>
#include <exception>
#include <string>
#include <thread>

#include <tavren/handles/reference_adapters.h>

#include "event_log.h"
#include "recorder/camera_recorder.h"

namespace kel::tavren::programs {

// Records a camera with a separate main context and thread, because closing the connection to a
// camera that does not respond takes seconds. Call all functions from the owner's thread.
class Recorder_Thread {
public:
  // Reserves the file, and throws the exceptions of Camera_Recorder. The log must outlive this
  // object.
  Recorder_Thread(const Recorder_Options &options, Event_Log &log);
  // Stops and waits for the end.
  ~Recorder_Thread();

  Recorder_Thread(const Recorder_Thread &) = delete;
  Recorder_Thread &operator=(const Recorder_Thread &) = delete;

  // Starts to record, unless it has already started.
  void start() noexcept;
  // Ends the recording. Returns at once. A second call does not wait for an unfinished file.
  void stop();

  bool has_ended() const noexcept { return has_ended_; }
  // Returns whether the recording has ended with a failure.
  bool has_failed() const noexcept { return has_ended_ && failure_; }

  Recorder_Status status() const;

private:
  void record() noexcept;
  void end(std::exception_ptr failure) noexcept;

  const std::string name_;
  Event_Log &events_;
  Camera_Log log_;
  const boost::intrusive_ptr<GMainContext> context_;
  Camera_Recorder recorder_;
  std::atomic<bool> is_stopping_{false};
  std::exception_ptr failure_;  // constant after has_ended_ is set
  gint64 ended_at_ = 0;         // UTC in us; constant after has_ended_ is set
  std::atomic<bool> has_ended_{false};
  std::thread thread_;
};

}  // namespace kel::tavren::programs

#endif
