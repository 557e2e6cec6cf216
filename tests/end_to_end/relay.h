// Runs the relay program.

#ifndef TAVREN_TESTS_RELAY_H
#define TAVREN_TESTS_RELAY_H

#include <gtest/gtest.h>

#include "simulated_camera.h"

namespace kel::tavren::tests {

// Matches the error if a camera ends. The system resets its connection if the camera has not read
// everything that the relay sent.
constexpr const char *camera_ended =
    "gst-resource-error-quark 9: (the camera ended its stream|Could not read from resource.*)";

struct Relay : Child_Process {
  // The URI is empty if the relay does not start to serve.
  explicit Relay(const std::string &camera, const std::vector<std::string> &options = {},
                 const Environment &environment = {})
      : Child_Process(command(camera, options), environment), uri(first_line()) {}
  static std::vector<std::string> command(const std::string &camera,
                                          const std::vector<std::string> &options) {
    return words({RELAY_STREAM, "--uri", camera}, options);
  }
  // Stops the relay, which must end without an error, and returns its output.
  std::string output_after(int signal) {
    send_signal(signal);
    const Outcome outcome = wait();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    return outcome.out;
  }
  const std::string uri;
};

}  // namespace kel::tavren::tests

#endif
