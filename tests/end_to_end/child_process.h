// Runs a program as users do, with bounded waits.

#ifndef TAVREN_TESTS_CHILD_PROCESS_H
#define TAVREN_TESTS_CHILD_PROCESS_H

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

#include <glib.h>

namespace kel::tavren::tests {

// The result of a program.
struct Outcome {
  int status = -1;  // exit status; -1 if the program was killed by a signal or after a timeout
  std::string out;  // its whole output
  std::string err;
};

class Child_Process {
public:
  using Environment = std::map<std::string, std::string>;

  // Starts the program with additional environment variables. Throws std::runtime_error.
  explicit Child_Process(const std::vector<std::string> &command,
                         const Environment &environment = {});
  // Kills the program if it is still running.
  ~Child_Process();

  Child_Process(const Child_Process &) = delete;
  Child_Process &operator=(const Child_Process &) = delete;

  // Waits for a line on its stdout, and returns it without the newline; empty if there is none.
  std::string first_line();
  // Waits until its stdout contains a text the given number of times. Returns false after a
  // timeout.
  bool writes(const std::string &text, int times = 1);
  void send_signal(int number) const;
  pid_t id() const noexcept { return pid_; }
  // Waits until the program ends, and kills it after a timeout.
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

// Runs a program to completion.
Outcome run(const std::vector<std::string> &command,
            const Child_Process::Environment &environment = {});

}  // namespace kel::tavren::tests

#endif
