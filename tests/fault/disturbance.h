// How fault tests make one thing go wrong in a call: an allocation, a function of the framework.

#ifndef TAVREN_TESTS_DISTURBANCE_H
#define TAVREN_TESTS_DISTURBANCE_H

#include <string_view>
#include <utility>
#include <vector>

#include "heap_watch.h"

namespace kel::tavren::tests {

constexpr int EVERY_CALL = -1;

// What goes wrong. Both count from 1, within one disturbed call.
struct Disturbance {
  // The function of the framework that answers with its failure instead of doing its work, and
  // which of the library's calls of it does, or EVERY_CALL.
  std::string_view function;
  int call = 0;
  // The allocation that fails, and whether all that follow it fail too.
  int allocation = 0;
  bool persistent = false;
};

// What the library did in a disturbed call.
struct Observed {
  int allocations = 0;
  // How often it called each function of the framework that can fail.
  std::vector<std::pair<std::string_view, int>> calls;
};

// From now on the disturbed calls of this thread go wrong in this way.
void disturb_with(const Disturbance &disturbance);

// Of the disturbed calls since then.
const Observed &observed();

// What is called in its scope, on this thread, goes wrong as planned. The memory that it allocates
// is noted.
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

// For what stands in for a function of the framework: whether this call of it is the one to fail.
// Only the library's own calls count, not those that the framework makes itself.
bool fails_now(const char *function, const void *caller);

}  // namespace kel::tavren::tests

#endif
