// Discovery of real media.

#include <algorithm>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "errors.h"
#include "framework_version.h"
#include "log_watch.h"
#include "media_files.h"
#include "references.h"
#include "replaced_function.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;
using capture::Media_Info;

constexpr GstClockTime patience = 20 * GST_SECOND;

// Observes and modifies the framework's discovery on this thread, while an instance exists.
class Discovery_Watch {
public:
  Discovery_Watch() { current = this; }
  ~Discovery_Watch() {
    if (found != nullptr) g_object_unref(found);
    current = nullptr;
  }
  Discovery_Watch(const Discovery_Watch &) = delete;
  Discovery_Watch &operator=(const Discovery_Watch &) = delete;

  // Modifications.
  bool find_nothing = false;     // the discovery returns null
  bool hold_found = false;       // the discovered information outlives the call
  bool change_result = false;    // to the following value
  int result = 0;                //
  std::size_t without_caps = 0;  // this many streams, from the first on, have no caps

  // Observations.
  std::vector<GstClockTime> timeouts;
  std::vector<std::string> uris;
  std::vector<std::string> dropped;  // objects that were destroyed, in order
  bool error_wanted = false;         // a detailed error was requested
  std::vector<std::string> asked;    // kinds of streams whose lists were requested, in order
  std::vector<GList *> lists;        // lists that were returned and not freed
  GstDiscovererInfo *found = nullptr;

  void watch_end(gpointer object, const char *name) {
    g_object_weak_ref(
        G_OBJECT(object),
        [](gpointer data, GObject *) {
          if (current != nullptr) current->dropped.emplace_back(static_cast<char *>(data));
        },
        const_cast<char *>(name));
  }

  static thread_local Discovery_Watch *current;
};

thread_local Discovery_Watch *Discovery_Watch::current = nullptr;

GList *note_list(const char *kind, GList *streams) {
  if (Discovery_Watch *const watch = Discovery_Watch::current; watch != nullptr) {
    watch->asked.emplace_back(kind);
    if (streams != nullptr) watch->lists.push_back(streams);
  }
  return streams;
}

}  // namespace
}  // namespace kel::tavren::tests

using kel::tavren::tests::Discovery_Watch;
using kel::tavren::tests::note_list;
using kel::tavren::tests::replaced_function;

extern "C" {

GstDiscoverer *gst_discoverer_new(GstClockTime timeout, GError **error) {
  GstDiscoverer *const discoverer = replaced_function(gst_discoverer_new, __func__)(timeout, error);
  Discovery_Watch *const watch = Discovery_Watch::current;
  if (watch != nullptr) {
    watch->timeouts.push_back(timeout);
    if (error != nullptr) watch->error_wanted = true;
    if (discoverer != nullptr) watch->watch_end(discoverer, "discoverer");
  }
  return discoverer;
}

GstDiscovererInfo *gst_discoverer_discover_uri(GstDiscoverer *discoverer, const gchar *uri,
                                               GError **error) {
  Discovery_Watch *const watch = Discovery_Watch::current;
  if (watch != nullptr) {
    watch->uris.emplace_back(uri);
    if (error != nullptr) watch->error_wanted = true;
    if (watch->find_nothing) return nullptr;
  }
  GstDiscovererInfo *const found =
      replaced_function(gst_discoverer_discover_uri, __func__)(discoverer, uri, error);
  if (watch != nullptr) {
    watch->watch_end(found, "found");
    if (watch->hold_found) watch->found = GST_DISCOVERER_INFO(g_object_ref(found));
  }
  return found;
}

GstDiscovererResult gst_discoverer_info_get_result(const GstDiscovererInfo *found) {
  const Discovery_Watch *const watch = Discovery_Watch::current;
  if (watch != nullptr && watch->change_result)
    return static_cast<GstDiscovererResult>(watch->result);
  return replaced_function(gst_discoverer_info_get_result, __func__)(found);
}

GList *gst_discoverer_info_get_video_streams(GstDiscovererInfo *found) {
  return note_list("video",
                   replaced_function(gst_discoverer_info_get_video_streams, __func__)(found));
}

GList *gst_discoverer_info_get_audio_streams(GstDiscovererInfo *found) {
  return note_list("audio",
                   replaced_function(gst_discoverer_info_get_audio_streams, __func__)(found));
}

void gst_discoverer_stream_info_list_free(GList *streams) {
  if (Discovery_Watch *const watch = Discovery_Watch::current; watch != nullptr)
    watch->lists.erase(std::remove(watch->lists.begin(), watch->lists.end(), streams),
                       watch->lists.end());
  replaced_function(gst_discoverer_stream_info_list_free, __func__)(streams);
}

GstCaps *gst_discoverer_stream_info_get_caps(GstDiscovererStreamInfo *stream) {
  Discovery_Watch *const watch = Discovery_Watch::current;
  if (watch != nullptr && watch->without_caps > 0) {
    --watch->without_caps;
    return nullptr;
  }
  return replaced_function(gst_discoverer_stream_info_get_caps, __func__)(stream);
}
}

