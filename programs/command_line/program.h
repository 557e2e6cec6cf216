// What all the programs do alike: options, exit status, one clear line for a failure.

#ifndef TAVREN_PROGRAMS_PROGRAM_H
#define TAVREN_PROGRAMS_PROGRAM_H

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gst/gst.h>

namespace kel::tavren::programs {

// An error that an element reported on the bus. Its text starts with the domain and number of the
// report, and ends with the reason that the element gave for developers.
class Bus_Error : public std::runtime_error {
public:
  // The message is borrowed; it must be an error or a warning.
  explicit Bus_Error(GstMessage *message);

  // A failure that the program notices itself, in the form of an element's.
  Bus_Error(GstResourceError error, const std::string &text);

  bool is(GQuark domain, int code) const noexcept { return domain == domain_ && code == code_; }

private:
  struct Report;
  explicit Bus_Error(const Report &report);

  GQuark domain_ = 0;
  int code_ = 0;
};

// A text that GLib's option parser fills in and its owner frees.
class Text_Option {
public:
  Text_Option() = default;
  ~Text_Option() { g_free(text_); }
  Text_Option(const Text_Option &) = delete;
  Text_Option &operator=(const Text_Option &) = delete;

  // Where the parser puts it.
  char **target() noexcept { return &text_; }
  bool given() const noexcept { return text_ != nullptr; }
  // The text given, or another one when none was.
  std::string value_or(const std::string &other) const { return text_ != nullptr ? text_ : other; }

private:
  char *text_ = nullptr;
};

// Tells a failure in one line on stderr, with the error's code where it has one.
void print_failure(const std::string &subject, const std::exception &error);

// Parses the options with GLib's parser (which brings --help) and the framework's own options,
// initialises the framework, and runs the body; --version prints the version instead. An argument
// that no option takes is refused. A failure becomes one line on stderr, with the error's code if
// it has one.
//
// The options need no terminator. Returns the exit status: 0, or 1 after a failure.
int run_program(int argc, char **argv, const char *summary, std::vector<GOptionEntry> options,
                const std::function<void()> &body);

}  // namespace kel::tavren::programs

#endif
