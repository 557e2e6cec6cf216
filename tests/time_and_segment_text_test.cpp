// Times and segments as text for logs.

#include <limits>
#include <string>

#include <gtest/gtest.h>
#include <tavren/capture/media_helper.h>

#include "grouping_locale.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

struct Time_Row {
  guint64 time;
  const char *text;
};

// clang-format off
const Time_Row times[] = {
    {0ULL,                    "0:00:00.000000000"},
    {1ULL,                    "0:00:00.000000001"},
    {999999999ULL,            "0:00:00.999999999"},
    {1000000000ULL,           "0:00:01.000000000"},
    {59999999999ULL,          "0:00:59.999999999"},
    {60000000000ULL,          "0:01:00.000000000"},
    {3599999999999ULL,        "0:59:59.999999999"},
    {3600000000000ULL,        "1:00:00.000000000"},
    {3723000000001ULL,        "1:02:03.000000001"},
    {36000000000000ULL,       "10:00:00.000000000"},
    {356400000000000ULL,      "99:00:00.000000000"},
    {360000000000000ULL,      "100:00:00.000000000"},
    {3600000000000000ULL,     "1000:00:00.000000000"},
    {9223372036854775807ULL,  "2562047:47:16.854775807"},
    {9223372036854775808ULL,  "2562047:47:16.854775808"},
    {18446744073709551614ULL, "5124095:34:33.709551614"},
    {18446744073709551615ULL, "99:99:99.999999999"},
};
// clang-format on

TEST(TimeText, ContainsHoursMinutesSecondsAndNanoseconds) {
  for (const Time_Row &row : times)
    EXPECT_EQ(Media_Helper::gst_time_to_string(row.time), row.text) << row.time;
}

TEST(TimeText, IsAllNinesForNoTime) {
  EXPECT_EQ(Media_Helper::gst_time_to_string(GST_CLOCK_TIME_NONE), "99:99:99.999999999");
}

TEST(TimeText, DoesNotDependOnTheLocale) {
  const Grouping_Locale locale;
  for (const Time_Row &row : times)
    EXPECT_EQ(Media_Helper::gst_time_to_string(row.time), row.text) << row.time;
}

GstSegment make_segment(GstFormat format) {
  GstSegment segment;
  gst_segment_init(&segment, format);
  return segment;
}

// Returns a segment with a different value in each field.
GstSegment make_full_segment() {
  GstSegment segment = make_segment(GST_FORMAT_TIME);
  segment.flags = static_cast<GstSegmentFlags>(GST_SEGMENT_FLAG_RESET | GST_SEGMENT_FLAG_SKIP |
                                               GST_SEGMENT_FLAG_TRICKMODE_KEY_UNITS);
  segment.rate = 1234.5;
  segment.applied_rate = -0.25;
  segment.base = 1 * GST_SECOND;
  segment.offset = 2 * GST_SECOND;
  segment.start = 3 * GST_SECOND;
  segment.stop = GST_SECOND * 3600 * 4000;
  segment.time = 5 * GST_SECOND;
  segment.position = 6 * GST_SECOND;
  segment.duration = 7 * GST_SECOND + 8;
  return segment;
}

const char *const full_segment =
    "Segment :: Flags = 145, Rate = 1234.5, Applied_Rate = -0.25, Base = 0:00:01.000000000, "
    "Offset = 0:00:02.000000000, Start = 0:00:03.000000000, Stop = 4000:00:00.000000000, "
    "Time = 0:00:05.000000000, Position = 0:00:06.000000000, Duration = 0:00:07.000000008. ";

TEST(SegmentText, DescribesANewSegment) {
  const GstSegment segment = make_segment(GST_FORMAT_TIME);
  EXPECT_EQ(
      Media_Helper::gst_segment_to_string(&segment),
      "Segment :: Flags = 0, Rate = 1, Applied_Rate = 1, Base = 0:00:00.000000000, "
      "Offset = 0:00:00.000000000, Start = 0:00:00.000000000, Stop = 99:99:99.999999999, "
      "Time = 0:00:00.000000000, Position = 0:00:00.000000000, Duration = 99:99:99.999999999. ");
}

