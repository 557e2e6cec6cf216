// Detects leaked objects of the framework.

#ifndef TAVREN_TESTS_LEAK_WATCH_H
#define TAVREN_TESTS_LEAK_WATCH_H

#include <glib-object.h>

namespace kel::tavren::tests {

// Initialises the framework and enables its leak tracing, but not for child processes.
void init_and_watch_leaks(int *argc, char ***argv);

// The number of elements, pads, caps and other objects of the framework created since construction,
// minus those destroyed.
class Object_Balance {
public:
  Object_Balance();
  ~Object_Balance();
  Object_Balance(const Object_Balance &) = delete;
  Object_Balance &operator=(const Object_Balance &) = delete;

  int now();

private:
  GObject *tracer_;
  int balance_ = 0;
};

// Deinitialises the framework. Returns whether all its objects were destroyed; prints the remaining
// ones to stderr.
bool deinit_without_leaks();

}  // namespace kel::tavren::tests

#endif
