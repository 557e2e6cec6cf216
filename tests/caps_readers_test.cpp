// Reading values from caps, and computing with them.

#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "elements.h"
#include "errors.h"
#include "log_watch.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

using Size = std::pair<unsigned long long, unsigned long long>;
using Rate = std::pair<long long, long long>;

constexpr int largest_int = std::numeric_limits<int>::max();
constexpr unsigned long long largest = std::numeric_limits<unsigned long long>::max();
constexpr unsigned long long half = 9223372036854775808ULL;  // 2^63

// Calls a reader with caps made from a text. The reader must not change the caps.
template <typename Reader>
auto read(Reader reader, const char *text) {
  const Caps caps = make_caps(text);
  const Caps before(gst_caps_copy(caps.get()), false);
  auto result = reader(caps.get());
  EXPECT_EQ(reference_count(caps.get()), 1);
  EXPECT_TRUE(gst_caps_is_strictly_equal(caps.get(), before.get()));
  return result;
}

template <typename Reader>
void expect_unreadable(Reader reader, const char *text, int code, const char *error) {
  SCOPED_TRACE(text);
  const Caps caps = make_caps(text);
  ASSERT_TRUE(caps);
  expect_error(code, error, [&] { reader(caps.get()); });
  EXPECT_EQ(reference_count(caps.get()), 1);
}

// Null and other types than caps fail the check.
template <typename Reader>
void expect_checked(Reader reader, const char *error) {
  expect_error(0x15210, error, [&] { reader(nullptr); });
  const std::unique_ptr<GstBuffer, decltype(&gst_buffer_unref)> buffer(gst_buffer_new(),
                                                                       gst_buffer_unref);
  expect_error(0x15210, error, [&] { reader(reinterpret_cast<GstCaps *>(buffer.get())); });
  EXPECT_EQ(GST_MINI_OBJECT_REFCOUNT_VALUE(buffer.get()), 1);
}

TEST(GetFramerateFromCaps, ReturnsTheFraction) {
  const struct {
    const char *caps;
    Rate rate;
  } rows[] = {
      {"video/x-raw, framerate=25/1", {25, 1}},
      {"video/x-raw, framerate=30000/1001", {30000, 1001}},
      {"video/x-raw, framerate=1/60", {1, 60}},
      {"video/x-raw, framerate=50/2", {25, 1}},
      {"image/jpeg, width=640, framerate=15/1, height=480", {15, 1}},
      {"video/x-raw, framerate=2147483647/1", {largest_int, 1}},
      {"video/x-raw, framerate=1/2147483647", {1, largest_int}},
      {"video/x-raw, framerate=25/1; video/x-raw, framerate=10/1", {25, 1}},
      {"video/x-raw, framerate=25/1; video/x-raw", {25, 1}},
  };
  for (const auto &row : rows)
    EXPECT_EQ(read(Media_Helper::get_framerate_from_caps, row.caps), row.rate) << row.caps;
}

TEST(GetFramerateFromCaps, RequiresASingleFractionInTheFirstStructure) {
  for (const char *const text : {
           "video/x-raw",
           "video/x-raw, width=640, height=480",
           "video/x-raw, framerate=25",
           "video/x-raw, framerate=(string)fast",
           "video/x-raw, framerate=25.0",
           "video/x-raw, framerate=[ 0/1, 30/1 ]",
           "video/x-raw, framerate={ (fraction)15/1, (fraction)30/1 }",
           "video/x-raw, max-framerate=30/1",
           "video/x-raw; video/x-raw, framerate=25/1",
       })
    expect_unreadable(Media_Helper::get_framerate_from_caps, text, 0x15260,
                      "Unable to get framerate from caps in get_framerate_from_caps");
}

TEST(GetFramerateFromCaps, RequiresAPositiveFraction) {
  for (const char *const text : {
           "video/x-raw, framerate=0/1",
           "video/x-raw, framerate=-1/1",
           "video/x-raw, framerate=-30/1",
           "video/x-raw, framerate=30/-1",
           "video/x-raw, framerate=0/1; video/x-raw, framerate=25/1",
       })
    expect_unreadable(Media_Helper::get_framerate_from_caps, text, 0x15270,
                      "Retrieved invalid numerator or denomenator in get_framerate_from_caps");
}

// The framework parses, sets and copies only fractions with a positive denominator, but a plugin
// may set the value directly.
TEST(GetFramerateFromCaps, RefusesADenominatorOfZeroOrLess) {
  for (const int denominator : {0, -1, -largest_int}) {
    const Caps caps = make_caps("video/x-raw");
    GValue framerate = G_VALUE_INIT;
    g_value_init(&framerate, GST_TYPE_FRACTION);
    framerate.data[0].v_int = 25;
    framerate.data[1].v_int = denominator;
    gst_caps_set_value(caps.get(), "framerate", &framerate);
    g_value_unset(&framerate);
    expect_error(0x15270, "Retrieved invalid numerator or denomenator in get_framerate_from_caps",
                 [&] { Media_Helper::get_framerate_from_caps(caps.get()); });
  }
}

TEST(GetFramerateFromCaps, ChecksItsCaps) {
  expect_checked(Media_Helper::get_framerate_from_caps,
                 "caps in get_framerate_from_caps is not a GstCaps *.");
}

