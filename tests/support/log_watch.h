// What GLib and the framework warn about while a test runs: expected by the test, or its failure.

#ifndef TAVREN_TESTS_LOG_WATCH_H
#define TAVREN_TESTS_LOG_WATCH_H

#include <string>

namespace kel::tavren::tests {

// Puts the watch in place for the rest of the process: a warning or a critical that no log below
// stands for fails the test that drew it.
void watch_logs();

// Whether such logs came when no test ran any more; they are told on standard error.
bool logs_after_tests();

// Lets warnings and criticals that contain a text pass, until the end of its scope.
class Allowed_Log {
public:
  explicit Allowed_Log(std::string text);
  ~Allowed_Log();

  Allowed_Log(const Allowed_Log &) = delete;
  Allowed_Log &operator=(const Allowed_Log &) = delete;

  const std::string &text() const { return text_; }
  // How many have come so far.
  int count() const;

private:
  friend struct Log_Watch;
  std::string text_;
  int count_ = 0;
};

// Expects at least one of them; fails the test when none came.
class Expected_Log : public Allowed_Log {
public:
  using Allowed_Log::Allowed_Log;
  ~Expected_Log();
};

}  // namespace kel::tavren::tests

#endif
