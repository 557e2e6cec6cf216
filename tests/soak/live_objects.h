// The objects and mini-objects of the framework that are alive, counted as they come and go.

#ifndef TAVREN_TESTS_LIVE_OBJECTS_H
#define TAVREN_TESTS_LIVE_OBJECTS_H

#include <map>
#include <string>

namespace kel::tavren::tests {

// Begins to count; to be called when the framework has just been initialised.
void count_objects();

// How many there are of each type.
std::map<std::string, long> live_objects();

}  // namespace kel::tavren::tests

#endif
