// How tests see the framework's objects that nobody gave back.

#ifndef TAVREN_TESTS_LEAK_WATCH_H
#define TAVREN_TESTS_LEAK_WATCH_H

#include <glib.h>

namespace kel::tavren::tests {

// Has the framework keep a list of its objects. To be called before gst_init.
void watch_leaks();

// How many elements, pads, caps and other objects of the framework live now. Those of the registry
// do not count.
guint live_objects();

// Takes the framework down. Returns whether none of its objects was left; those that were are named
// on standard error.
bool deinit_without_leaks();

}  // namespace kel::tavren::tests

#endif
