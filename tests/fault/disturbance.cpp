#include "disturbance.h"

#include <algorithm>

#include "live_blocks.h"
#include "replaced_function.h"

namespace kel::tavren::tests {
namespace {

thread_local bool disturbing = false;
Disturbance plan;
Observed seen;

bool allocation_fails() noexcept {
  if (!disturbing) return false;
  const int number = ++seen.allocations;
  return number == plan.allocation ||
         (plan.persistent && plan.allocation != 0 && number > plan.allocation);
}

}  // namespace

void disturb_with(const Disturbance &disturbance) {
  constexpr std::size_t MORE_THAN_THE_LIBRARY_CALLS = 100;
  plan = disturbance;
  seen.allocations = 0;
  seen.calls.clear();
  seen.calls.reserve(MORE_THAN_THE_LIBRARY_CALLS);
  fail_allocations_when(allocation_fails);
}

const Observed &observed() {
  return seen;
}

Disturbed::Disturbed() {
  disturbing = true;
}

Disturbed::~Disturbed() {
  disturbing = false;
}

// Uses reserved memory: nothing is allocated here.
bool fails_now(const char *function, const void *caller) {
  if (!disturbing || !is_in_library(caller)) return false;
  auto counted = std::find_if(seen.calls.begin(), seen.calls.end(),
                              [function](const auto &call) { return call.first == function; });
  if (counted == seen.calls.end()) counted = seen.calls.insert(counted, {function, 0});
  const int number = ++counted->second;
  return plan.function == function && (plan.call == number || plan.call == EVERY_CALL);
}

}  // namespace kel::tavren::tests
