// A program run as its users run it, never waited for without an end.

#ifndef TAVREN_TESTS_CHILD_PROCESS_H
#define TAVREN_TESTS_CHILD_PROCESS_H

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

#include <glib.h>

namespace kel::tavren::tests {

// How a program ended.
struct Outcome {
  int status = -1;  // its exit status; -1 when a signal ended it, or the waiting
  std::string out;  // all that it wrote
  std::string err;
};

class Child_Process {
public:
  using Environment = std::map<std::string, std::string>;

  // Starts it, with these variables besides the test's own. Throws std::runtime_error.
  explicit Child_Process(const std::vector<std::string> &command,
                         const Environment &environment = {});
  // Kills it when it still runs.
  ~Child_Process();

  Child_Process(const Child_Process &) = delete;
  Child_Process &operator=(const Child_Process &) = delete;

  // Waits for a whole line on its stdout, without the line's end; empty when none comes.
  std::string first_line();
  // Waits until its stdout contains a text. Returns whether it does.
  bool writes(const std::string &text);
  void send_signal(int number) const;
  pid_t id() const noexcept { return pid_; }
  // Waits for its end, and kills it when that takes too long.
  Outcome wait();

private:
  struct Pipe {
    int descriptor = -1;
    std::string text;
  };

  bool read_some(gint64 deadline);
  void read_from(Pipe &pipe);
  bool reap(int flags);

  pid_t pid_ = -1;
  Pipe out_;
  Pipe err_;
  int wait_status_ = 0;
};

// Runs a program to its end.
Outcome run(const std::vector<std::string> &command,
            const Child_Process::Environment &environment = {});

}  // namespace kel::tavren::tests

#endif
