// Reading values from caps.

#include <limits>
#include <memory>
#include <utility>

#include "elements.h"
#include "errors.h"
#include "log_watch.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

using Size = std::pair<unsigned long long, unsigned long long>;
using Rate = std::pair<long long, long long>;
constexpr int largest_int = std::numeric_limits<int>::max();

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
void expect_unreadable(Reader reader, const char *text, const Expected_Error &error) {
  SCOPED_TRACE(text);
  const Caps caps = make_caps(text);
  ASSERT_TRUE(caps);
  expect_error(error, [&] { reader(caps.get()); });
  EXPECT_EQ(reference_count(caps.get()), 1);
}

// Null and other types than caps fail the check.
template <typename Reader>
void expect_checked(Reader reader, const std::string &argument) {
  expect_error({TEC::NOT_CAPS, {argument}}, [&] { reader(nullptr); });
  const std::unique_ptr<GstBuffer, decltype(&gst_buffer_unref)> buffer(gst_buffer_new(),
                                                                       gst_buffer_unref);
  expect_error({TEC::NOT_CAPS, {argument}},
               [&] { reader(reinterpret_cast<GstCaps *>(buffer.get())); });
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
    expect_unreadable(Media_Helper::get_framerate_from_caps, text, {TEC::CAPS_WITHOUT_FRAMERATE});
}

TEST(GetFramerateFromCaps, RequiresAPositiveFraction) {
  for (const char *const text : {
           "video/x-raw, framerate=0/1",
           "video/x-raw, framerate=-1/1",
           "video/x-raw, framerate=-30/1",
           "video/x-raw, framerate=30/-1",
           "video/x-raw, framerate=0/1; video/x-raw, framerate=25/1",
       })
    expect_unreadable(Media_Helper::get_framerate_from_caps, text, {TEC::INVALID_FRAMERATE});
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
    expect_error({TEC::INVALID_FRAMERATE},
                 [&] { Media_Helper::get_framerate_from_caps(caps.get()); });
  }
}

TEST(GetFramerateFromCaps, ChecksItsCaps) {
  expect_checked(Media_Helper::get_framerate_from_caps, "caps in get_framerate_from_caps");
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
    expect_unreadable(Media_Helper::get_resolution_from_caps, text, {TEC::CAPS_WITHOUT_RESOLUTION});
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
    expect_unreadable(Media_Helper::get_resolution_from_caps, text, {TEC::INVALID_CAPS_RESOLUTION});
}

TEST(GetResolutionFromCaps, ChecksItsCaps) {
  expect_checked(Media_Helper::get_resolution_from_caps, "caps in get_resolution_from_caps");
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
  expect_checked(Media_Helper::get_encoding_name_from_caps, "caps in get_encoding_name_from_caps");
}

// The number of structures is not checked first, so the framework logs a critical and the reader
// finds nothing.
TEST(CapsReaders, FindNothingInCapsWithoutStructures) {
  const Expected_Log no_structure("gst_caps_get_structure");
  const Expected_Log no_field("gst_structure_get_");
  for (const char *const text : {"EMPTY", "ANY"}) {
    expect_unreadable(Media_Helper::get_framerate_from_caps, text, {TEC::CAPS_WITHOUT_FRAMERATE});
    expect_unreadable(Media_Helper::get_resolution_from_caps, text, {TEC::CAPS_WITHOUT_RESOLUTION});
    EXPECT_EQ(read(Media_Helper::get_encoding_name_from_caps, text), "");
  }
}

}  // namespace
}  // namespace kel::tavren::tests
