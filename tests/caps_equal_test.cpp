// The comparison of lists of caps.

#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "elements.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

// Returns a list of caps, each a separate object.
std::vector<Caps> make_list(const std::vector<const char *> &texts) {
  std::vector<Caps> list;
  for (const char *const text : texts)
    list.push_back(make_caps(text));
  return list;
}

TEST(CapsEqual, IgnoresTheOrderOfTheLists) {
  const char *const a = "video/x-raw, width=640";
  const char *const b = "audio/x-raw, rate=8000";
  const char *const c = "video/x-raw, width=320";
  const struct {
    std::vector<const char *> first, second;
    bool equal;
  } rows[] = {
      {{}, {}, true},
      {{}, {a}, false},
      {{a}, {}, false},
      {{a}, {a}, true},
      {{a}, {b}, false},
      {{a}, {c}, false},
      {{a, b}, {a, b}, true},
      {{a, b}, {b, a}, true},
      {{a, b, c}, {c, a, b}, true},
      {{a, b}, {a, c}, false},
      {{a, b}, {a}, false},
      {{a}, {a, b}, false},
      // each partner is used once
      {{a, a}, {a, b}, false},
      {{a, b}, {a, a}, false},
      {{a, a}, {a, a}, true},
      {{a, a}, {a}, false},
      {{a}, {a, a}, false},
      {{a, a, b}, {a, b, b}, false},
      {{a, b, a}, {a, a, b}, true},
  };
  int number = 0;
  for (const auto &row : rows)
    EXPECT_EQ(Media_Helper::caps_equal(make_list(row.first), make_list(row.second)), row.equal)
        << "row " << number++;
}

TEST(CapsEqual, ComparesCapsAsTheFrameworkDoes) {
  const auto equal = [](const char *first, const char *second) {
    return Media_Helper::caps_equal(make_list({first}), make_list({second}));
  };
  EXPECT_TRUE(equal("ANY", "ANY"));
  EXPECT_TRUE(equal("EMPTY", "EMPTY"));
  EXPECT_FALSE(equal("ANY", "EMPTY"));
  EXPECT_FALSE(equal("ANY", "video/x-raw"));
  EXPECT_TRUE(equal("video/x-raw, width=1, height=2", "video/x-raw, height=2, width=1"));
  // Equal in what they allow, even if they are written differently.
  EXPECT_TRUE(equal("video/x-raw; audio/x-raw", "audio/x-raw; video/x-raw"));
  EXPECT_TRUE(equal("video/x-raw; video/x-raw, width=1", "video/x-raw"));
  EXPECT_TRUE(equal("video/x-raw, width=[ 1, 2 ]", "video/x-raw, width={ 2, 1 }"));
  EXPECT_FALSE(equal("video/x-raw; audio/x-raw", "audio/x-raw"));
  EXPECT_FALSE(equal("video/x-raw, width=1; video/x-raw, width=2", "video/x-raw, width=1"));
  EXPECT_FALSE(equal("video/x-raw", "video/x-raw, width=1"));
  EXPECT_FALSE(equal("video/x-raw, width=1", "video/x-raw"));
  EXPECT_FALSE(equal("video/x-raw, width=[ 1, 2 ]", "video/x-raw, width=1"));
  EXPECT_FALSE(equal("video/x-raw", "video/x-raw(memory:GLMemory)"));
}

TEST(CapsEqual, LeavesTheListsUnchanged) {
  const std::vector<Caps> first = make_list({"video/x-raw", "audio/x-raw"});
  const std::vector<Caps> second = make_list({"audio/x-raw", "video/x-raw"});
  EXPECT_TRUE(Media_Helper::caps_equal(first, second));
  EXPECT_FALSE(Media_Helper::caps_equal(first, {second[0], second[0]}));
  EXPECT_TRUE(Media_Helper::caps_equal(first, first));
  ASSERT_EQ(second.size(), 2U);
  for (const auto *list : {&first, &second})
    for (const Caps &caps : *list)
      EXPECT_EQ(reference_count(caps.get()), 1);
}

TEST(CapsEqual, ReleasesListsThatAreMovedIn) {
  const Caps caps = make_caps("video/x-raw");
  std::vector<Caps> first{caps};
  std::vector<Caps> second{caps};
  ASSERT_EQ(reference_count(caps.get()), 3);
  EXPECT_TRUE(Media_Helper::caps_equal(std::move(first), std::move(second)));
  EXPECT_EQ(reference_count(caps.get()), 1);
}

}  // namespace
}  // namespace kel::tavren::tests
