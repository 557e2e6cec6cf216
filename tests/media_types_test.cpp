// Media kinds: the caps of each kind, their numbers and their names.

#include <limits>
#include <memory>
#include <vector>

#include "elements.h"
#include "errors.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;
using capture::MediaType;

TEST(MediaType, HasFixedNumbers) {
  EXPECT_EQ(static_cast<int>(capture::JPEG), 0);
  EXPECT_EQ(static_cast<int>(capture::H264), 1);
  EXPECT_EQ(static_cast<int>(capture::MPEG_AUDIO), 2);
  EXPECT_EQ(static_cast<int>(capture::MPEG_VIDEO), 3);
  EXPECT_EQ(static_cast<int>(capture::RTP_METADATA), 4);
  EXPECT_EQ(static_cast<int>(capture::RTP), 5);
  EXPECT_EQ(static_cast<int>(capture::VIDEO_RAW), 6);
  EXPECT_EQ(static_cast<int>(capture::AUDIO_RAW), 7);
  EXPECT_EQ(static_cast<int>(capture::MULAW), 8);
  EXPECT_EQ(static_cast<int>(capture::UNKNOWN), 9);
}

struct Caps_Row {
  const char *caps;
  int type;
};

void expect_types(const std::vector<Caps_Row> &rows) {
  for (const Caps_Row &row : rows) {
    SCOPED_TRACE(row.caps);
    const Caps caps = make_caps(row.caps);
    ASSERT_TRUE(caps);
    const Caps before(gst_caps_copy(caps.get()), false);
    EXPECT_EQ(static_cast<int>(Media_Helper::get_media_type(caps.get())), row.type);
    EXPECT_EQ(reference_count(caps.get()), 1);
    EXPECT_TRUE(gst_caps_is_strictly_equal(caps.get(), before.get()));
  }
}

// clang-format off
TEST(GetMediaType, DependsOnTheNameOfTheCaps) {
  expect_types({
      {"image/jpeg",                  0},
      {"video/x-h264",                1},
      {"audio/mpeg",                  2},
      {"video/mpeg",                  3},
      {"video/x-divx",                3},
      {"application/x-rtp",           5},
      {"video/x-raw",                 6},
      {"audio/x-raw",                 7},
      {"audio/x-mulaw",               8},
      {"video/x-h265",                9},
      {"audio/x-alaw",                9},
      {"image/png",                   9},
      {"text/x-raw",                  9},
      {"video/x-h264-not",            9},
      {"EMPTY",                       9},
      {"ANY",                         9},
  });
}

TEST(GetMediaType, IgnoresTheFields) {
  expect_types({
      {"image/jpeg, width=640, height=480, framerate=15/1",                            0},
      {"video/x-h264, stream-format=avc, alignment=au, profile=high",                  1},
      {"audio/mpeg, mpegversion=1, layer=3",                                           2},
      {"audio/mpeg, mpegversion=2",                                                    2},
      {"audio/mpeg, mpegversion=4, stream-format=raw",                                 2},
      {"audio/mpeg, mpegversion={ 1, 2, 4 }",                                          2},
      {"video/mpeg, mpegversion=4, systemstream=false",                                3},
      {"video/x-divx, divxversion=5",                                                  3},
      {"video/x-raw, format=I420, width=[ 1, 1920 ], height=[ 1, 1080 ]",              6},
      {"audio/x-raw, format=S16LE, rate=8000, channels=1",                             7},
      {"audio/x-mulaw, rate=8000, channels=1",                                         8},
  });
}

TEST(GetMediaType, DetectsMetadataByTheEncodingName) {
  expect_types({
      {"application/x-rtp, encoding-name=VND.ONVIF.METADATA",                          4},
      {"application/x-rtp, media=application, payload=107, clock-rate=90000, "
       "encoding-name=VND.ONVIF.METADATA",                                             4},
      {"application/x-rtp, encoding-name=vnd.onvif.metadata",                          5},
      {"application/x-rtp, encoding-name=VND.ONVIF.METADATA2",                         5},
      {"application/x-rtp, encoding-name=VND.ONVIF",                                   5},
      {"application/x-rtp, encoding-name=H264",                                        5},
      {"application/x-rtp, encoding-name=(string)\"\"",                                5},
      {"application/x-rtp, encoding-name=(int)7",                                      5},
      {"application/x-rtp, encoding-name={ VND.ONVIF.METADATA, H264 }",                5},
      {"application/x-rtp, media=video, clock-rate=90000",                             5},
      {"video/x-h264, encoding-name=VND.ONVIF.METADATA",                               1},
  });
}

