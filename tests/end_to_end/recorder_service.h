// Runs record_cameras.

#ifndef TAVREN_TESTS_RECORDER_SERVICE_H
#define TAVREN_TESTS_RECORDER_SERVICE_H

#include <csignal>

#include <chrono>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "child_process.h"
#include "scratch_folder.h"
#include "simulated_camera.h"

namespace kel::tavren::tests {

inline std::string text_of(const std::string &file) {
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  return text.str();
}

// Waits for a condition. Returns false after a timeout.
inline bool eventually(const std::function<bool()> &condition) {
  using namespace std::chrono_literals;
  const auto deadline = std::chrono::steady_clock::now() + 30s;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(50ms);
  }
  return true;
}

// A configuration file, and the folder that it is in.
class Configuration {
public:
  explicit Configuration(const std::string &text) { write(text); }

  void write(const std::string &text) const { std::ofstream(path()) << text; }
  std::string path() const { return folder_.file("cameras.conf"); }
  std::string file(const std::string &name) const { return folder_.file(name); }
  std::size_t files() const { return folder_.list().size(); }

private:
  Scratch_Folder folder_;
};

// Returns a group that records a camera to a file.
inline std::string group(const std::string &name, const std::string &uri, const std::string &output,
                         const std::string &more = "") {
  return '[' + name + "]\nuri=" + uri + "\noutput=" + output + '\n' + more;
}

inline std::vector<std::string> service_command(const Configuration &configuration,
                                                const std::vector<std::string> &options = {}) {
  return words({RECORD_CAMERAS, configuration.path()}, options);
}

// Ends the program as a service manager does.
inline Outcome end(Child_Process &service) {
  service.send_signal(SIGTERM);
  return service.wait();
}

}  // namespace kel::tavren::tests

#endif
