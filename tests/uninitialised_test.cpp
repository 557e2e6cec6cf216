// A separate program without the common main(), which initialises the framework.

#include <cstdio>
#include <cstdlib>
#include <string>

#include <tavren/capture/media_helper.h>

namespace {

using kel::tavren::Backend_Error;
using kel::tavren::capture::Media_Helper;

const std::string message = "gst_init has not run: %s, \"camera 1\"";

// Returns the code that the check throws; 0 if it does not throw, -1 if the text is wrong.
int thrown_code() {
  try {
    Media_Helper::gst_is_initialized_or_throw(message);
  } catch (const Backend_Error<std::runtime_error> &error) {
    return error.what() == message ? static_cast<int>(error.code()) : -1;
  }
  return 0;
}

bool expect(const char *when, int expected) {
  const int code = thrown_code();
  std::printf("%s gst_init: code 0x%X, expected 0x%X\n", when, static_cast<unsigned>(code),
              static_cast<unsigned>(expected));
  return code == expected;
}

}  // namespace

int main(int argc, char **argv) {
  const bool good_before = expect("before", 0x152F0);
  gst_init(&argc, &argv);
  const bool good_after = expect("after", 0);
  gst_deinit();
  return good_before && good_after ? EXIT_SUCCESS : EXIT_FAILURE;
}