TEST(SegmentText, ContainsEveryFieldInOrder) {
  const GstSegment segment = make_full_segment();
  ASSERT_EQ(static_cast<int>(segment.flags), 145);
  EXPECT_EQ(Media_Helper::gst_segment_to_string(&segment), full_segment);
}

TEST(SegmentText, DoesNotDependOnTheLocale) {
  GstSegment segment = make_full_segment();
  const Grouping_Locale locale;
  EXPECT_EQ(Media_Helper::gst_segment_to_string(&segment), full_segment);
  segment.flags = GST_SEGMENT_FLAG_TRICKMODE_FORWARD_PREDICTED;
  segment.rate = 123456.0;
  const std::string text = Media_Helper::gst_segment_to_string(&segment);
  EXPECT_EQ(text.substr(0, text.find(", Applied")), "Segment :: Flags = 512, Rate = 123456");
}

TEST(SegmentText, PrintsRatesWithSixDigits) {
  const struct {
    double rate;
    const char *text;
  } rows[] = {
      {1.0, "1"},
      {0.5, "0.5"},
      {-1.0, "-1"},
      {-0.5, "-0.5"},
      {2.0, "2"},
      {1.0 / 3.0, "0.333333"},
      {2.0 / 3.0, "0.666667"},
      {123456.0, "123456"},
      {1234567.0, "1.23457e+06"},
      {0.0001, "0.0001"},
      {0.00001, "1e-05"},
      {0.0, "0"},
      {std::numeric_limits<double>::infinity(), "inf"},
      {-std::numeric_limits<double>::infinity(), "-inf"},
      {std::numeric_limits<double>::quiet_NaN(), "nan"},
      {-std::numeric_limits<double>::quiet_NaN(), "-nan"},
      {-0.0, "-0"},
  };
  for (const auto &row : rows) {
    GstSegment segment = make_segment(GST_FORMAT_TIME);
    segment.rate = row.rate;
    segment.applied_rate = row.rate;
    const std::string text = Media_Helper::gst_segment_to_string(&segment);
    EXPECT_EQ(text.substr(0, text.find(", Base")), std::string("Segment :: Flags = 0, Rate = ") +
                                                       row.text + ", Applied_Rate = " + row.text);
    EXPECT_EQ(text.substr(text.size() - 2), ". ");
  }
}

TEST(SegmentText, PrintsFlagsAsASignedNumber) {
  const struct {
    guint flags;
    const char *text;
  } rows[] = {
      {0x7FFFFFFF, "2147483647"},
      {0x80000000, "-2147483648"},
      {0x80000001, "-2147483647"},
      {0xFFFFFFFF, "-1"},
  };
  for (const auto &row : rows) {
    GstSegment segment = make_segment(GST_FORMAT_TIME);
    segment.flags = static_cast<GstSegmentFlags>(row.flags);
    const std::string text = Media_Helper::gst_segment_to_string(&segment);
    EXPECT_EQ(text.substr(0, text.find(", Rate")), std::string("Segment :: Flags = ") + row.text);
  }
}

TEST(SegmentText, AcceptsNull) {
  EXPECT_EQ(Media_Helper::gst_segment_to_string(nullptr), "NULL segment");
}

TEST(SegmentText, OmitsTheFieldsOfAnotherFormat) {
  for (const GstFormat format : {GST_FORMAT_UNDEFINED, GST_FORMAT_DEFAULT, GST_FORMAT_BYTES,
                                 GST_FORMAT_BUFFERS, GST_FORMAT_PERCENT}) {
    GstSegment segment = make_full_segment();
    segment.format = format;
    EXPECT_EQ(Media_Helper::gst_segment_to_string(&segment),
              "Segment is not GST_FORMAT_TIME. Cannot print data.");
  }
}

TEST(SegmentText, LeavesTheSegmentUnchanged) {
  const GstSegment segment = make_full_segment();
  const GstSegment before = segment;
  Media_Helper::gst_segment_to_string(&segment);
  EXPECT_TRUE(gst_segment_is_equal(&segment, &before));
}

}  // namespace
}  // namespace kel::tavren::tests
