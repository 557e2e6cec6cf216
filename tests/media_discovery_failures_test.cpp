// Failures of the discovery of media, and the texts of its results.

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "discovery_watch.h"
#include "errors.h"
#include "framework_version.h"
#include "log_watch.h"
#include "media_files.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;
using capture::Media_Info;

const std::vector<std::string> in_order = {"found", "discoverer"};

void expect_failure(const std::string &uri, const std::string &result) {
  SCOPED_TRACE(uri);
  Discovery_Watch watch;
  expect_error({TEC::DISCOVERER_RETURNED_ERROR, {result}},
               [&] { Media_Helper::get_media_info(uri, patience); });
  EXPECT_EQ(watch.uris, std::vector<std::string>{uri});
  EXPECT_EQ(watch.dropped, in_order);
}

TEST(GetMediaInfo, FailsWithoutMedia) {
  const Media_Folder folder;
  folder.write("text.txt", "One line of text.\n");
  folder.write("empty.mkv", "");
  for (const char *const file : {"text.txt", "empty.mkv", "missing.mkv", ""})
    expect_failure(folder.uri(file), "GST_DISCOVERER_ERROR");
}

TEST(GetMediaInfo, DoesNotConvertAPathToAUri) {
  const Media_Folder folder;
  folder.record_audio("audio.mka");
  for (const std::string &path :
       {folder.path("audio.mka"), std::string("audio.mka"), std::string("./audio.mka")})
    expect_failure(path, "GST_DISCOVERER_ERROR");
}

TEST(GetMediaInfo, DoesNotRequestADetailedError) {
  Discovery_Watch watch;
  expect_error({TEC::DISCOVERER_RETURNED_ERROR, {"GST_DISCOVERER_ERROR"}},
               [] { Media_Helper::get_media_info("file:///nonexistent.mkv", patience); });
  EXPECT_EQ(watch.uris.size(), 1U);
  EXPECT_FALSE(watch.error_wanted);
}

TEST(GetMediaInfo, FailsForAnEmptyUri) {
  expect_failure("", "GST_DISCOVERER_ERROR");
}

TEST(GetMediaInfo, FailsForAnUnknownScheme) {
  expect_failure("nosuchscheme://camera/1", "GST_DISCOVERER_MISSING_PLUGINS");
}

// Nothing feeds this source.
TEST(GetMediaInfo, TimesOut) {
  Discovery_Watch watch;
  expect_error({TEC::DISCOVERER_RETURNED_ERROR, {"GST_DISCOVERER_TIMEOUT"}},
               [] { Media_Helper::get_media_info("appsrc://", GST_SECOND); });
  EXPECT_EQ(watch.timeouts, std::vector<GstClockTime>{1000000000ULL});
  EXPECT_EQ(watch.dropped, in_order);
}

TEST(GetMediaInfo, FailsWithoutADiscoverer) {
  if (framework_is_1_18())
    GTEST_SKIP() << "GStreamer 1.18 creates a discoverer for GST_CLOCK_TIME_NONE";
  const Expected_Log log("gst_discoverer_new");
  Discovery_Watch watch;
  expect_error({TEC::DISCOVERER_CREATION_FAILED},
               [] { Media_Helper::get_media_info("file:///", GST_CLOCK_TIME_NONE); });
  EXPECT_EQ(watch.timeouts, std::vector<GstClockTime>{18446744073709551615ULL});
  EXPECT_TRUE(watch.uris.empty());
}

TEST(GetMediaInfo, FailsIfTheDiscovererReturnsNothing) {
  Discovery_Watch watch;
  watch.find_nothing = true;
  expect_error({TEC::DISCOVERY_FAILED}, [] { Media_Helper::get_media_info("file:///", patience); });
  EXPECT_EQ(watch.dropped, std::vector<std::string>{"discoverer"});
}

struct Result_Row {
  int result;
  const char *text;
};

// clang-format off
const Result_Row results[] = {
    {0,  "GST_DISCOVERER_OK"},
    {1,  "GST_DISCOVERER_URI_INVALID"},
    {2,  "GST_DISCOVERER_ERROR"},
    {3,  "GST_DISCOVERER_TIMEOUT"},
    {4,  "GST_DISCOVERER_BUSY"},
    {5,  "GST_DISCOVERER_MISSING_PLUGINS"},
    {6,  "UNKNOWN"},
    {7,  "UNKNOWN"},
    {-1, "UNKNOWN"},
    {-2, "UNKNOWN"},
    {std::numeric_limits<int>::min(), "UNKNOWN"},
    {std::numeric_limits<int>::max(), "UNKNOWN"},
};
// clang-format on

TEST(DiscovererResultText, IsTheNameOfTheResult) {
  for (const Result_Row &row : results)
    EXPECT_EQ(
        Media_Helper::gst_discoverer_result_to_string(static_cast<GstDiscovererResult>(row.result)),
        row.text)
        << row.result;
}

TEST(DiscovererResultText, IsPartOfTheError) {
  for (const Result_Row &row : results) {
    if (row.result == 0) continue;
    Discovery_Watch watch;
    watch.change_result = true;
    watch.result = row.result;
    expect_error({TEC::DISCOVERER_RETURNED_ERROR, {row.text}},
                 [] { Media_Helper::get_media_info("", patience); });
    EXPECT_EQ(watch.dropped, in_order);
  }
}

// The framework's result for the beginning of a recording varies. The library returns either a
// complete record or the corresponding error.
TEST(GetMediaInfo, ReturnsTheResultOfTheDiscovererForABrokenFile) {
  const Media_Folder folder;
  folder.record_video_and_audio("whole.mkv");
  const std::string whole = folder.read("whole.mkv");
  for (const std::size_t size : {std::size_t{100}, std::size_t{500}, whole.size() / 4}) {
    SCOPED_TRACE(size);
    folder.write("broken.mkv", whole.substr(0, size));
    Discovery_Watch watch;
    watch.hold_found = true;
    std::unique_ptr<Media_Info> info;
    std::string error;
    try {
      info = Media_Helper::get_media_info(folder.uri("broken.mkv"), GST_SECOND);
    } catch (const Backend_Error<std::runtime_error> &caught) {
      error = caught.what();
    }
    ASSERT_NE(watch.found, nullptr);
    const GstDiscovererResult result = gst_discoverer_info_get_result(watch.found);
    if (result != GST_DISCOVERER_OK) {
      EXPECT_EQ(info, nullptr);
      EXPECT_EQ(error, text_of({TEC::DISCOVERER_RETURNED_ERROR, {results[result].text}}));
      continue;
    }
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->video_caps,
              caps_of_streams(gst_discoverer_info_get_video_streams(watch.found)));
    EXPECT_EQ(info->audio_caps,
              caps_of_streams(gst_discoverer_info_get_audio_streams(watch.found)));
    EXPECT_EQ(info->duration, gst_discoverer_info_get_duration(watch.found));
  }
}

}  // namespace
}  // namespace kel::tavren::tests