namespace kel::tavren::tests {
namespace {

std::vector<Caps> caps_of_streams(GList *streams) {
  std::vector<Caps> caps;
  for (const GList *node = streams; node != nullptr; node = node->next)
    caps.emplace_back(gst_discoverer_stream_info_get_caps(GST_DISCOVERER_STREAM_INFO(node->data)),
                      false);
  gst_discoverer_stream_info_list_free(streams);
  return caps;
}

std::string field_of(const Caps &caps, const char *name) {
  const GValue *const value = gst_structure_get_value(gst_caps_get_structure(caps.get(), 0), name);
  if (value == nullptr) return {};
  char *const text = gst_value_serialize(value);
  std::string copy = text;
  g_free(text);
  return copy;
}

std::string name_of(const Caps &caps) {
  return gst_structure_get_name(gst_caps_get_structure(caps.get(), 0));
}

const std::vector<std::string> in_order = {"found", "discoverer"};

TEST(GetMediaInfo, FindsVideoAndAudio) {
  const Media_Folder folder;
  folder.record_video_and_audio("camera.mkv");
  const std::string uri = folder.uri("camera.mkv");

  const std::unique_ptr<Media_Info> info = Media_Helper::get_media_info(uri, patience);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->uri, uri);
  EXPECT_EQ(info->duration, 2000000000ULL);
  ASSERT_EQ(info->video_caps.size(), 1U);
  EXPECT_EQ(name_of(info->video_caps[0]), "image/jpeg");
  EXPECT_EQ(field_of(info->video_caps[0], "width"), "64");
  EXPECT_EQ(field_of(info->video_caps[0], "height"), "48");
  EXPECT_EQ(field_of(info->video_caps[0], "framerate"), "10/1");
  ASSERT_EQ(info->audio_caps.size(), 1U);
  EXPECT_EQ(name_of(info->audio_caps[0]), "audio/x-mulaw");
  EXPECT_EQ(field_of(info->audio_caps[0], "rate"), "8000");
  EXPECT_EQ(field_of(info->audio_caps[0], "channels"), "1");
}

TEST(GetMediaInfo, KeepsTheOrderOfTheStreams) {
  const Media_Folder folder;
  folder.record_two_videos("two.mkv");
  Discovery_Watch watch;
  watch.hold_found = true;
  const auto info = Media_Helper::get_media_info(folder.uri("two.mkv"), patience);
  ASSERT_EQ(info->video_caps.size(), 2U);
  EXPECT_NE(field_of(info->video_caps[0], "width"), field_of(info->video_caps[1], "width"));
  EXPECT_EQ(info->video_caps, caps_of_streams(gst_discoverer_info_get_video_streams(watch.found)));
  EXPECT_TRUE(info->audio_caps.empty());
}

TEST(GetMediaInfo, FindsAudioAlone) {
  const Media_Folder folder;
  folder.record_audio("audio.mka");
  const auto info = Media_Helper::get_media_info(folder.uri("audio.mka"), patience);
  EXPECT_TRUE(info->video_caps.empty());
  ASSERT_EQ(info->audio_caps.size(), 1U);
  EXPECT_EQ(name_of(info->audio_caps[0]), "audio/x-mulaw");
  EXPECT_EQ(info->duration, 2000000000ULL);
}

// An image is a video with one picture. Its duration depends on the discoverer.
TEST(GetMediaInfo, FindsAnImage) {
  const Media_Folder folder;
  folder.record_image("image.png");
  Discovery_Watch watch;
  watch.hold_found = true;
  const auto info = Media_Helper::get_media_info(folder.uri("image.png"), patience);
  ASSERT_EQ(info->video_caps.size(), 1U);
  EXPECT_EQ(name_of(info->video_caps[0]), "image/png");
  EXPECT_TRUE(info->audio_caps.empty());
  EXPECT_EQ(info->duration, gst_discoverer_info_get_duration(watch.found));
}

// The header of a truncated recording describes the complete recording.
TEST(GetMediaInfo, FindsTheStreamsInTheHeaderOfATruncatedFile) {
  const Media_Folder folder;
  folder.record_video_and_audio("whole.mkv");
  const std::string whole = folder.read("whole.mkv");
  folder.write("half.mkv", whole.substr(0, whole.size() / 2));
  Discovery_Watch watch;
  watch.hold_found = true;
  const auto info = Media_Helper::get_media_info(folder.uri("half.mkv"), patience);
  ASSERT_EQ(info->video_caps.size(), 1U);
  EXPECT_EQ(name_of(info->video_caps[0]), "image/jpeg");
  ASSERT_EQ(info->audio_caps.size(), 1U);
  EXPECT_EQ(name_of(info->audio_caps[0]), "audio/x-mulaw");
  EXPECT_EQ(info->duration, gst_discoverer_info_get_duration(watch.found));
}

void expect_failure(const std::string &uri, const std::string &text) {
  SCOPED_TRACE(uri);
  Discovery_Watch watch;
  expect_error(0x152C0, text, [&] { Media_Helper::get_media_info(uri, patience); });
  EXPECT_EQ(watch.uris, std::vector<std::string>{uri});
  EXPECT_EQ(watch.dropped, in_order);
}

TEST(GetMediaInfo, FailsWithoutMedia) {
  const Media_Folder folder;
  folder.write("text.txt", "One line of text.\n");
  folder.write("empty.mkv", "");
  for (const char *const file : {"text.txt", "empty.mkv", "missing.mkv", ""})
    expect_failure(folder.uri(file), "Discoverer returned error: GST_DISCOVERER_ERROR");
}

TEST(GetMediaInfo, DoesNotConvertAPathToAUri) {
  const Media_Folder folder;
  folder.record_audio("audio.mka");
  for (const std::string &path :
       {folder.path("audio.mka"), std::string("audio.mka"), std::string("./audio.mka")})
    expect_failure(path, "Discoverer returned error: GST_DISCOVERER_ERROR");
}

// URIs in a form that the framework would not produce.
TEST(GetMediaInfo, KeepsTheUriByteForByte) {
  const Media_Folder folder;
  folder.record_audio("audio.mka");
  const std::string plain = folder.uri("audio.mka");
  const std::string parent = folder.uri("");
  for (const std::string &uri :
       {parent + "./audio.mka", parent + "%61udio%2Emka", "FILE" + plain.substr(4)}) {
    SCOPED_TRACE(uri);
    Discovery_Watch watch;
    EXPECT_EQ(Media_Helper::get_media_info(uri, patience)->uri, uri);
    EXPECT_EQ(watch.uris, std::vector<std::string>{uri});
  }
}

// The discoverer reads up to the first null byte, but the record contains the URI of the caller.
TEST(GetMediaInfo, KeepsTheUriAfterANullByte) {
  const Media_Folder folder;
  folder.record_audio("audio.mka");
  const std::string plain = folder.uri("audio.mka");
  const std::string uri = plain + '\0' + "audio";
  Discovery_Watch watch;
  EXPECT_EQ(Media_Helper::get_media_info(uri, patience)->uri, uri);
  EXPECT_EQ(watch.uris, std::vector<std::string>{plain});
}

TEST(GetMediaInfo, DoesNotRequestADetailedError) {
  Discovery_Watch watch;
  expect_error(0x152C0, "Discoverer returned error: GST_DISCOVERER_ERROR",
               [] { Media_Helper::get_media_info("file:///nonexistent.mkv", patience); });
  EXPECT_EQ(watch.uris.size(), 1U);
  EXPECT_FALSE(watch.error_wanted);
}

TEST(GetMediaInfo, RequestsTheVideosFirstAndFreesBothLists) {
  const Media_Folder folder;
  folder.record_video_and_audio("camera.mkv");
  Discovery_Watch watch;
  const auto info = Media_Helper::get_media_info(folder.uri("camera.mkv"), patience);
  EXPECT_EQ(watch.asked, (std::vector<std::string>{"video", "audio"}));
  EXPECT_EQ(watch.lists, std::vector<GList *>{});
}

TEST(GetMediaInfo, FailsForAnEmptyUri) {
  expect_failure("", "Discoverer returned error: GST_DISCOVERER_ERROR");
}

TEST(GetMediaInfo, FailsForAnUnknownScheme) {
  expect_failure("nosuchscheme://camera/1",
                 "Discoverer returned error: GST_DISCOVERER_MISSING_PLUGINS");
}

// Nothing feeds this source.
TEST(GetMediaInfo, TimesOut) {
  Discovery_Watch watch;
  expect_error(0x152C0, "Discoverer returned error: GST_DISCOVERER_TIMEOUT",
               [] { Media_Helper::get_media_info("appsrc://", GST_SECOND); });
  EXPECT_EQ(watch.timeouts, std::vector<GstClockTime>{1000000000ULL});
  EXPECT_EQ(watch.dropped, in_order);
}

TEST(GetMediaInfo, PassesTheTimeoutOn) {
  for (const GstClockTime timeout : {1000000000ULL, 1234567890ULL, 3600000000000ULL}) {
    Discovery_Watch watch;
    EXPECT_THROW(Media_Helper::get_media_info("", timeout), std::runtime_error);
    EXPECT_EQ(watch.timeouts, std::vector<GstClockTime>{timeout});
  }
}

// Collects GLib's warnings about objects so that they do not fail the test. Whether they occur
// depends on the framework's version.
class Object_Log {
public:
  Object_Log()
      : handler_(g_log_set_handler(
            "GLib-GObject", static_cast<GLogLevelFlags>(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_CRITICAL),
            [](const gchar *, GLogLevelFlags, const gchar *message, gpointer messages) {
              static_cast<std::vector<std::string> *>(messages)->emplace_back(message);
            },
            &messages_)) {}
  ~Object_Log() { g_log_remove_handler("GLib-GObject", handler_); }
  Object_Log(const Object_Log &) = delete;
  Object_Log &operator=(const Object_Log &) = delete;

