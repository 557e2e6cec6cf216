// How the programs that try hostile input look at what the library makes of it.

#ifndef TAVREN_TESTS_FUZZING_H
#define TAVREN_TESTS_FUZZING_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>

#include <tavren/capture/media_helper.h>

// What libFuzzer calls, with one input at a time.
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace kel::tavren::fuzz {

// Initialises the framework without its registry, so that a run depends on nothing that was found
// on the machine before, and loads plug-ins by the names of their files: no element with an effect
// on the outside can be made unless its plug-in is listed. From then on, a critical of GLib or the
// framework ends the program unless it is tolerated; warnings are swallowed.
void start_framework(std::initializer_list<const char *> plugins);

// While one lives, criticals are swallowed too: for hostile input that the framework itself must
// refuse.
class Tolerated_Criticals {
public:
  Tolerated_Criticals();
  ~Tolerated_Criticals();
  Tolerated_Criticals(const Tolerated_Criticals &) = delete;
  Tolerated_Criticals &operator=(const Tolerated_Criticals &) = delete;
};

// Ends the program, so that libFuzzer keeps the input, unless what must hold does.
void require(bool holds, const char *what);

// Tells libFuzzer what an input has made of the framework, of which it sees no branches: an input
// that makes something new is kept and changed further.
void mark(const std::string &effect);

// What the framework and what() see of a text: it ends at its first zero byte.
std::string shown(const std::string &text);

// How an operation ended: with 0, or with the number and text of its error.
struct Outcome {
  int code = 0;
  std::string text;
};

// Runs an operation that may end with one of these codes only. Another class of exception is not
// caught: it ends the program.
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
