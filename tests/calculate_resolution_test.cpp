// The calculation of resolutions.

#include <limits>
#include <stdexcept>
#include <utility>
#include <vector>

#include "errors.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

using Size = std::pair<unsigned long long, unsigned long long>;
constexpr unsigned long long largest = std::numeric_limits<unsigned long long>::max();
constexpr unsigned long long half = 9223372036854775808ULL;  // 2^63

TEST(CalculateResolution, FitsTheSourceIntoTheBounds) {
  const struct {
    Size bounds, source, result;
  } rows[] = {
      {{1280, 720}, {1920, 1080}, {1280, 720}},
      {{640, 480}, {1920, 1080}, {640, 360}},
      {{1920, 1080}, {640, 480}, {1440, 1080}},
      {{720, 480}, {1920, 1080}, {720, 405}},
      {{1024, 768}, {1920, 1080}, {1024, 576}},
      {{352, 288}, {1920, 1080}, {352, 198}},
      {{100, 100}, {3, 1}, {100, 33}},
      {{100, 100}, {1, 3}, {33, 100}},
      // the size of the source is not a limit
      {{3840, 2160}, {4, 3}, {2880, 2160}},
      {{1, 1}, {1, 1}, {1, 1}},
      {{1, 1}, {1920, 1080}, {1, 0}},
      // exactly or nearly equal shapes: the ratio is computed first, and the side is truncated
      {{1366, 768}, {1366, 768}, {1366, 768}},
      {{1919, 1079}, {1919, 1079}, {1919, 1079}},
      {{49, 1}, {49, 1}, {49, 1}},
      {{1, 49}, {1, 49}, {0, 49}},
      {{853, 480}, {16, 9}, {853, 479}},
      {{9, 1000}, {9, 7}, {9, 6}},
      {{35, 1000}, {7, 3}, {35, 14}},
      // a side may become 0
      {{1, 100}, {1000, 1}, {1, 0}},
      {{100, 1}, {1, 1000}, {0, 1}},
      {{1920, 1080}, {largest, 1}, {1920, 0}},
      {{1920, 1080}, {1, largest}, {0, 1080}},
  };
  for (const auto &row : rows)
    EXPECT_EQ(Media_Helper::calculate_resolution(row.bounds, row.source), row.result)
        << row.bounds.first << "x" << row.bounds.second << " and " << row.source.first << "x"
        << row.source.second;
}

TEST(CalculateResolution, IsExactBeyondTheRangeOfSignedNumbers) {
  const struct {
    Size bounds, source, result;
  } rows[] = {
      {{half, half}, {1, 1}, {half, half}},
      {{half, half}, {2, 1}, {half, half / 2}},
      {{half, half}, {1, 2}, {half / 2, half}},
      {{half + 1, half + 1}, {1, 1}, {half, half + 1}},
      {{1920, 1080}, {half, half / 2}, {1920, 960}},
      {{1920, 1080}, {half, half}, {1080, 1080}},
      {{1920, 1080}, {half + 2048, half}, {1080, 1080}},
      {{1, 1}, {largest, largest}, {1, 1}},
      {{largest, 1}, {3, 1}, {3, 1}},
      {{1, largest}, {1, 1}, {1, 1}},
      {{largest, half}, {16, 9}, {16397105843297378304ULL, half}},
      {{half / 2, largest}, {1, 3}, {half / 2, 13835058055282163712ULL}},
      {{9007199254740993ULL, 9007199254740993ULL},
       {1, 1},
       {9007199254740992ULL, 9007199254740993ULL}},
  };
  for (const auto &row : rows)
    EXPECT_EQ(Media_Helper::calculate_resolution(row.bounds, row.source), row.result)
        << row.bounds.first << "x" << row.bounds.second << " and " << row.source.first << "x"
        << row.source.second;
}

// 2^64 - 2048 is the largest double that fits. Bounds from 2^64 - 1024 are rounded to 2^64.
TEST(CalculateResolution, SaturatesASideThatOverflows) {
  const unsigned long long last_that_fits = largest - 2047;
  const unsigned long long rounds_down = largest - 1024;
  const unsigned long long rounds_up = largest - 1023;
  const struct {
    Size bounds, source, result;
  } rows[] = {
      {{largest, largest}, {1, 1}, {largest, largest}},
      {{largest, half}, {2, 1}, {largest, half}},
      {{largest, half / 2}, {4, 1}, {largest, half / 2}},
      {{rounds_up, half}, {2, 1}, {largest, half}},
      {{rounds_up, rounds_up}, {1, 1}, {largest, rounds_up}},
      {{rounds_down, rounds_down}, {1, 1}, {last_that_fits, rounds_down}},
      {{last_that_fits, last_that_fits}, {1, 1}, {last_that_fits, last_that_fits}},
      {{last_that_fits, largest}, {1, 1}, {last_that_fits, last_that_fits}},
      {{largest, last_that_fits}, {1, 1}, {last_that_fits, last_that_fits}},
      {{largest, 1}, {largest, 1}, {largest, 1}},
  };
  for (const auto &row : rows)
    EXPECT_EQ(Media_Helper::calculate_resolution(row.bounds, row.source), row.result)
        << row.bounds.first << "x" << row.bounds.second << " and " << row.source.first << "x"
        << row.source.second;
}

// Returns pairs of bounds and source in which at least one side is 0.
std::vector<std::pair<Size, Size>> invalid_resolutions() {
  std::vector<std::pair<Size, Size>> pairs;
  for (unsigned zeros = 1; zeros < 16; ++zeros) {
    const auto side = [zeros](unsigned bit) { return (zeros >> bit & 1U) != 0 ? 0ULL : 7ULL; };
    pairs.push_back({{side(0), side(1)}, {side(2), side(3)}});
  }
  pairs.push_back({{0, largest}, {largest, largest}});
  pairs.push_back({{largest, largest}, {largest, 0}});
  return pairs;
}

TEST(CalculateResolution, ThrowsALogicErrorForASideOfZero) {
  for (const auto &[bounds, source] : invalid_resolutions()) {
    try {
      Media_Helper::calculate_resolution(bounds, source);
      ADD_FAILURE() << "threw nothing";
    } catch (const Tavren_Error<std::logic_error> &error) {
      const Tavren_Error<std::exception> &root = error;
      EXPECT_EQ(root.code(), TEC::INVALID_RESOLUTION);
      EXPECT_EQ(error.what(), text_of({TEC::INVALID_RESOLUTION}));
    }
  }
}

template <typename Class>
bool is_caught_as() {
  try {
    Media_Helper::calculate_resolution({0, 1080}, {1920, 1080});
  } catch (const Class &) {
    return true;
  } catch (...) {
  }
  return false;
}

TEST(CalculateResolution, DoesNotThrowABackendErrorForASideOfZero) {
  EXPECT_TRUE(is_caught_as<Tavren_Error<std::logic_error>>());
  EXPECT_TRUE(is_caught_as<Tavren_Error<std::exception>>());
  EXPECT_TRUE(is_caught_as<std::logic_error>());
  EXPECT_TRUE(is_caught_as<std::exception>());
  EXPECT_FALSE(is_caught_as<std::runtime_error>());
  EXPECT_FALSE(is_caught_as<Tavren_Error<std::runtime_error>>());
  EXPECT_FALSE(is_caught_as<Backend_Error<std::exception>>());
  EXPECT_FALSE(is_caught_as<Backend_Error<std::runtime_error>>());
}

}  // namespace
}  // namespace kel::tavren::tests