  std::vector<std::string> take() { return std::exchange(messages_, {}); }

private:
  std::vector<std::string> messages_;
  guint handler_;
};

// The discoverer may log a critical, refuse to wait, or wait for any time.
TEST(GetMediaInfo, PassesATimeoutOfZeroOn) {
  const Media_Folder folder;
  folder.record_audio("audio.mka");
  Object_Log log;
  g_object_unref(gst_discoverer_new(0, nullptr));
  const std::vector<std::string> of_the_framework = log.take();

  Discovery_Watch watch;
  watch.hold_found = true;
  std::unique_ptr<Media_Info> info;
  std::string error;
  try {
    info = Media_Helper::get_media_info(folder.uri("audio.mka"), 0);
  } catch (const std::runtime_error &caught) {
    error = caught.what();
  }
  EXPECT_EQ(log.take(), of_the_framework);
  EXPECT_EQ(watch.timeouts, std::vector<GstClockTime>{0});
  ASSERT_NE(watch.found, nullptr);
  if (gst_discoverer_info_get_result(watch.found) == GST_DISCOVERER_OK) {
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->audio_caps.size(), 1U);
  } else {
    EXPECT_EQ(gst_discoverer_info_get_result(watch.found), GST_DISCOVERER_TIMEOUT);
    EXPECT_EQ(error, "Discoverer returned error: GST_DISCOVERER_TIMEOUT");
  }
}

