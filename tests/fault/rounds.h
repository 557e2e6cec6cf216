// The rounds of the fault tests: disturbed calls, and what they leave behind.

#ifndef TAVREN_TESTS_ROUNDS_H
#define TAVREN_TESTS_ROUNDS_H

#include <string>
#include <utility>
#include <vector>

#include "scenario.h"

namespace kel::tavren::tests {

// The outcome of a call for which there is not enough memory.
inline const std::string OUT_OF_MEMORY = "throws std::bad_alloc";

std::string text_of(const Scenario &scenario);
// Returns an empty text if there is no disturbance.
std::string text_of(const Disturbance &disturbance);

std::vector<Scenario> all_scenarios();

// The result of one call.
struct Round {
  std::string outcome;
  // The objects whose reference count has changed, and the differences.
  std::string changes;
  int allocations = 0;
  std::vector<std::pair<std::string, int>> framework_calls;
};

Round call_once(const Call &call, const Disturbance &disturbance);

// Makes a disturbed call on new objects and, if it failed, an undisturbed call on the same objects,
// provided that they are unchanged.
Round call_and_recover(const Scenario &scenario, const Disturbance &disturbance,
                       const std::string &undisturbed);

// Returns all failures of the framework in a scenario. The first entry is the undisturbed call.
std::vector<Disturbance> framework_failures(const Scenario &scenario, const Round &undisturbed);

// Threads of the framework may need some time to release their references.
void expect_no_more_objects(long before);

// Returns whether all recorded memory is freed, which threads of the framework may do slightly
// later.
bool memory_is_freed();

// Waits until the framework's threads have presumably released their references.
void wait_for_threads();

}  // namespace kel::tavren::tests

#endif
