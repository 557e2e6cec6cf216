// The memory used by recordings.

#ifndef TAVREN_BENCHMARKS_RESIDENT_MEMORY_H
#define TAVREN_BENCHMARKS_RESIDENT_MEMORY_H

#include <cstddef>
#include <string>

namespace kel::tavren::benchmarks {

// Builds the recordings of several cameras with an implementation and prints their resident memory
// in KiB per camera. Call this only in a process that has done nothing else yet. Returns the exit
// status.
int print_resident_memory(const std::string &implementation, std::size_t cameras);

}  // namespace kel::tavren::benchmarks

#endif
