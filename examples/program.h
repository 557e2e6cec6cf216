// What all the example programs do alike: options, exit status, one clear line for a failure.

#ifndef TAVREN_EXAMPLES_PROGRAM_H
#define TAVREN_EXAMPLES_PROGRAM_H

#include <functional>
#include <stdexcept>
#include <string>

#include <gst/gst.h>

namespace kel::tavren::examples {

// What an element reported on the bus, as an exception: its text starts with the domain and number
// of the report.
class Bus_Error : public std::runtime_error {
public:
  // The message is borrowed; it must be an error or a warning.
  explicit Bus_Error(GstMessage *message);
};

// Parses the options with GLib's parser (which brings --help) and the framework's own options,
// initialises the framework, and runs the body with what is left of the command line. A failure
// becomes one line on stderr, with the error's code where it has one.
//
// Returns the exit status: 0, or 1 after a failure.
int run_program(int argc, char **argv, const char *summary, const GOptionEntry *options,
                const std::function<void(int argc, char **argv)> &body);

}  // namespace kel::tavren::examples

#endif
