// What memory recordings take.

#ifndef TAVREN_BENCHMARKS_RESIDENT_MEMORY_H
#define TAVREN_BENCHMARKS_RESIDENT_MEMORY_H

#include <cstddef>
#include <string>

namespace kel::tavren::benchmarks {

// Builds the recordings of some cameras, as a contestant does, and prints the resident memory that
// they take in KiB for each camera. Only in a process that has done nothing else yet. Returns the
// exit status.
int print_resident_memory(const std::string &contestant, std::size_t cameras);

}  // namespace kel::tavren::benchmarks

#endif
