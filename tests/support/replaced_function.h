// Functions of the framework that a test program replaces.

#ifndef TAVREN_TESTS_REPLACED_FUNCTION_H
#define TAVREN_TESTS_REPLACED_FUNCTION_H

#include <dlfcn.h>

#include <tavren/capture/media_helper.h>

namespace kel::tavren::tests {

// Returns the framework's function that the given function of the same name replaces in the whole
// program. A replacement calls replaced_function(gst_bin_add, __func__).
template <typename Function>
Function *replaced_function(Function *, const char *name) {
  return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

inline const void *library_with(const void *address) {
  Dl_info info{};
  return dladdr(address, &info) != 0 ? info.dli_fbase : nullptr;
}

// Returns whether the library contains an address, such as the return address of a replacement.
inline bool is_in_library(const void *address) {
  static const void *const library =
      library_with(reinterpret_cast<const void *>(&capture::Media_Helper::get_media_type));
  return library_with(address) == library;
}

}  // namespace kel::tavren::tests

#endif
