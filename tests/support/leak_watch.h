// Detects leaked objects of the framework.

#ifndef TAVREN_TESTS_LEAK_WATCH_H
#define TAVREN_TESTS_LEAK_WATCH_H

namespace kel::tavren::tests {

// Initialises the framework and enables its leak tracing, but not for child processes.
void init_and_watch_leaks(int *argc, char ***argv);

// Deinitialises the framework. Returns whether all its objects were destroyed; prints the remaining
// ones to stderr.
bool deinit_without_leaks();

}  // namespace kel::tavren::tests

#endif
