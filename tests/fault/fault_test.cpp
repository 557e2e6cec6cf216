// Makes everything fail that can fail in a call of the library, one thing at a time. Each time,
// checks that the call does not crash, leak a reference or leak memory, and that the next call
// works.
//
// outcomes.txt lists the failures in the framework and the result of the call, one per line. For
// each of its lines, this test also makes every allocation fail, both individually and together
// with all later ones.

#include <charconv>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>

#include <gtest/gtest.h>
#include <unistd.h>

#include "framework_version.h"
#include "heap_watch.h"
#include "live_blocks.h"
#include "live_objects.h"
#include "log_watch.h"
#include "scenario.h"

namespace kel::tavren::tests {

namespace {

std::string text_of(const Scenario &scenario) {
  return testing::PrintToString(scenario);
}

// Returns an empty text if there is no disturbance.
std::string text_of(const Disturbance &disturbance) {
  std::ostringstream text;
  if (disturbance.call == EVERY_CALL)
    text << disturbance.function << ", every call";
  else if (disturbance.call != 0)
    text << disturbance.function << " " << disturbance.call;
  if (disturbance.call != 0 && disturbance.allocation != 0) text << ", ";
  if (disturbance.allocation != 0)
    text << "allocation " << disturbance.allocation << (disturbance.persistent ? " onwards" : "");
  return text.str();
}

const std::string OUT_OF_MEMORY = "throws std::bad_alloc";

std::vector<Scenario> all_scenarios() {
  std::vector<Scenario> all;
  for (const auto &family :
       {check_and_lookup_scenarios(), construction_scenarios(), control_scenarios(),
        pad_scenarios(), link_scenarios(), branch_scenarios(), ancestry_scenarios(),
        media_type_scenarios(), discovery_scenarios(), caps_scenarios(), search_scenarios(),
        text_scenarios()})
    all.insert(all.end(), family.begin(), family.end());
  return all;
}

// Writes the result of a call to a text with reserved capacity, so that no allocation outlives the
// call.
void tell_outcome(const Call &call, std::string &outcome) {
  const auto tell = [&outcome](const char *class_name, const auto &error) {
    char number[16] = {};
    std::to_chars(std::begin(number), std::end(number) - 1, static_cast<int>(error.code()), 16);
    outcome.append("throws ").append(class_name).append("0x").append(number);
    outcome.append(" \"").append(error.what()).append("\"");
  };
  try {
    outcome.append("returns \"").append(call.run()).append("\"");
  } catch (const Backend_Error<std::runtime_error> &error) {
    outcome.clear();
    tell("", error);
  } catch (const Tavren_Error<std::logic_error> &error) {
    outcome.clear();
    tell("a logic error, ", error);
  } catch (const std::out_of_range &) {
    outcome = "throws std::out_of_range";
  } catch (const std::bad_alloc &) {
    outcome = OUT_OF_MEMORY;
  }
}

// The result of one call.
struct Round {
  std::string outcome;
  // The objects whose reference count has changed, and the differences.
  std::string changes;
  int allocations = 0;
  std::vector<std::pair<std::string, int>> framework_calls;
};

std::vector<int> counts_of(const std::vector<Involved> &involved) {
  std::vector<int> counts;
  for (const Involved &object : involved)
    counts.push_back(object.count());
  return counts;
}

// Describes the changes, and reverts those that nothing else reverts.
std::string note_changes(const std::vector<Involved> &involved, const std::vector<int> &before) {
  std::ostringstream changes;
  for (std::size_t i = 0; i < involved.size(); ++i)
    if (const int change = involved[i].count() - before[i]; change != 0) {
      changes << " [" << involved[i].name << " " << std::showpos << change << std::noshowpos << "]";
      involved[i].make_up(change);
    }
  return changes.str();
}

Round call_once(const Call &call, const Disturbance &disturbance) {
  constexpr std::size_t LONGEST_TEXT = 2000;
  Round round;
  round.outcome.reserve(LONGEST_TEXT);
  const std::vector<int> before = counts_of(call.involved);
  disturb_with(disturbance);

  const long blocks_before = live_blocks();
  tell_outcome(call, round.outcome);
  EXPECT_EQ(live_blocks(), blocks_before) << "memory was lost";

  round.changes = note_changes(call.involved, before);
  round.allocations = observed().allocations;
  for (const auto &[function, calls] : observed().calls)
    round.framework_calls.emplace_back(function, calls);
  return round;
}

// Threads of the framework may need some time to release their references.
void expect_no_more_objects(long before) {
  constexpr gint64 PATIENCE = 5 * G_TIME_SPAN_SECOND;
  const gint64 deadline = g_get_monotonic_time() + PATIENCE;
  while (live_objects() != before && g_get_monotonic_time() < deadline)
    g_usleep(G_TIME_SPAN_MILLISECOND);
  EXPECT_EQ(live_objects(), before) << "objects of the framework were lost";
}

// Returns whether all recorded memory is freed, which threads of the framework may do slightly
// later.
bool memory_is_freed() {
  constexpr gint64 PATIENCE = G_TIME_SPAN_SECOND;
  const gint64 deadline = g_get_monotonic_time() + PATIENCE;
  while (noted_blocks() != 0 && g_get_monotonic_time() < deadline)
    g_usleep(G_TIME_SPAN_MILLISECOND);
  return noted_blocks() == 0;
}

// Waits until the framework's threads have presumably released their references.
void wait_for_threads() {
  constexpr int CALM = 5;
  long before = live_objects();
  for (int calm = 0; calm < CALM; ++calm) {
    g_usleep(G_TIME_SPAN_MILLISECOND);
    if (const long now = live_objects(); now != before) {
      calm = 0;
      before = now;
    }
  }
}

// Makes a disturbed call on new objects and, if it failed, an undisturbed call on the same objects,
// provided that they are unchanged.
Round call_and_recover(const Scenario &scenario, const Disturbance &disturbance,
                       const std::string &undisturbed) {
  Call call = scenario.prepare();
  Round round = call_once(call, disturbance);
  if (round.outcome != undisturbed) {
    if (!round.changes.empty() || scenario.trait == Trait::KEEPS_PARTIAL_WORK)
      call = scenario.prepare();
    EXPECT_EQ(call_once(call, {}).outcome, undisturbed) << "the next call is not what it was";
  }
  return round;
}

// Returns all failures of the framework in a scenario. The first entry is the undisturbed call.
std::vector<Disturbance> framework_failures(const Scenario &scenario, const Round &undisturbed) {
  std::vector<Disturbance> failures{{}};
  for (const auto &[function, calls] : undisturbed.framework_calls) {
    if (scenario.trait == Trait::CALLS_VARY) {
      failures.push_back({function, EVERY_CALL});
      continue;
    }
    for (int call = 1; call <= calls; ++call)
      failures.push_back({function, call});
  }
  return failures;
}

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
      GTEST_SKIP() << "GStreamer 1.18 does not cause it";
    undisturbed_ = call_once(GetParam().prepare(), {});
    failures_ = framework_failures(GetParam(), undisturbed_);
    // Run each round once, for memory that only the first call allocates, and keeps.
    for (const Disturbance &failure : failures_)
      call_and_recover(GetParam(), failure, undisturbed_.outcome);
    wait_for_threads();
  }

