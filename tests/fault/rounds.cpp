#include "rounds.h"

#include <charconv>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include <gtest/gtest.h>

#include "heap_watch.h"
#include "live_blocks.h"
#include "live_objects.h"

namespace kel::tavren::tests {
namespace {

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

}  // namespace

std::string text_of(const Scenario &scenario) {
  return testing::PrintToString(scenario);
}

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

Round call_once(const Call &call, const Disturbance &disturbance) {
  constexpr std::size_t LONGEST_TEXT = 2000;
  Round round;
  round.outcome.reserve(LONGEST_TEXT);
  const std::vector<int> before = counts_of(call.involved);
  disturb_with(disturbance);

  const long blocks_before = live_blocks();
  tell_outcome(call, round.outcome);
  EXPECT_EQ(live_blocks(), blocks_before) << "memory was leaked";

  round.changes = note_changes(call.involved, before);
  round.allocations = observed().allocations;
  for (const auto &[function, calls] : observed().calls)
    round.framework_calls.emplace_back(function, calls);
  return round;
}

void expect_no_more_objects(long before) {
  constexpr gint64 PATIENCE = 5 * G_TIME_SPAN_SECOND;
  const gint64 deadline = g_get_monotonic_time() + PATIENCE;
  while (live_objects() != before && g_get_monotonic_time() < deadline)
    g_usleep(G_TIME_SPAN_MILLISECOND);
  EXPECT_EQ(live_objects(), before) << "objects of the framework were leaked";
}

bool memory_is_freed() {
  constexpr gint64 PATIENCE = G_TIME_SPAN_SECOND;
  const gint64 deadline = g_get_monotonic_time() + PATIENCE;
  while (noted_blocks() != 0 && g_get_monotonic_time() < deadline)
    g_usleep(G_TIME_SPAN_MILLISECOND);
  return noted_blocks() == 0;
}

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

Round call_and_recover(const Scenario &scenario, const Disturbance &disturbance,
                       const std::string &undisturbed) {
  Call call = scenario.prepare();
  Round round = call_once(call, disturbance);
  if (round.outcome != undisturbed) {
    if (!round.changes.empty() || scenario.trait == Trait::KEEPS_PARTIAL_WORK)
      call = scenario.prepare();
    EXPECT_EQ(call_once(call, {}).outcome, undisturbed) << "the next call has another outcome";
  }
  return round;
}

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

}  // namespace kel::tavren::tests
