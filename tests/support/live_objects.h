// Counts the objects and mini-objects of the framework that are alive.

#ifndef TAVREN_TESTS_LIVE_OBJECTS_H
#define TAVREN_TESTS_LIVE_OBJECTS_H

#include <map>
#include <string>

namespace kel::tavren::tests {

// Starts counting, unless it has been started. Older objects are only subtracted when they are
// destroyed.
void count_objects();

// Returns the number of objects of all types.
long live_objects() noexcept;

std::map<std::string, long> live_objects_by_type();

}  // namespace kel::tavren::tests

#endif
