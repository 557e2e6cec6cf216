// Runs the simulated camera program.

#ifndef TAVREN_TESTS_SIMULATED_CAMERA_H
#define TAVREN_TESTS_SIMULATED_CAMERA_H

#include <stdexcept>
#include <string>
#include <vector>

#include "child_process.h"

namespace kel::tavren::tests {

inline std::vector<std::string> words(std::vector<std::string> first,
                                      const std::vector<std::string> &more) {
  first.insert(first.end(), more.begin(), more.end());
  return first;
}

inline std::string port_of(const std::string &uri) {
  const std::size_t begin = uri.rfind(':') + 1;
  return uri.substr(begin, uri.find('/', begin) - begin);
}

struct Camera : Child_Process {
  explicit Camera(const std::vector<std::string> &options = {})
      : Child_Process(words({SIMULATED_CAMERA}, options)), uri(first_line()) {
    if (uri.empty()) throw std::runtime_error("the camera does not start");
  }
  const std::string uri;
};

}  // namespace kel::tavren::tests

#endif
