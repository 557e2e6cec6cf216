// The one main of all test programs: the framework is initialised and taken down once a process,
// which fails when objects of the framework are left then, or when it warns.

#include <gtest/gtest.h>

#include "leak_watch.h"
#include "log_watch.h"

int main(int argc, char **argv) {
  testing::InitGoogleTest(&argc, argv);
  kel::tavren::tests::init_and_watch_leaks(&argc, &argv);
  kel::tavren::tests::watch_logs();
  const int result = RUN_ALL_TESTS();
  const bool leaked = !kel::tavren::tests::deinit_without_leaks();
  const bool logged = kel::tavren::tests::logs_after_tests();
  return leaked || logged ? 1 : result;
}
