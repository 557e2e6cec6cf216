// The main() of all test programs. Initialises the framework once. Fails if objects of the
// framework are left when it deinitialises it, or if the framework logged warnings.

#include <iostream>

#include <gtest/gtest.h>

#include "leak_watch.h"
#include "log_watch.h"

namespace {

// Older versions of GoogleTest do not print the reason why a test is skipped.
class Skip_Reasons : public testing::EmptyTestEventListener {
  void OnTestPartResult(const testing::TestPartResult &result) override {
    if (result.skipped()) std::cout << "skipped: " << result.message() << '\n';
  }
};

}  // namespace

int main(int argc, char **argv) {
  testing::InitGoogleTest(&argc, argv);
  testing::UnitTest::GetInstance()->listeners().Append(new Skip_Reasons);  // transfer full
  kel::tavren::tests::init_and_watch_leaks(&argc, &argv);
  kel::tavren::tests::watch_logs();
  const int result = RUN_ALL_TESTS();
  const bool leaked = !kel::tavren::tests::deinit_without_leaks();
  const bool logged = kel::tavren::tests::logs_after_tests();
  return leaked || logged ? 1 : result;
}
