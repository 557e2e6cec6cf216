// What GLib and the framework warn about while a test runs: expected by the test, or its failure.

#ifndef TAVREN_TESTS_LOG_WATCH_H
#define TAVREN_TESTS_LOG_WATCH_H

#include <string>

namespace kel::tavren::tests {

// Puts the watch in place for the rest of the process: a warning or a critical that no
// Expected_Log stands for fails the test that drew it.
void watch_logs();

// Expects at least one warning or critical that contains a text, until the end of its scope; fails
// the test when none came.
class Expected_Log {
public:
  explicit Expected_Log(std::string text);
  ~Expected_Log();

  Expected_Log(const Expected_Log &) = delete;
  Expected_Log &operator=(const Expected_Log &) = delete;

  // How many have come so far.
  int count() const;

private:
  friend struct Log_Watch;
  std::string text_;
  int count_ = 0;
};

}  // namespace kel::tavren::tests

#endif
