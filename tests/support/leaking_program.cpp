// Leaks an element in a test that passes: the program must fail nevertheless.

#include <gst/gst.h>
#include <gtest/gtest.h>

TEST(LeakWatch, DetectsALeakedElement) {
  EXPECT_NE(gst_element_factory_make("identity", "lost_element"), nullptr);
}
