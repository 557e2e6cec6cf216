// Functions common to all programs: options, exit status and one-line error messages.

#ifndef TAVREN_PROGRAMS_PROGRAM_H
#define TAVREN_PROGRAMS_PROGRAM_H

#include <exception>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gst/gst.h>

namespace kel::tavren::programs {

// An error that an element posted on the bus. The text starts with the error's domain and code, and
// ends with the reason from its debug text.
class Bus_Error : public std::runtime_error {
public:
  // `message` (transfer none) must be an error or a warning.
  explicit Bus_Error(GstMessage *message);

  // A failure detected by the program, in the form of an element's error.
  Bus_Error(GstResourceError error, const std::string &text);

  bool is(GQuark domain, int code) const noexcept { return domain == domain_ && code == code_; }
  // Returns the domain and the code: gst-resource-error-quark 9.
  std::string code() const;

private:
  struct Report;
  explicit Bus_Error(const Report &report);

  GQuark domain_ = 0;
  int code_ = 0;
};

// Owns a text that GLib's option parser allocates.
class Text_Option {
public:
  Text_Option() = default;
  ~Text_Option() { g_free(text_); }
  Text_Option(const Text_Option &) = delete;
  Text_Option &operator=(const Text_Option &) = delete;

  // The address that the parser writes to.
  char **target() noexcept { return &text_; }
  bool given() const noexcept { return text_ != nullptr; }
  // Returns the parsed text, or the default if the option was not given.
  std::string value_or(const std::string &other) const { return text_ != nullptr ? text_ : other; }

private:
  char *text_ = nullptr;
};

// Returns the code of a failure: that of the library, 0x15010, or the domain and code of an
// element's error. Empty if the failure has no code.
std::string failure_code(const std::exception_ptr &failure);
std::string failure_text(const std::exception_ptr &failure);

// Prints a failure as one line on stderr, with the error code if there is one.
void print_failure(const std::string &subject, const std::exception &error);

// Parses the options with GLib's parser, which provides --help, and the framework's options. Then
// initialises the framework and calls `body`. --version prints the version instead. Rejects
// unexpected arguments. Prints a failure as one line on stderr, with the error code if there is
// one.
//
// The options need no terminator. Returns the exit status: 0, or 1 after a failure.
int run_program(int argc, char **argv, const char *summary, std::vector<GOptionEntry> options,
                const std::function<void()> &body);

}  // namespace kel::tavren::programs

#endif
