// Trials: the same operation, performed by each implementation in its own way.

#ifndef TAVREN_BENCHMARKS_TRIAL_H
#define TAVREN_BENCHMARKS_TRIAL_H

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kel::tavren::benchmarks {

// One or several operations of the same kind, performed by one implementation.
class Trial {
public:
  Trial() = default;
  virtual ~Trial() = default;
  Trial(const Trial &) = delete;
  Trial &operator=(const Trial &) = delete;

  // Only run() is measured. The three functions are called repeatedly, in this order.
  virtual void prepare() {}
  virtual void run() = 0;
  virtual void clean_up() {}

  // The number of bytes moved by one run, if any.
  virtual std::size_t bytes() const { return 0; }

  // The number of runs for counting instructions: the cost of an allocation varies. Large trials
  // average over many allocations by themselves.
  virtual int counted_runs() const { return 20; }
};

// Calls that need no preparation and no clean-up.
template <typename Call>
class Call_Trial : public Trial {
public:
  Call_Trial(Call call, int times) : call_(std::move(call)), times_(times) {}

  void run() override {
    for (int i = 0; i < times_; ++i)
      call_();
  }

  int counted_runs() const override { return times_ < 20 ? 20 : 1; }

private:
  Call call_;
  int times_;
};

struct Entry {
  std::string name;                              // group/operation[/size]/implementation
  int operations;                                // per run
  std::function<std::unique_ptr<Trial>()> make;  // alive while it is measured
};

// All entries, in the order of the report.
class Programme {
public:
  // Adds a trial for each implementation, with the same arguments.
  template <template <typename> class Trial_Of, typename... Calls, typename... Arguments>
  void add(const std::string &operation, int operations, Arguments... arguments) {
    (entries_.push_back(
         {operation + "/" + Calls::implementation, operations,
          [arguments...] { return std::make_unique<Trial_Of<Calls>>(arguments...); }}),
     ...);
  }

  // Adds a call of one implementation that is too short to be measured individually.
  template <typename Call>
  void add_call(const std::string &operation, const std::string &implementation, Call call,
                int times = 100) {
    entries_.push_back({operation + "/" + implementation, times,
                        [call, times] { return std::make_unique<Call_Trial<Call>>(call, times); }});
  }

  const std::vector<Entry> &entries() const { return entries_; }

private:
  std::vector<Entry> entries_;
};

// The groups of operations.
void add_checks(Programme &programme);
void add_construction(Programme &programme);
void add_topology(Programme &programme);
void add_recording(Programme &programme);
void add_bin_search(Programme &programme);
void add_caps_and_selection(Programme &programme);
void add_texts(Programme &programme);
void add_failures(Programme &programme);

}  // namespace kel::tavren::benchmarks

#endif
