// The interface to which a recorder reports events.

#ifndef TAVREN_PROGRAMS_RECORDER_LOG_H
#define TAVREN_PROGRAMS_RECORDER_LOG_H

#include <exception>
#include <string>

namespace kel::tavren::programs {

class Recorder_Log {
public:
  Recorder_Log() = default;
  virtual ~Recorder_Log() = default;
  Recorder_Log(const Recorder_Log &) = delete;
  Recorder_Log &operator=(const Recorder_Log &) = delete;

  // Reports an event in one line. `cause` is the failure that caused it; null if there is none.
  virtual void line(const std::string &text, const std::exception_ptr &cause) = 0;
  void line(const std::string &text) { line(text, nullptr); }
  // Reports the progress. Called several times a second.
  virtual void progress(const std::string &text) = 0;
};

}  // namespace kel::tavren::programs

#endif
