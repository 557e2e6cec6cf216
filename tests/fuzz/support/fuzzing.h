// Support for the programs that pass malformed input to the library.

#ifndef TAVREN_TESTS_FUZZING_H
#define TAVREN_TESTS_FUZZING_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>

#include <tavren/capture/media_helper.h>

// Called by libFuzzer, with one input at a time.
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace kel::tavren::fuzz {

// Initialises the framework without its registry, so that a run does not depend on the plugins of
// the machine, and loads plugins by file name. Elements with external effects cannot be created
// unless their plugin is listed. Afterwards, a critical of GLib or the framework aborts the program
// unless it is tolerated. Warnings are discarded.
void start_framework(std::initializer_list<const char *> plugins);

// While an instance exists, criticals are discarded, too. Use this for malformed input that the
// framework itself rejects.
class Tolerated_Criticals {
public:
  Tolerated_Criticals();
  ~Tolerated_Criticals();
  Tolerated_Criticals(const Tolerated_Criticals &) = delete;
  Tolerated_Criticals &operator=(const Tolerated_Criticals &) = delete;
};

// Aborts the program if the condition is false, so that libFuzzer keeps the input.
void require(bool holds, const char *what);

// Reports an effect of an input on the framework to libFuzzer, which does not see the framework's
// branches. Inputs with a new effect are kept and mutated further.
void mark(const std::string &effect);

// Returns a text as the framework and what() see it: up to its first zero byte.
std::string shown(const std::string &text);

// The result of an operation: 0, or the code and the text of its error.
struct Outcome {
  int code = 0;
  std::string text;
};

// Runs an operation that may only end with one of the given codes. Does not catch exceptions of
// other classes, which terminate the program.
template <typename Call>
Outcome run(std::initializer_list<int> allowed, Call &&call) {
  Outcome outcome;
  try {
    call();
  } catch (const Backend_Error<std::runtime_error> &error) {
    outcome = {error.code(), error.what()};
    require(!outcome.text.empty(), "an error has a text");
  }
  bool is_allowed = false;
  for (const int code : allowed)
    is_allowed = is_allowed || code == outcome.code;
  require(is_allowed,
          ("unexpected end: " + std::to_string(outcome.code) + " " + outcome.text).c_str());
  return outcome;
}

}  // namespace kel::tavren::fuzz

#endif
