// Runs the program probe_media as users do.

#include <csignal>
#include <ostream>

#include <gtest/gtest.h>

#include "child_process.h"
#include "media_files.h"

namespace kel::tavren::tests {

namespace {

const std::string failed_discovery =
    ": error 0x152C0: Discoverer returned error: GST_DISCOVERER_ERROR\n";

TEST(ProbeMedia, DescribesTheStreamsOfAFile) {
  const Media_Folder folder;
  folder.record_video_and_audio("clip.mkv");
  const Outcome outcome = run({PROBE_MEDIA, folder.path("clip.mkv")});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out, folder.uri("clip.mkv") +
                             "\n"
                             "duration 0:00:02.000000000\n"
                             "STREAM   KIND   FORMAT         RESOLUTION  FRAME RATE\n"
                             "video 1  JPEG   image/jpeg     64x48       10/1\n"
                             "audio 1  MULAW  audio/x-mulaw  -           -\n\n");
}

TEST(ProbeMedia, FitsEachPictureIntoABox) {
  const Media_Folder folder;
  folder.record("wide.mkv", "videotestsrc num-buffers=10 ! "
                            "video/x-raw,width=320,height=180,framerate=10/1 ! x264enc ! "
                            "matroskamux ! filesink name=file");
  const Outcome outcome = run({PROBE_MEDIA, "--fit", "100x100", folder.uri("wide.mkv")});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out, folder.uri("wide.mkv") +
                             "\n"
                             "duration 0:00:01.000000000\n"
                             "STREAM   KIND  FORMAT        RESOLUTION  FRAME RATE  FITS 100x100\n"
                             "video 1  H264  video/x-h264  320x180     10/1        100x56\n\n");
}

TEST(ProbeMedia, DescribesAStillPictureWithoutAFramerate) {
  const Media_Folder folder;
  folder.record_image("still.png");
  const Outcome outcome = run({PROBE_MEDIA, "--fit=32x32", folder.path("still.png")});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_NE(outcome.out.find("video 1  UNKNOWN  image/png  64x48       -           32x24\n"),
            std::string::npos)
      << outcome.out;
}

TEST(ProbeMedia, ContinuesAfterAFileThatFails) {
  const Media_Folder folder;
  folder.record_audio("good.mkv");
  folder.write("bad.mkv", "this is not a video");
  const Outcome outcome = run({PROBE_MEDIA, folder.path("missing.mkv"), folder.path("bad.mkv"),
                               folder.path("good.mkv"), folder.path("good.mkv")});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "probe_media: " + folder.path("missing.mkv") + failed_discovery +
                             "probe_media: " + folder.path("bad.mkv") + failed_discovery);
  const std::string table = folder.uri("good.mkv") +
                            "\n"
                            "duration 0:00:02.000000000\n"
                            "STREAM   KIND   FORMAT         RESOLUTION  FRAME RATE\n"
                            "audio 1  MULAW  audio/x-mulaw  -           -\n\n";
  EXPECT_EQ(outcome.out, table + table);
}

TEST(ProbeMedia, AcceptsAFileNameThatLooksLikeAUri) {
  const Media_Folder folder;
  folder.record_audio("rtsp:a b%20ü.mkv");
  const Outcome outcome =
      run({"/usr/bin/env", "--chdir", folder.path("."), PROBE_MEDIA, "rtsp:a b%20ü.mkv"});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_NE(outcome.out.find("rtsp:a%20b%2520%C3%BC.mkv\n"), std::string::npos) << outcome.out;
}

// The discoverer may finish before it knows the second of two streams that begin at almost the same
// time. Both are found if the program runs again.
TEST(ProbeMedia, DescribesTheStreamsOfACamera) {
  Child_Process camera({SIMULATED_CAMERA, "--video", "jpeg", "--audio", "mulaw"});
  const std::string uri = camera.first_line();
  ASSERT_NE(uri, "");
  Outcome outcome = run({PROBE_MEDIA, uri});
  const auto finds = [&outcome](const char *stream) {
    return outcome.out.find(stream) != std::string::npos;
  };
  for (int i = 0; i < 2 && finds("video 1") != finds("audio 1"); ++i)
    outcome = run({PROBE_MEDIA, uri});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.out, uri + "\n"
                               "duration -\n"
                               "STREAM   KIND   FORMAT         RESOLUTION  FRAME RATE\n"
                               "video 1  JPEG   image/jpeg     320x240     25/1\n"
                               "audio 1  MULAW  audio/x-mulaw  -           -\n\n");
}

// A camera that accepts the connection and then sends nothing.
TEST(ProbeMedia, StopsWaitingAfterTheTimeout) {
  Child_Process camera({SIMULATED_CAMERA});
  const std::string uri = camera.first_line();
  ASSERT_NE(uri, "");
  camera.send_signal(SIGSTOP);
  const gint64 start = g_get_monotonic_time();
  const Outcome outcome = run({PROBE_MEDIA, "--timeout", "1", uri});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "probe_media: " + uri +
                             ": error 0x152C0: Discoverer returned error: "
                             "GST_DISCOVERER_TIMEOUT\n");
  EXPECT_LT(g_get_monotonic_time() - start, 8 * G_USEC_PER_SEC);
}

struct Refused {
  std::vector<std::string> arguments;
  std::string text;
};

void PrintTo(const Refused &refused, std::ostream *out) {
  *out << refused.text;
}

class ProbeMediaErrors : public testing::TestWithParam<Refused> {};

TEST_P(ProbeMediaErrors, AreReportedInOneLine) {
  std::vector<std::string> command = {PROBE_MEDIA};
  command.insert(command.end(), GetParam().arguments.begin(), GetParam().arguments.end());
  const Outcome outcome = run(command);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "probe_media: error " + GetParam().text + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    All, ProbeMediaErrors,
    testing::Values(
        Refused{{}, "nothing to probe: name a URI or a file"},
        Refused{{"--fit", "0x480", "a.mkv"},
                "0x15250: Invalid resolution provided in calculate_resolution"},
        Refused{{"--fit", "640", "a.mkv"}, "--fit takes WIDTHxHEIGHT in pixels, not \"640\""},
        Refused{{"--fit", "640x", "a.mkv"}, "--fit takes WIDTHxHEIGHT in pixels, not \"640x\""},
        Refused{{"--fit", "-1x480", "a.mkv"}, "--fit takes WIDTHxHEIGHT in pixels, not \"-1x480\""},
        Refused{{"--timeout", "0", "a.mkv"}, "--timeout takes 1 to 3600 seconds"},
        Refused{{"--timeout", "nan", "a.mkv"}, "--timeout takes 1 to 3600 seconds"},
        Refused{{"--no-such-option"}, "Unknown option --no-such-option"}));

TEST(ProbeMedia, PrintsItsHelp) {
  const Outcome outcome = run({PROBE_MEDIA, "--help"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_NE(outcome.out.find("--fit=WxH"), std::string::npos) << outcome.out;
}

}  // namespace

}  // namespace kel::tavren::tests
