// Runs randomly selected operations of the library repeatedly, and checks for growth.

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <map>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <unistd.h>

#include "depayloader_references.h"
#include "leak_watch.h"
#include "live_blocks.h"
#include "live_objects.h"
#include "operations.h"

namespace kel::tavren::tests {
namespace {

constexpr const char *usage =
    R"(Usage: soak_test [--operations N] [--seed SEED] [--report FILE]

Runs N randomly selected operations of the library (default: 20000). Two out of five are expected to
fail. The same seed selects the same operations. The default seed is random and is printed. Groups
of fifty operations share a pipeline and its elements, which are created before and destroyed after
the group. Every 10000th operation is the discovery of a media file.

After a warm-up, which consists of all operations and a tenth of the run, and then ten times at
equal intervals, the test measures the resources while no pipeline exists. The run fails if

  an operation has an unexpected result, error or effect on reference counts,
  the framework logs an unexpected warning,
  there are more live objects of the framework, of any type, than after the warm-up,
  there are more blocks of C++ memory than after the warm-up, counted by operator new and delete, or
  the resident memory is more than 384 KiB above that after the warm-up. The allocator's own
  variations are smaller. This is the only check that detects leaked C memory: in a million
  operations, it detects a leak of one of the smallest blocks, of 32 bytes, in every 70th operation.
  It is disabled under sanitizers, which retain memory.

--report FILE writes the measurements as a fragment of Markdown.
)";

constexpr long memory_bound = 384;  // KiB
constexpr std::uint64_t operations_per_scene = 50;
constexpr std::uint64_t operations_per_rare_one = 10000;
constexpr std::uint64_t parts = 10;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool memory_tells = false;
#else
constexpr bool memory_tells = true;
#endif

struct Options {
  std::uint64_t operations = 20000;
  std::uint64_t seed = std::random_device()();
  std::string report;
};

// Returns null if help was requested.
std::optional<Options> read_options(const std::vector<std::string> &arguments) {
  Options options;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (arguments[i] == "-h" || arguments[i] == "--help") return std::nullopt;
    const std::string &name = arguments[i];
    if (++i == arguments.size()) throw std::invalid_argument(name + " needs a value");
    if (name == "--operations")
      options.operations = std::stoull(arguments[i]);
    else if (name == "--seed")
      options.seed = std::stoull(arguments[i]);
    else if (name == "--report")
      options.report = arguments[i];
    else
      throw std::invalid_argument("unknown option " + name);
  }
  return options;
}

// Unexpected warnings of the framework. No memory is allocated for expected ones.
std::vector<std::string> unexpected_warnings;

GLogWriterOutput note_warning(GLogLevelFlags level, const GLogField *fields, gsize size, gpointer) {
  if ((level & (G_LOG_LEVEL_ERROR | G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING)) == 0)
    return G_LOG_WRITER_HANDLED;
  for (gsize i = 0; i < size; ++i) {
    if (std::strcmp(fields[i].key, "MESSAGE") != 0) continue;
    const char *const message = static_cast<const char *>(fields[i].value);
    for (const std::string &expected : expected_warnings)
      if (std::strstr(message, expected.c_str()) != nullptr) return G_LOG_WRITER_HANDLED;
    unexpected_warnings.emplace_back(message);
  }
  return G_LOG_WRITER_HANDLED;
}