  void TearDown() override {
    EXPECT_TRUE(IsSkipped() || wanted_ == nullptr || played_ > 0)
        << "there is no round " << wanted_;
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
      ADD_FAILURE() << "blocks of memory that were lost: " << noted_blocks();
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
    outcomes += "  " + text_of(failure) + (failure.call != 0 ? " -> " : "") + round.outcome +
                round.changes + "\n";
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
        EXPECT_EQ(round.allocations, allocation) << "more was allocated when one had failed";
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

// A watch that records nothing would make all rounds pass.
TEST(HeapWatch, DetectsTextsAndListNodesThatAreNotFreed) {
  if (!heap_is_watched() || !list_nodes_are_allocated_alone())
    GTEST_SKIP() << "another allocator is in place";
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
  EXPECT_EQ(titles.size(), all_scenarios().size()) << "two scenarios of one name";

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

// Returns the numbers of the enumeration, in the format of the outcomes.
std::set<std::string> defined_codes() {
  std::set<std::string> codes;
  std::istringstream lines(read_file(CODES_FILE));
  for (std::string line; std::getline(lines, line);)
    if (const std::size_t number = line.find(" = 0x"); number != std::string::npos) {
      std::string code = line.substr(number + 3, line.find(',', number) - (number + 3));
      for (char &c : code)
        c = g_ascii_tolower(c);
      codes.insert(code);
    }
  return codes;
}

// Every code that is thrown occurs in the outcomes. If two places throw the same code, so does each
// text.
TEST(FaultOutcomes, CoverEveryPlaceThatThrows) {
  std::set<std::string> codes;
  std::set<std::string> texts;
  for (const Scenario &scenario : all_scenarios()) {
    if (framework_is_1_18() && is_caused_since_1_20(scenario)) continue;
    const Round undisturbed = call_once(scenario.prepare(), {});
    for (const Disturbance &failure : framework_failures(scenario, undisturbed)) {
      const std::string outcome = call_and_recover(scenario, failure, undisturbed.outcome).outcome;
      if (const std::size_t code = outcome.find("0x"); code != std::string::npos) {
        codes.insert(outcome.substr(code, outcome.find(' ', code) - code));
        texts.insert(outcome.substr(code));
      }
    }
  }
  EXPECT_EQ(codes, defined_codes());
  for (const std::string kind : {"first", "second"})
    EXPECT_EQ(texts.count("0x15240 \"Topmost parent mismatch of the " + kind +
                          " kind in verify_element_top_parent\""),
              1U);
  RecordProperty("codes", static_cast<int>(codes.size()));
  RecordProperty("defined_codes", static_cast<int>(defined_codes().size()));
}

}  // namespace
}  // namespace kel::tavren::tests
