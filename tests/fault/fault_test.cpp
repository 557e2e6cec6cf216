// Injects every possible failure into each call of the library, one at a time. Each time, checks
// that the call does not crash, leak a reference or leak memory, and that the next call works.
//
// outcomes.txt lists the failures in the framework and the result of the call, one per line. For
// each of its lines, this test also makes every allocation fail, both individually and together
// with all later ones.

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>

#include <gtest/gtest.h>
#include <unistd.h>

#include "abridged_outcome.h"
#include "framework_version.h"
#include "heap_watch.h"
#include "live_objects.h"
#include "rounds.h"

namespace kel::tavren::tests {

namespace {

std::string read_file(const char *path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

// Returns the scenario's section of outcomes.txt, up to the next empty line.
std::string expected_outcomes(const Scenario &scenario) {
  const std::string text = read_file(OUTCOMES_FILE);
  const std::string title = "\n" + text_of(scenario) + "\n";
  const std::size_t begin = text.find(title);
  if (begin == std::string::npos) return {};
  const std::size_t end = text.find("\n\n", begin + 1);
  return text.substr(begin + 1, end == std::string::npos ? end : end + 1 - (begin + 1));
}

// The current round, which is printed if the process crashes.
char replay[500];
struct sigaction abort_before;
struct sigaction fault_before;

// Prints the current round, and restores the previous signal handler.
void tell_replay(int signal) {
  const bool told = write(STDERR_FILENO, replay, std::strlen(replay)) >= 0;
  const bool restored =
      sigaction(signal, signal == SIGABRT ? &abort_before : &fault_before, nullptr) == 0;
  if (!told || !restored) _exit(EXIT_FAILURE);
}

void tell_replay_at_death() {
  struct sigaction tell {};
  tell.sa_handler = tell_replay;
  ASSERT_EQ(sigaction(SIGABRT, &tell, &abort_before), 0);
  ASSERT_EQ(sigaction(SIGSEGV, &tell, &fault_before), 0);
}

bool is_caused_since_1_20(const Scenario &scenario) {
  const std::string text = text_of(scenario);
  return text == "gst_bus_create_watch_or_throw, has one" ||
         text == "get_media_info, a timeout that is none";
}

class Faults : public testing::TestWithParam<Scenario> {
protected:
  static void SetUpTestSuite() {
    count_objects();
    tell_replay_at_death();
  }
  static void TearDownTestSuite() {
    EXPECT_EQ(sigaction(SIGABRT, &abort_before, nullptr), 0);
    EXPECT_EQ(sigaction(SIGSEGV, &fault_before, nullptr), 0);
  }

  void SetUp() override {
    if (framework_is_1_18() && is_caused_since_1_20(GetParam()))
      GTEST_SKIP() << "GStreamer 1.18 does not cause this error";
    undisturbed_ = call_once(GetParam().prepare(), {});
    failures_ = framework_failures(GetParam(), undisturbed_);
    // Run each round once, for memory that only the first call allocates, and keeps.
    for (const Disturbance &failure : failures_)
      call_and_recover(GetParam(), failure, undisturbed_.outcome);
    wait_for_threads();
  }

  void TearDown() override {
    EXPECT_TRUE(IsSkipped() || wanted_ == nullptr || played_ > 0) << "unknown round " << wanted_;
  }

  // Returns whether to run the round. All rounds run unless a particular one is requested.
  bool is_wanted(const Disturbance &disturbance) const {
    return wanted_ == nullptr || wanted_ == text_of(disturbance);
  }

  Round play(const Disturbance &disturbance) {
    const testing::TestInfo &test = *testing::UnitTest::GetInstance()->current_test_info();
    const std::string text = "to replay: ROUND='" + text_of(disturbance) +
                             "' fault_test --gtest_filter=" + test.test_suite_name() + "." +
                             test.name() + "\n";
    g_strlcpy(replay, text.c_str(), sizeof replay);
    SCOPED_TRACE(replay);
    ++played_;
    // The framework may keep memory, such as a table that has grown, but not each time.
    constexpr int ATTEMPTS = 3;
    for (int attempt = 1;; ++attempt) {
      forget_noted_blocks();
      const long objects = live_objects();
      Round round = call_and_recover(GetParam(), disturbance, undisturbed_.outcome);
      expect_no_more_objects(objects);
      if (memory_is_freed()) return round;
      if (attempt < ATTEMPTS) continue;
      ADD_FAILURE() << "leaked blocks of memory: " << noted_blocks();
      return round;
    }
  }

  Round undisturbed_;
  std::vector<Disturbance> failures_;
  const char *wanted_ = g_getenv("ROUND");
  int played_ = 0;
};

TEST_P(Faults, OfTheFrameworkAreReported) {
  std::string outcomes = text_of(GetParam()) + "\n";
  for (const Disturbance &failure : failures_) {
    if (!is_wanted(failure)) continue;
    const Round round = play(failure);
    outcomes += "  " + text_of(failure) + (failure.call != 0 ? " -> " : "") +
                abridge(round.outcome) + round.changes + "\n";
  }
  if (wanted_ == nullptr) {
    EXPECT_EQ(outcomes, expected_outcomes(GetParam()));
  }
  RecordProperty("operation", GetParam().operation);
  RecordProperty("framework", played_ - 1);
}

TEST_P(Faults, OfAllocationLeakNothing) {
  int allocations = 0;
  for (Disturbance disturbance : failures_) {
    const Round failed = call_and_recover(GetParam(), disturbance, undisturbed_.outcome);
    wait_for_threads();
    for (const bool persistent : {false, true}) {
      bool changed = false;
      for (int allocation = 1; allocation <= failed.allocations; ++allocation) {
        disturbance.allocation = allocation;
        disturbance.persistent = persistent;
        if (!is_wanted(disturbance)) continue;
        const Round round = play(disturbance);
        EXPECT_EQ(round.outcome, OUT_OF_MEMORY) << replay;
        EXPECT_EQ(round.allocations, allocation) << "more was allocated after a failed allocation";
        // At this point, the call has made either all or none of the changes that it makes without
        // the failure.
        if (!round.changes.empty()) changed = true;
        EXPECT_EQ(round.changes, changed ? failed.changes : "") << replay;
        allocations += persistent ? 0 : 1;
      }
    }
  }
  RecordProperty("operation", GetParam().operation);
  RecordProperty("allocations", allocations);
}

class VaryingCalls : public Faults {};

// A single failed call has either no effect or the same effect as if all of them failed.
TEST_P(VaryingCalls, ReportTheFailureOfEachCall) {
  for (const auto &[function, calls] : undisturbed_.framework_calls) {
    const std::string all_fail = play({function, EVERY_CALL}).outcome;
    for (int call = 1; call <= calls; ++call) {
      const std::string outcome = play({function, call}).outcome;
      EXPECT_TRUE(outcome == undisturbed_.outcome || outcome == all_fail) << outcome;
    }
  }
  RecordProperty("operation", GetParam().operation);
  RecordProperty("framework", played_);
}

std::vector<Scenario> scenarios_with_varying_calls() {
  std::vector<Scenario> varying;
  for (const Scenario &scenario : all_scenarios())
    if (scenario.trait == Trait::CALLS_VARY) varying.push_back(scenario);
  return varying;
}

std::string test_name(const testing::TestParamInfo<Scenario> &test) {
  std::string name = text_of(test.param);
  for (char &c : name)
    if (!g_ascii_isalnum(c)) c = '_';
  return name;
}

INSTANTIATE_TEST_SUITE_P(All, Faults, testing::ValuesIn(all_scenarios()), test_name);
INSTANTIATE_TEST_SUITE_P(All, VaryingCalls, testing::ValuesIn(scenarios_with_varying_calls()),
                         test_name);

// Before 2.76, GLib allocates list nodes from pools unless G_SLICE disables this.
bool list_nodes_are_allocated_alone() {
  return glib_check_version(2, 76, 0) == nullptr ||
         g_strcmp0(g_getenv("G_SLICE"), "always-malloc") == 0;
}

// If the watch recorded nothing, all rounds would pass.
TEST(HeapWatch, DetectsTextsAndListNodesThatAreNotFreed) {
  if (!heap_is_watched() || !list_nodes_are_allocated_alone())
    GTEST_SKIP() << "another allocator is in use";
  const Element element = make_element("identity", "parser");
  forget_noted_blocks();
  gchar *name = nullptr;
  GList *list = nullptr;
  {
    const Heap_Watch watch;
    name = gst_object_get_name(GST_OBJECT_CAST(element.get()));
    g_free(gst_object_get_name(GST_OBJECT_CAST(element.get())));
    list = g_list_prepend(nullptr, nullptr);
  }
  EXPECT_EQ(noted_blocks(), 2);
  g_free(name);
  EXPECT_EQ(noted_blocks(), 1);
  g_list_free(list);
  EXPECT_EQ(noted_blocks(), 0);
}

// Each section belongs to a scenario, and each scenario has a section.
TEST(FaultOutcomes, AreThoseOfTheScenarios) {
  std::set<std::string> titles;
  for (const Scenario &scenario : all_scenarios())
    titles.insert(text_of(scenario));
  EXPECT_EQ(titles.size(), all_scenarios().size()) << "two scenarios with the same name";

  std::set<std::string> found;
  std::istringstream lines(read_file(OUTCOMES_FILE));
  for (std::string line; std::getline(lines, line);)
    if (!line.empty() && line.front() != ' ' && line.front() != '#') found.insert(line);
  EXPECT_EQ(found, titles);
}

// Every function of the interface has a scenario.
TEST(FaultScenarios, CoverAllOperations) {
  std::set<std::string> operations;
  for (const Scenario &scenario : all_scenarios())
    operations.insert(scenario.operation);

  // Lines that consist of a name only are operations.
  std::set<std::string> exported;
  std::istringstream lines(read_file(EXPORTS_FILE));
  for (std::string line; std::getline(lines, line);)
    if (line.find_first_not_of("abcdefghijklmnopqrstuvwxyz_") == std::string::npos)
      exported.insert(line);
  EXPECT_EQ(operations, exported);
}

// Every text of every code is thrown.
TEST(FaultOutcomes, CoverEveryPlaceThatThrows) {
  std::set<std::string> thrown;
  for (const Scenario &scenario : all_scenarios()) {
    if (framework_is_1_18() && is_caused_since_1_20(scenario)) continue;
    const Round undisturbed = call_once(scenario.prepare(), {});
    for (const Disturbance &failure : framework_failures(scenario, undisturbed)) {
      const std::string outcome = call_and_recover(scenario, failure, undisturbed.outcome).outcome;
      if (const Listed_Error *const error = find_listed_error(outcome))
        thrown.insert(title_of(*error));
    }
  }
  std::set<std::string> listed;
  for (const Listed_Error &error : listed_errors())
    listed.insert(title_of(error));
  EXPECT_EQ(thrown, listed);
  RecordProperty("texts", static_cast<int>(thrown.size()));
  RecordProperty("listed_texts", static_cast<int>(listed.size()));
}

}  // namespace
}  // namespace kel::tavren::tests
