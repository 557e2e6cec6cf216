// How tests see the framework's objects that nobody gave back.

#ifndef TAVREN_TESTS_LEAK_WATCH_H
#define TAVREN_TESTS_LEAK_WATCH_H

#include <glib-object.h>

namespace kel::tavren::tests {

// Initialises the framework, and has it watch over its objects. Programs that this one runs are not
// watched.
void init_and_watch_leaks(int *argc, char ***argv);

// How many elements, pads, caps and other objects of the framework have been made since it began,
// less those that are gone.
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

// Takes the framework down. Returns whether none of its objects was left; those that were are named
// on standard error.
bool deinit_without_leaks();

}  // namespace kel::tavren::tests

#endif