// The encoding name is that of the first structure.
TEST(GetMediaType, RequiresTheSameNameInAllStructures) {
  expect_types({
      {"video/x-raw; audio/x-raw",                                                     9},
      {"video/mpeg; video/x-divx",                                                     9},
      {"video/x-raw, width=64; video/x-raw, width=128",                                6},
      {"application/x-rtp, encoding-name=VND.ONVIF.METADATA; "
       "application/x-rtp, encoding-name=H264",                                        4},
      {"application/x-rtp, encoding-name=H264; "
       "application/x-rtp, encoding-name=VND.ONVIF.METADATA",                          5},
  });
}

TEST(GetMediaType, RequiresSystemMemory) {
  expect_types({
      {"video/x-raw(memory:SystemMemory), width=64",                                   6},
      {"video/x-raw(memory:GLMemory), format=RGBA",                                    9},
      {"video/x-raw(memory:DMABuf)",                                                   9},
      {"audio/x-raw(ANY)",                                                             9},
      {"video/x-h264(memory:GLMemory)",                                                9},
  });
}
// clang-format on

TEST(GetMediaType, ChecksItsCaps) {
  expect_error({TEC::NOT_CAPS, {"caps in get_media_type"}},
               [] { Media_Helper::get_media_type(nullptr); });

  const std::unique_ptr<GstBuffer, decltype(&gst_buffer_unref)> buffer(gst_buffer_new(),
                                                                       gst_buffer_unref);
  expect_error({TEC::NOT_CAPS, {"caps in get_media_type"}},
               [&] { Media_Helper::get_media_type(reinterpret_cast<GstCaps *>(buffer.get())); });
  EXPECT_EQ(GST_MINI_OBJECT_REFCOUNT_VALUE(buffer.get()), 1);
}

TEST(GetMediaType, LeavesTheReferenceCountUnchanged) {
  const Caps caps = make_caps("application/x-rtp, encoding-name=VND.ONVIF.METADATA");
  const Caps second = caps;
  ASSERT_EQ(reference_count(caps.get()), 2);
  Media_Helper::get_media_type(caps.get());
  EXPECT_EQ(reference_count(caps.get()), 2);
}

struct Kind_Row {
  int type;
  const char *text;
  bool video, video_or_raw;
  bool audio, audio_or_raw;
};

// clang-format off
const Kind_Row kinds[] = {
    {std::numeric_limits<int>::min(), "UNKNOWN",      false, false, false, false},
    {-1,                              "UNKNOWN",      false, false, false, false},
    {0,                               "JPEG",         true,  true,  false, false},
    {1,                               "H264",         true,  true,  false, false},
    {2,                               "MPEG_AUDIO",   false, false, true,  true},
    {3,                               "MPEG_VIDEO",   true,  true,  false, false},
    {4,                               "RTP_METADATA", false, false, false, false},
    {5,                               "RTP",          false, false, false, false},
    {6,                               "VIDEO_RAW",    false, true,  false, false},
    {7,                               "AUDIO_RAW",    false, false, false, true},
    {8,                               "MULAW",        false, false, true,  true},
    {9,                               "UNKNOWN",      false, false, false, false},
    {10,                              "UNKNOWN",      false, false, false, false},
    {std::numeric_limits<int>::max(), "UNKNOWN",      false, false, false, false},
};
// clang-format on

TEST(MediaType, HasAName) {
  for (const Kind_Row &row : kinds)
    EXPECT_EQ(Media_Helper::get_media_type_string(static_cast<MediaType>(row.type)), row.text)
        << row.type;
}

TEST(MediaType, IsVideoOrNot) {
  for (const Kind_Row &row : kinds) {
    const auto type = static_cast<MediaType>(row.type);
    EXPECT_EQ(Media_Helper::is_video(type, false), row.video) << row.type;
    EXPECT_EQ(Media_Helper::is_video(type, true), row.video_or_raw) << row.type;
  }
}

TEST(MediaType, IsAudioOrNot) {
  for (const Kind_Row &row : kinds) {
    const auto type = static_cast<MediaType>(row.type);
    EXPECT_EQ(Media_Helper::is_audio(type, false), row.audio) << row.type;
    EXPECT_EQ(Media_Helper::is_audio(type, true), row.audio_or_raw) << row.type;
  }
}

}  // namespace
}  // namespace kel::tavren::tests
