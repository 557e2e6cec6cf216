// The scope-exit guard.

#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

#include "elements.h"

namespace kel::tavren::tests {
namespace {

// Callers may use either name of the guard.
static_assert(std::is_same_v<Scope_Exit_Guard, boost::scope_exit::aux::guard<void>>);

// An exception from arm() would leak the resource that the guard was to release.
static_assert(noexcept(arm(std::declval<Scope_Exit_Guard &>(), std::declval<void (*)()>())));

TEST(ScopeExitGuard, RunsItsActionOnceAtTheEndOfItsScope) {
  int runs = 0;
  {
    Scope_Exit_Guard guard;
    arm(guard, [&runs] { ++runs; });
    EXPECT_EQ(runs, 0);
  }
  EXPECT_EQ(runs, 1);
}

TEST(ScopeExitGuard, RunsItsActionOnAThrow) {
  int runs = 0;
  try {
    Scope_Exit_Guard guard;
    arm(guard, [&runs] { ++runs; });
    throw std::runtime_error("failure");
  } catch (const std::runtime_error &) {
    EXPECT_EQ(runs, 1);
  }
  EXPECT_EQ(runs, 1);
}

TEST(ScopeExitGuard, RunsItsActionOnAnEarlyReturn) {
  int runs = 0;
  const auto leave = [&runs] {
    Scope_Exit_Guard guard;
    arm(guard, [&runs] { ++runs; });
    return runs;
  };
  EXPECT_EQ(leave(), 0);
  EXPECT_EQ(runs, 1);
}

TEST(ScopeExitGuard, RunsInReverseOrder) {
  std::string order;
  {
    Scope_Exit_Guard first;
    arm(first, [&order] { order += "first"; });
    Scope_Exit_Guard second;
    arm(second, [&order] { order += "second "; });
  }
  EXPECT_EQ(order, "second first");
}

TEST(ScopeExitGuard, DoesNothingIfNotArmed) {
  bool left = false;
  {
    const Scope_Exit_Guard unarmed;
    left = true;
  }
  EXPECT_TRUE(left);
}

TEST(ScopeExitGuard, RunsOnlyTheLastAction) {
  std::string ran;
  {
    Scope_Exit_Guard guard;
    arm(guard, [&ran] { ran += "first"; });
    arm(guard, [&ran] { ran += "second"; });
  }
  EXPECT_EQ(ran, "second");
}

TEST(ScopeExitGuard, ReleasesWhatTheScopeAcquired) {
  const Element element = make_element("identity");
  GstElement *const taken = GST_ELEMENT_CAST(gst_object_ref(element.get()));
  {
    Scope_Exit_Guard guard;
    arm(guard, [&taken] { gst_object_unref(taken); });
    EXPECT_EQ(reference_count(element.get()), 2U);
  }
  EXPECT_EQ(reference_count(element.get()), 1U);
}

// If an exception left the guard, it would be caught here, and the program would continue.
void leave_scope_by_throwing_action() {
  try {
    Scope_Exit_Guard guard;
    arm(guard, [] { throw std::runtime_error("out of the action"); });
  } catch (...) {
  }
}

TEST(ScopeExitGuardDeathTest, EndsTheProgramIfItsActionThrows) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  EXPECT_DEATH(leave_scope_by_throwing_action(), "out of the action");
}

}  // namespace
}  // namespace kel::tavren::tests