TEST(GetMediaInfo, FailsWithoutADiscoverer) {
  if (framework_is_1_18())
    GTEST_SKIP() << "GStreamer 1.18 makes a discoverer for a timeout that is none";
  const Expected_Log log("gst_discoverer_new");
  Discovery_Watch watch;
  expect_error(0x152A0, "Error creating discoverer in get_media_info",
               [] { Media_Helper::get_media_info("file:///", GST_CLOCK_TIME_NONE); });
  EXPECT_EQ(watch.timeouts, std::vector<GstClockTime>{18446744073709551615ULL});
  EXPECT_TRUE(watch.uris.empty());
}

TEST(GetMediaInfo, FailsIfTheDiscovererReturnsNothing) {
  Discovery_Watch watch;
  watch.find_nothing = true;
  expect_error(0x152B0, "Error discovering media in get_media_info",
               [] { Media_Helper::get_media_info("file:///", patience); });
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
    expect_error(0x152C0, std::string("Discoverer returned error: ") + row.text,
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
      EXPECT_EQ(error, std::string("Discoverer returned error: ") + results[result].text);
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

TEST(GetMediaInfo, OmitsStreamsWithoutCaps) {
  const Media_Folder folder;
  folder.record_two_videos("two.mkv");
  Discovery_Watch watch;
  watch.hold_found = true;
  watch.without_caps = 1;
  const auto info = Media_Helper::get_media_info(folder.uri("two.mkv"), patience);
  const auto streams = caps_of_streams(gst_discoverer_info_get_video_streams(watch.found));
  ASSERT_EQ(streams.size(), 2U);
  EXPECT_EQ(info->video_caps, std::vector<Caps>{streams[1]});
}

TEST(GetMediaInfo, ReleasesTheResultBeforeTheDiscoverer) {
  const Media_Folder folder;
  folder.record_audio("audio.mka");
  Discovery_Watch watch;
  const auto info = Media_Helper::get_media_info(folder.uri("audio.mka"), patience);
  EXPECT_EQ(watch.dropped, in_order);
}

// The record owns one reference to each caps, whatever other references exist.
TEST(GetMediaInfo, ReturnsOneReferenceToEachCaps) {
  const Media_Folder folder;
  folder.record_video_and_audio("camera.mkv");
  Discovery_Watch watch;
  watch.hold_found = true;
  auto info = Media_Helper::get_media_info(folder.uri("camera.mkv"), patience);
  const std::vector<Caps> held = {info->video_caps.at(0), info->audio_caps.at(0)};
  std::vector<gint> before;
  for (const Caps &caps : held)
    before.push_back(reference_count(caps.get()));
  info.reset();
  for (std::size_t i = 0; i < held.size(); ++i)
    EXPECT_EQ(reference_count(held[i].get()), before[i] - 1);
}

TEST(GetMediaInfo, ReturnsCapsThatAreReleasedWithTheRecord) {
  const Media_Folder folder;
  folder.record_video_and_audio("camera.mkv");
  auto info = Media_Helper::get_media_info(folder.uri("camera.mkv"), patience);
  int gone = 0;
  const GstMiniObjectNotify note = [](gpointer count, GstMiniObject *) {
    ++*static_cast<int *>(count);
  };
  for (const auto *list : {&info->video_caps, &info->audio_caps})
    for (const Caps &caps : *list) {
      EXPECT_EQ(reference_count(caps.get()), 1);
      gst_mini_object_weak_ref(GST_MINI_OBJECT_CAST(caps.get()), note, &gone);
    }
  info.reset();
  EXPECT_EQ(gone, 2);
}

TEST(MediaInfo, HasItsMembersInOrder) {
  const Media_Info info;
  const auto &[uri, duration, video_caps, audio_caps] = info;
  EXPECT_EQ(&uri, &info.uri);
  EXPECT_EQ(&duration, &info.duration);
  EXPECT_EQ(&video_caps, &info.video_caps);
  EXPECT_EQ(&audio_caps, &info.audio_caps);
}

TEST(MediaInfo, IsEmptyWhenNew) {
  const Media_Info info;
  EXPECT_EQ(info.uri, "");
  EXPECT_EQ(info.duration, 0U);
  EXPECT_TRUE(info.video_caps.empty());
  EXPECT_TRUE(info.audio_caps.empty());
}

TEST(GetMediaInfo, RunsOnSeveralThreadsAtOnce) {
  const Media_Folder folder;
  folder.record_video_and_audio("camera.mkv");
  folder.record_two_videos("two.mkv");
  folder.record_audio("audio.mka");
  const struct {
    const char *file;
    std::size_t videos, audios;
  } rows[] = {{"camera.mkv", 1, 1}, {"two.mkv", 2, 0}, {"audio.mka", 0, 1}};

  std::vector<std::thread> threads;
  for (const auto &row : rows)
    threads.emplace_back([&folder, &row] {
      const std::string uri = folder.uri(row.file);
      for (int round = 0; round < 5; ++round) {
        const auto info = Media_Helper::get_media_info(uri, patience);
        EXPECT_EQ(info->uri, uri);
        EXPECT_EQ(info->video_caps.size(), row.videos) << uri;
        EXPECT_EQ(info->audio_caps.size(), row.audios) << uri;
        EXPECT_EQ(info->duration, 2000000000ULL) << uri;
      }
    });
  threads.emplace_back([&folder] {
    const std::string uri = folder.uri("missing.mkv");
    for (int round = 0; round < 5; ++round)
      expect_error(0x152C0, "Discoverer returned error: GST_DISCOVERER_ERROR",
                   [&] { Media_Helper::get_media_info(uri, patience); });
  });
  for (std::thread &thread : threads)
    thread.join();
}

}  // namespace
}  // namespace kel::tavren::tests
