// The one main of all test programs: the framework is initialised and taken down once a process.

#include <gst/gst.h>
#include <gtest/gtest.h>

#include "log_watch.h"

int main(int argc, char **argv) {
  testing::InitGoogleTest(&argc, argv);
  gst_init(&argc, &argv);
  kel::tavren::tests::watch_logs();
  const int result = RUN_ALL_TESTS();
  gst_deinit();
  return result;
}
