// Makes an allocation or a function of the framework fail during a call.

#ifndef TAVREN_TESTS_DISTURBANCE_H
#define TAVREN_TESTS_DISTURBANCE_H

#include <string_view>
#include <utility>
#include <vector>

#include "heap_watch.h"

namespace kel::tavren::tests {

constexpr int EVERY_CALL = -1;

// The failures to simulate. Both numbers count from 1 within one disturbed call.
struct Disturbance {
  // The function of the framework that returns its failure value without doing its work, and the
  // number of the library's call to it, or EVERY_CALL.
  std::string_view function;
  int call = 0;
  // The allocation that fails. If persistent, all later ones fail, too.
  int allocation = 0;
  bool persistent = false;
};

// The library's activity in a disturbed call.
struct Observed {
  int allocations = 0;
  // The number of calls of each function of the framework that can fail.
  std::vector<std::pair<std::string_view, int>> calls;
};

// Sets the failures for this thread's next disturbed calls.
void disturb_with(const Disturbance &disturbance);

// Returns the activity of the disturbed calls since then.
const Observed &observed();

// While an instance exists, calls on this thread fail as configured, and the allocated memory is
// recorded.
class Disturbed {
public:
  Disturbed();
  ~Disturbed();
  Disturbed(const Disturbed &) = delete;
  Disturbed &operator=(const Disturbed &) = delete;

private:
  Heap_Watch heap_;
};

template <typename Call>
auto disturbed(Call call) {
  const Disturbed now;
  return call();
}

// For stand-ins: returns whether this call of the function must fail. Only calls by the library
// count, not those by the framework.
bool fails_now(const char *function, const void *caller);

}  // namespace kel::tavren::tests

#endif
