// Records warnings of GLib and the framework while a test runs. A test fails if it does not expect
// them.

#ifndef TAVREN_TESTS_LOG_WATCH_H
#define TAVREN_TESTS_LOG_WATCH_H

#include <string>

namespace kel::tavren::tests {

// Installs the watch for the rest of the process. A warning or a critical that does not match any
// log below fails the current test.
void watch_logs();

// Returns whether such logs were written after the last test; prints them to stderr.
bool logs_after_tests();

// Allows warnings and criticals that contain a text, until the end of its scope.
class Allowed_Log {
public:
  explicit Allowed_Log(std::string text);
  ~Allowed_Log();

  Allowed_Log(const Allowed_Log &) = delete;
  Allowed_Log &operator=(const Allowed_Log &) = delete;

  const std::string &text() const { return text_; }
  // Returns the number of matching logs so far.
  int count() const;

private:
  friend struct Log_Watch;
  std::string text_;
  int count_ = 0;
};

// Expects at least one matching log; otherwise, the test fails.
class Expected_Log : public Allowed_Log {
public:
  using Allowed_Log::Allowed_Log;
  ~Expected_Log();
};

}  // namespace kel::tavren::tests

#endif
