// Counts the objects and mini-objects of the framework that are alive.

#ifndef TAVREN_TESTS_LIVE_OBJECTS_H
#define TAVREN_TESTS_LIVE_OBJECTS_H

#include <map>
#include <string>

namespace kel::tavren::tests {

// Starts counting. Call this immediately after the framework has been initialised.
void count_objects();

// Returns the number of objects of each type.
std::map<std::string, long> live_objects();

}  // namespace kel::tavren::tests

#endif
