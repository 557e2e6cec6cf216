#include "resident_memory.h"

#include <fstream>
#include <iostream>
#include <memory>
#include <vector>

#include <unistd.h>

#include "gstreamermm_calls.h"
#include "library_calls.h"
#include "raw_calls.h"
#include "recording.h"

namespace kel::tavren::benchmarks {

namespace {

// Returns the resident memory of this process in KiB.
long resident_memory() {
  std::ifstream statm("/proc/self/statm");
  long size = 0;
  long resident = 0;
  statm >> size >> resident;
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

template <typename Calls>
double memory_for_each(std::size_t cameras) {
  // The first recording loads the plugins. It remains, because memory that it released would be
  // reused.
  const Recording<Calls> first;
  const long before = resident_memory();
  std::vector<std::unique_ptr<Recording<Calls>>> recordings;
  for (std::size_t i = 0; i < cameras; ++i)
    recordings.push_back(std::make_unique<Recording<Calls>>());
  return static_cast<double>(resident_memory() - before) / static_cast<double>(cameras);
}

}  // namespace

int print_resident_memory(const std::string &implementation, std::size_t cameras) {
  if (implementation == Raw_Calls::implementation)
    std::cout << memory_for_each<Raw_Calls>(cameras) << std::endl;
  else if (implementation == Library_Calls::implementation)
    std::cout << memory_for_each<Library_Calls>(cameras) << std::endl;
  else if (implementation == Gstreamermm_Calls::implementation)
    std::cout << memory_for_each<Gstreamermm_Calls>(cameras) << std::endl;
  else {
    std::cerr << "unknown implementation " << implementation << '\n';
    return 2;
  }
  return 0;
}

}  // namespace kel::tavren::benchmarks
