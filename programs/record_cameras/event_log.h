// Logs the events of all cameras.

#ifndef TAVREN_PROGRAMS_EVENT_LOG_H
#define TAVREN_PROGRAMS_EVENT_LOG_H

#include <exception>
#include <mutex>
#include <string>

#include "recorder/recorder_log.h"

namespace kel::tavren::programs {

// Writes a line for each event. Can be used from any thread.
class Event_Log {
public:
  enum class Format {
    text,  // CAMERA: TEXT
    json   // an object with the members time, camera, code and text
  };

  // If `quiet`, writes failures only.
  Event_Log(Format format, bool quiet) : format_(format), quiet_(quiet) {}

  // Writes an event to stdout. `camera` is empty for an event of the program. `cause` may be null.
  void write(const std::string &camera, const std::string &text, const std::exception_ptr &cause);
  // Writes a failure: as text to stderr, as JSON to stdout.
  void write_failure(const std::string &camera, const std::exception_ptr &failure);

private:
  const Format format_;
  const bool quiet_;
  std::mutex mutex_;
};

// The log of one camera.
class Camera_Log : public Recorder_Log {
public:
  Camera_Log(Event_Log &log, std::string camera) : log_(log), camera_(std::move(camera)) {}

  using Recorder_Log::line;
  void line(const std::string &text, const std::exception_ptr &cause) override {
    log_.write(camera_, text, cause);
  }
  void progress(const std::string &) override {}

private:
  Event_Log &log_;
  std::string camera_;
};

}  // namespace kel::tavren::programs

#endif