long resident_kib() {
  long size = 0;
  long resident = 0;
  std::ifstream("/proc/self/statm") >> size >> resident;
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

struct Measures {
  std::uint64_t operations = 0;
  std::uint64_t failed = 0;
  double seconds = 0;
  long resident = 0;  // KiB
  long objects = 0;
  long blocks = 0;
};

class Soak {
public:
  explicit Soak(const Options &options)
      : operations_(options.operations), random_(options.seed), blocks_kept_(operations.size()) {
    for (const Operation &operation : operations)
      drawn_from_[kind_of(operation.use == Operation::RARE, operation.error.code != 0)].push_back(
          &operation);
  }

  // Returns whether all operations behaved as expected and nothing grew.
  bool run() {
    const std::uint64_t warm_up = operations_ / 10;
    for (const Operation &operation : operations)
      run_on_scene([&](const Scene &scene) { run_one(operation, scene); });
    run_until(warm_up);
    first_objects_ = live_objects_by_type();
    std::fill(blocks_kept_.begin(), blocks_kept_.end(), 0);
    first_ = last_ = measure();
    for (std::uint64_t part = 1; part <= parts && good_; ++part) {
      run_until(warm_up + (operations_ - warm_up) * part / parts);
      last_ = measure();
      compare();
    }
    return good_;
  }

  const Measures &after_warm_up() const { return first_; }
  const Measures &at_the_end() const { return last_; }

private:
  static std::size_t kind_of(bool rare, bool fails) { return (rare ? 2U : 0U) + (fails ? 1U : 0U); }

  const Operation &draw() {
    const bool rare = done_ % operations_per_rare_one == 0;
    const bool fails = random_() % 5 < 2;
    const std::vector<const Operation *> &candidates = drawn_from_[kind_of(rare, fails)];
    return *candidates[random_() % candidates.size()];
  }

  void run_one(const Operation &operation, const Scene &scene) {
    const long blocks = live_blocks();
    const std::string wrong = unexpected_behaviour(operation, scene);
    if (!wrong.empty()) report_failure(wrong);
    const std::string changes = scene.changed_counts();
    if (!changes.empty()) report_failure(operation.name + (": " + changes));
    ++done_;
    if (operation.error.code != 0) ++failed_;
    blocks_kept_[static_cast<std::size_t>(&operation - operations.data())] +=
        live_blocks() - blocks;
  }

  template <typename Run>
  void run_on_scene(Run run) {
    const Scene scene;
    run(scene);
  }

  void run_until(std::uint64_t done) {
    while (done_ < done && good_)
      run_on_scene([&](const Scene &scene) {
        for (std::uint64_t i = 0; i < operations_per_scene && done_ < done && good_; ++i)
          run_one(draw(), scene);
      });
    for (const std::string &warning : unexpected_warnings)
      report_failure("unexpected warning: " + warning);
  }

  Measures measure() const {
    const std::chrono::duration<double> duration = std::chrono::steady_clock::now() - start_;
    return {done_, failed_, duration.count(), resident_kib(), live_objects(), live_blocks()};
  }

  void compare() {
    const std::string objects = objects_that_grew();
    if (!objects.empty()) report_failure("live objects grew:" + objects);
    if (last_.blocks > first_.blocks)
      report_failure("live C++ blocks grew by " + std::to_string(last_.blocks - first_.blocks) +
                     ":" + operations_that_kept_blocks());
    if (memory_tells && last_.resident > first_.resident + memory_bound)
      report_failure("resident memory grew by " + std::to_string(last_.resident - first_.resident) +
                     " KiB");
  }

  std::string objects_that_grew() {
    std::string text;
    for (const auto &[type, count] : live_objects_by_type())
      if (count > first_objects_[type])
        text += " " + type + " by " + std::to_string(count - first_objects_[type]);
    return text;
  }

  std::string operations_that_kept_blocks() const {
    std::string text;
    for (std::size_t i = 0; i < operations.size(); ++i)
      if (blocks_kept_[i] > 0)
        text += std::string("\n  ") + operations[i].name + ": " + std::to_string(blocks_kept_[i]);
    return text;
  }

  void report_failure(const std::string &text) {
    good_ = false;
    std::cerr << "soak: after " << done_ << " operations: " << text << '\n';
  }

  const std::uint64_t operations_;
  std::mt19937_64 random_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  std::array<std::vector<const Operation *>, 4> drawn_from_;
  std::vector<long> blocks_kept_;  // by operation
  std::map<std::string, long> first_objects_;
  std::uint64_t done_ = 0;
  std::uint64_t failed_ = 0;
  bool good_ = true;
  Measures first_, last_;
};

void write_report(const std::string &file, const Options &options, const Measures &first,
                  const Measures &last) {
  std::ofstream report(file);
  report << std::fixed << std::setprecision(0) << "## Soak\n\n"
         << "Random operations with the seed " << options.seed
         << ", measured while no pipeline exists:\n\n"
         << "| | After the warm-up | At the end |\n"
         << "|---|---:|---:|\n"
         << "| Operations | " << first.operations << " | " << last.operations << " |\n"
         << "| Operations that failed as expected | " << first.failed << " | " << last.failed
         << " |\n"
         << "| Duration, s | " << first.seconds << " | " << last.seconds << " |\n"
         << "| Resident memory, KiB | " << first.resident << " | " << last.resident << " |\n"
         << "| Live objects of the framework | " << first.objects << " | " << last.objects << " |\n"
         << "| Live blocks of C++ memory | " << first.blocks << " | " << last.blocks << " |\n";
  if (!report.flush()) throw std::runtime_error("cannot write " + file);
}

void print(const Measures &first, const Measures &last) {
  std::cout << std::fixed << std::setprecision(0) << "soak: " << last.operations << " operations, "
            << last.failed << " failed as expected, " << last.seconds << " s\n"
            << "soak: after the warm-up and at the end: resident memory " << first.resident
            << " and " << last.resident << " KiB, live objects " << first.objects << " and "
            << last.objects << ", live C++ blocks " << first.blocks << " and " << last.blocks
            << '\n';
}

bool soak(const Options &options) {
  const Depayloader_References references;
  std::cout << "soak: seed " << options.seed << std::endl;
  Soak run(options);
  if (!run.run()) return false;
  print(run.after_warm_up(), run.at_the_end());
  if (!options.report.empty())
    write_report(options.report, options, run.after_warm_up(), run.at_the_end());
  return true;
}

int run_program(int argc, char **argv) {
  const std::optional<Options> options = read_options({argv + 1, argv + argc});
  if (!options) {
    std::cout << usage;
    return EXIT_SUCCESS;
  }
  init_and_watch_leaks(&argc, &argv);
  count_objects();
  g_log_set_writer_func(note_warning, nullptr, nullptr);
  const bool good = soak(*options);
  return deinit_without_leaks() && good ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace
}  // namespace kel::tavren::tests

int main(int argc, char **argv) {
  try {
    return kel::tavren::tests::run_program(argc, argv);
  } catch (const std::exception &error) {
    std::cerr << "soak: " << error.what() << '\n';
    return EXIT_FAILURE;
  }
}
