// What all the programs do alike: options, exit status, one clear line for a failure.

#ifndef TAVREN_PROGRAMS_PROGRAM_H
#define TAVREN_PROGRAMS_PROGRAM_H

#include <functional>
#include <stdexcept>
#include <string>

#include <gst/gst.h>

namespace kel::tavren::programs {

// What an element reported on the bus, as an exception: its text starts with the domain and number
// of the report.
class Bus_Error : public std::runtime_error {
public:
  // The message is borrowed; it must be an error or a warning.
  explicit Bus_Error(GstMessage *message);

  // What no element reports and the program finds out by itself, told as an element would.
  Bus_Error(GstResourceError error, const std::string &text);
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
// initialises the framework, and runs the body. An argument that no option takes is refused. A
// failure becomes one line on stderr, with the error's code where it has one.
//
// Returns the exit status: 0, or 1 after a failure.
int run_program(int argc, char **argv, const char *summary, const GOptionEntry *options,
                const std::function<void()> &body);

}  // namespace kel::tavren::programs

#endif
