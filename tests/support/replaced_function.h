// Access to a function of the framework that a test program replaces.

#ifndef TAVREN_TESTS_REPLACED_FUNCTION_H
#define TAVREN_TESTS_REPLACED_FUNCTION_H

#include <dlfcn.h>

namespace kel::tavren::tests {

// Returns the framework's function that the given function of the same name replaces in the whole
// program. A replacement calls replaced_function(gst_bin_add, __func__).
template <typename Function>
Function *replaced_function(Function *, const char *name) {
  return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

}  // namespace kel::tavren::tests

#endif