TEST(GetResolutionFromCaps, ReturnsWidthAndHeight) {
  const struct {
    const char *caps;
    Size size;
  } rows[] = {
      {"video/x-raw, width=1920, height=1080", {1920, 1080}},
      {"image/jpeg, height=480, framerate=15/1, width=640", {640, 480}},
      {"video/x-h264, width=1, height=1", {1, 1}},
      {"video/x-raw, width=2147483647, height=2147483647", {largest_int, largest_int}},
      {"video/x-raw, width=640, height=480; video/x-raw, width=320, height=240", {640, 480}},
      {"video/x-raw, width=640, height=480; audio/x-raw", {640, 480}},
  };
  for (const auto &row : rows)
    EXPECT_EQ(read(Media_Helper::get_resolution_from_caps, row.caps), row.size) << row.caps;
}

TEST(GetResolutionFromCaps, RequiresTwoIntegersInTheFirstStructure) {
  for (const char *const text : {
           "video/x-raw",
           "video/x-raw, width=640",
           "video/x-raw, height=480",
           "video/x-raw, width=0",
           "video/x-raw, width=-640",
           "video/x-raw, width=640.0, height=480",
           "video/x-raw, width=640, height=(string)480",
           "video/x-raw, width=(gint64)640, height=(gint64)480",
           "video/x-raw, width=[ 1, 640 ], height=480",
           "video/x-raw, width=640, height={ 480, 360 }",
           "video/x-raw; video/x-raw, width=640, height=480",
           "video/x-raw, width=640; video/x-raw, height=480",
       })
    expect_unreadable(Media_Helper::get_resolution_from_caps, text, 0x15280,
                      "Unable to get width and/or height in get_resolution_from_caps");
}

TEST(GetResolutionFromCaps, RequiresPositiveSides) {
  for (const char *const text : {
           "video/x-raw, width=0, height=480",
           "video/x-raw, width=640, height=0",
           "video/x-raw, width=0, height=0",
           "video/x-raw, width=-1, height=480",
           "video/x-raw, width=640, height=-1",
           "video/x-raw, width=-2147483648, height=-2147483648",
           "video/x-raw, width=0, height=0; video/x-raw, width=640, height=480",
       })
    expect_unreadable(Media_Helper::get_resolution_from_caps, text, 0x15290,
                      "Retrieved invalid width and/or height in get_resolution_from_caps");
}

TEST(GetResolutionFromCaps, ChecksItsCaps) {
  expect_checked(Media_Helper::get_resolution_from_caps,
                 "caps in get_resolution_from_caps is not a GstCaps *.");
}

TEST(GetEncodingNameFromCaps, ReturnsTheName) {
  const struct {
    const char *caps;
    const char *name;
  } rows[] = {
      {"application/x-rtp, encoding-name=H264", "H264"},
      {"application/x-rtp, media=application, encoding-name=VND.ONVIF.METADATA",
       "VND.ONVIF.METADATA"},
      {"application/x-rtp, encoding-name=h264", "h264"},
      {"video/x-raw, encoding-name=(string)\"two\\ words\"", "two words"},
      {"application/x-rtp, encoding-name=(string)\"\"", ""},
      {"application/x-rtp", ""},
      {"application/x-rtp, encoding-name=(int)264", ""},
      {"application/x-rtp, encoding-name={ H264, JPEG }", ""},
      {"application/x-rtp, encoding-name=H264; application/x-rtp, encoding-name=JPEG", "H264"},
      {"application/x-rtp; application/x-rtp, encoding-name=JPEG", ""},
  };
  for (const auto &row : rows)
    EXPECT_EQ(read(Media_Helper::get_encoding_name_from_caps, row.caps), row.name) << row.caps;
}

TEST(GetEncodingNameFromCaps, ReturnsACopy) {
  Caps caps = make_caps("application/x-rtp, encoding-name=H264");
  const std::string name = Media_Helper::get_encoding_name_from_caps(caps.get());
  gst_caps_set_simple(caps.get(), "encoding-name", G_TYPE_STRING, "JPEG", nullptr);
  caps.reset();
  EXPECT_EQ(name, "H264");
}

TEST(GetEncodingNameFromCaps, ChecksItsCaps) {
  expect_checked(Media_Helper::get_encoding_name_from_caps,
                 "caps in get_encoding_name_from_caps is not a GstCaps *.");
}

// The number of structures is not checked first, so the framework logs a critical and the reader
// finds nothing.
TEST(CapsReaders, FindNothingInCapsWithoutStructures) {
  const Expected_Log no_structure("gst_caps_get_structure");
  const Expected_Log no_field("gst_structure_get_");
  for (const char *const text : {"EMPTY", "ANY"}) {
    expect_unreadable(Media_Helper::get_framerate_from_caps, text, 0x15260,
                      "Unable to get framerate from caps in get_framerate_from_caps");
    expect_unreadable(Media_Helper::get_resolution_from_caps, text, 0x15280,
                      "Unable to get width and/or height in get_resolution_from_caps");
    EXPECT_EQ(read(Media_Helper::get_encoding_name_from_caps, text), "");
  }
}

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
      EXPECT_EQ(static_cast<int>(root.code()), 0x15250);
      EXPECT_STREQ(error.what(), "Invalid resolution provided in calculate_resolution");
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
