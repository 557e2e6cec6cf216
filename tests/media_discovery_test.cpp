// Discovery of real media.

#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "discovery_watch.h"
#include "elements.h"
#include "errors.h"
#include "log_watch.h"
#include "media_files.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;
using capture::Media_Info;

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

TEST(GetMediaInfo, RequestsTheVideosFirstAndFreesBothLists) {
  const Media_Folder folder;
  folder.record_video_and_audio("camera.mkv");
  Discovery_Watch watch;
  const auto info = Media_Helper::get_media_info(folder.uri("camera.mkv"), patience);
  EXPECT_EQ(watch.asked, (std::vector<std::string>{"video", "audio"}));
  EXPECT_EQ(watch.lists, std::vector<GList *>{});
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
      expect_error({TEC::DISCOVERER_RETURNED_ERROR, {"GST_DISCOVERER_ERROR"}},
                   [&] { Media_Helper::get_media_info(uri, patience); });
  });
  for (std::thread &thread : threads)
    thread.join();
}

}  // namespace
}  // namespace kel::tavren::tests
