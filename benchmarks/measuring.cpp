#include "measuring.h"

#include <chrono>
#include <iostream>
#include <memory>
#include <regex>
#include <string>

#include <benchmark/benchmark.h>
#include <sys/wait.h>
#include <unistd.h>
#include <valgrind/callgrind.h>

namespace kel::tavren::benchmarks {

namespace {

// Loads plugins, binds symbols and fills caches.
void warm_up(Trial &trial) {
  trial.prepare();
  trial.run();
  trial.clean_up();
}

void measure(const Entry &entry, benchmark::State &state) {
  using Clock = std::chrono::steady_clock;
  const std::unique_ptr<Trial> trial = entry.make();
  warm_up(*trial);
  while (state.KeepRunning()) {
    trial->prepare();
    const Clock::time_point start = Clock::now();
    trial->run();
    const Clock::time_point end = Clock::now();
    trial->clean_up();
    state.SetIterationTime(std::chrono::duration<double>(end - start).count());
  }
  state.counters["operations"] = entry.operations;
  state.counters["bytes"] = static_cast<double>(trial->bytes());
}

void count(const Entry &entry) {
  const std::unique_ptr<Trial> trial = entry.make();
  warm_up(*trial);
  const int runs = trial->counted_runs();
  CALLGRIND_START_INSTRUMENTATION;
  for (int i = 0; i < runs; ++i) {
    trial->prepare();
    CALLGRIND_TOGGLE_COLLECT;
    trial->run();
    CALLGRIND_TOGGLE_COLLECT;
    trial->clean_up();
  }
  CALLGRIND_STOP_INSTRUMENTATION;
  const std::string counted = std::to_string(runs * entry.operations) + " times " + entry.name;
  CALLGRIND_DUMP_STATS_AT(counted.c_str());
}

// The cost of an allocation depends on all earlier ones, so each trial starts in the same state.
bool count_in_fork(const Entry &entry) {
  const pid_t child = fork();
  if (child == 0) {
    count(entry);
    _exit(0);
  }
  int status = 0;
  return child > 0 && waitpid(child, &status, 0) == child && status == 0;
}

}  // namespace

int measure_time(const Programme &programme, int argc, char **argv) {
  for (const Entry &entry : programme.entries()) {
    const auto run = [&entry](benchmark::State &state) { measure(entry, state); };
#ifndef __clang_analyzer__  // the analyzer reports the benchmark, which Google Benchmark owns, as
                            // leaked
    benchmark::RegisterBenchmark(entry.name.c_str(), run)->UseManualTime();
#else
    static_cast<void>(run);
#endif
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}

int count_instructions(const Programme &programme, const std::string &regex) {
  const std::regex wanted(regex);
  for (const Entry &entry : programme.entries())
    if (std::regex_search(entry.name, wanted) && !count_in_fork(entry)) {
      std::cerr << entry.name << " failed\n";
      return 1;
    }
  return 0;
}

int trace(const Programme &programme, const std::string &name) {
  for (const Entry &entry : programme.entries()) {
    if (entry.name != name) continue;
    const std::unique_ptr<Trial> trial = entry.make();
    trial->prepare();
    CALLGRIND_START_INSTRUMENTATION;
    trial->run();
    CALLGRIND_STOP_INSTRUMENTATION;
    trial->clean_up();
    return 0;
  }
  std::cerr << "unknown entry " << name << '\n';
  return 2;
}

}  // namespace kel::tavren::benchmarks
