// Records the simulated camera, and reads the files with an independent program.

#include <csignal>

#include <unistd.h>

#include <algorithm>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <glib/gstdio.h>
#include <gtest/gtest.h>

#include "child_process.h"
#include "media_contents.h"
#include "scratch_folder.h"
#include "simulated_camera.h"

namespace kel::tavren::tests {
namespace {

constexpr int duration = 2;  // s, of most recordings
constexpr int frame_rate = 25;

bool exists(const std::string &file) {
  return g_file_test(file.c_str(), G_FILE_TEST_EXISTS);
}

Outcome record(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), RECORD_CAMERA);
  return run(arguments);
}

// If the framework's RTSP source is stopped while it is connecting, it may log up to hundreds of
// criticals about a closed stream or events without a sequence number.
std::string without_criticals_of_the_source(const std::string &err) {
  std::string told;
  std::istringstream lines(err);
  for (std::string line; std::getline(lines, line);)
    if (!line.empty() && line.find("g_pollable_input_stream_") == std::string::npos &&
        line.find("gst_event_set_seqnum") == std::string::npos)
      told += line + "\n";
  return told;
}

// Every failure is reported as one line on stderr.
void expect_one_line(const Outcome &outcome, const std::string &text) {
  const std::string told = without_criticals_of_the_source(outcome.err);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 1) << told;
  EXPECT_NE(told.find(text), std::string::npos) << told;
}

// Waits until a file has the given size, so that the recording is in progress.
void wait_for_bytes(const std::string &file, goffset size) {
  for (int i = 0; i < 600; ++i) {
    GStatBuf status;
    if (g_stat(file.c_str(), &status) == 0 && status.st_size >= size) return;
    g_usleep(50000);
  }
  FAIL() << "the recording does not progress";
}

struct Recording {
  const char *container;
  const char *video;
  const char *audio;
  std::vector<std::string> codecs;  // names used by the reader, in alphabetical order
};

void PrintTo(const Recording &recording, std::ostream *out) {
  *out << recording.video << " and " << recording.audio << " in ." << recording.container;
}

// Nine tenths of the video frames. The reader may split mu-law into packets of any size.
gint64 least_frames(const std::string &codec) {
  if (codec == "pcm_mulaw") return 5;
  return gint64{duration} * frame_rate * 9 / 10;
}

class Recordings : public testing::TestWithParam<Recording> {};

TEST_P(Recordings, AreReadBackCompletely) {
  const Recording &wanted = GetParam();
  Scratch_Folder folder;
  const std::string file = folder.file(std::string("camera.") + wanted.container);
  const Outcome outcome = record({"--duration", std::to_string(duration), "--video", wanted.video,
                                  "--audio", wanted.audio, "--output", file});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_NE(outcome.out.find("wrote " + file), std::string::npos) << outcome.out;

  const Contents contents = read_back(file);
  EXPECT_EQ(contents.codecs(), wanted.codecs);
  EXPECT_NEAR(contents.duration, duration, 0.5);
  for (const auto &[codec, frames] : contents.frames)
    EXPECT_GE(frames, least_frames(codec)) << codec;
}

INSTANTIATE_TEST_SUITE_P(EachContainerAndCodec, Recordings,
                         testing::Values(Recording{"mkv", "h264", "aac", {"aac", "h264"}},
                                         Recording{"mkv", "jpeg", "mulaw", {"mjpeg", "pcm_mulaw"}},
                                         Recording{"mkv", "mpeg4", "aac", {"aac", "mpeg4"}},
                                         Recording{"mp4", "h264", "aac", {"aac", "h264"}},
                                         Recording{"mp4", "mpeg4", "aac", {"aac", "mpeg4"}},
                                         Recording{"avi", "h264", "aac", {"aac", "h264"}},
                                         Recording{"avi", "jpeg", "mulaw", {"mjpeg", "pcm_mulaw"}},
                                         Recording{"avi", "mpeg4", "aac", {"aac", "mpeg4"}},
                                         Recording{"mov", "h264", "aac", {"aac", "h264"}},
                                         Recording{"mov", "jpeg", "mulaw", {"mjpeg", "pcm_mulaw"}},
                                         Recording{"mov", "mpeg4", "aac", {"aac", "mpeg4"}},
                                         Recording{"mkv", "h264", "none", {"h264"}},
                                         Recording{"mkv", "vp8", "opus", {"opus", "vp8"}},
                                         Recording{"mp4", "h264", "opus", {"h264", "opus"}},
                                         Recording{"mov", "none", "mulaw", {"pcm_mulaw"}}));

// Unsupported by the container or the tables: the program prints one line and leaves no file.
struct Refusal {
  const char *container;
  const char *video;
  const char *audio;
  const char *text;
};

void PrintTo(const Refusal &refusal, std::ostream *out) {
  *out << refusal.video << " and " << refusal.audio << " in ." << refusal.container;
}

class RecordCameraErrors : public testing::TestWithParam<Refusal> {};

TEST_P(RecordCameraErrors, AreReportedInOneLine) {
  const Refusal &refused = GetParam();
  Scratch_Folder folder;
  const std::string file = folder.file(std::string("camera.") + refused.container);
  expect_one_line(record({"--duration", "1", "--video", refused.video, "--audio", refused.audio,
                          "--output", file}),
                  refused.text);
  EXPECT_FALSE(exists(file));
}

INSTANTIATE_TEST_SUITE_P(
    EachReason, RecordCameraErrors,
    testing::Values(
        Refusal{"mp4", "none", "mulaw",
                "record_camera: error 0x151C0: .mp4 (mp4mux) does not hold audio/x-mulaw "
                "(audio PCMU); no stream of the camera can be recorded\n"},
        Refusal{"mp4", "jpeg", "none",
                "record_camera: error 0x151C0: .mp4 (mp4mux) does not hold image/jpeg "
                "(video JPEG); no stream of the camera can be recorded\n"},
        Refusal{"mp4", "vp8", "none",
                "record_camera: error 0x151C0: .mp4 (mp4mux) does not hold video/x-vp8 "
                "(video VP8); no stream of the camera can be recorded\n"},
        Refusal{"webm", "h264", "aac",
                "record_camera: error 0x15000: Unknown file extension : could not create muxer "
                "for \""}));

// A stream that the container does not support is skipped. The others are recorded.
struct Passing_Over {
  const char *container;
  const char *video;
  const char *audio;
  const char *line;
  std::vector<std::string> codecs;
};

void PrintTo(const Passing_Over &passing, std::ostream *out) {
  *out << passing.video << " and " << passing.audio << " in ." << passing.container;
}

class SkippedStreams : public testing::TestWithParam<Passing_Over> {};

TEST_P(SkippedStreams, AreReportedWithTheCode) {
  const Passing_Over &passing = GetParam();
  Scratch_Folder folder;
  const std::string file = folder.file(std::string("camera.") + passing.container);
  const Outcome outcome = record(
      {"--duration", "1", "--video", passing.video, "--audio", passing.audio, "--output", file});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_NE(outcome.out.find(passing.line), std::string::npos) << outcome.out;
  EXPECT_EQ(read_back(file).codecs(), passing.codecs);
}

INSTANTIATE_TEST_SUITE_P(
    EachReason, SkippedStreams,
    testing::Values(Passing_Over{"mp4",
                                 "h264",
                                 "mulaw",
                                 "the camera offers PCMU: audio, not recorded, error 0x151C0: .mp4 "
                                 "(mp4mux) does not hold audio/x-mulaw\n",
                                 {"h264"}},
                    Passing_Over{"mp4",
                                 "vp8",
                                 "aac",
                                 "the camera offers VP8: video, not recorded, error 0x151C0: .mp4 "
                                 "(mp4mux) does not hold video/x-vp8\n",
                                 {"aac"}}));

TEST(RecordCamera, KeepsAnExistingFileByDefault) {
  Scratch_Folder folder;
  const std::string file = folder.file("camera.mkv");
  ASSERT_TRUE(g_file_set_contents(file.c_str(), "precious", -1, nullptr));
  expect_one_line(record({"--duration", "1", "--output", file}),
                  "cannot write " + file + ": it exists already; --overwrite replaces it");
  GStatBuf status;
  ASSERT_EQ(g_stat(file.c_str(), &status), 0);
  EXPECT_EQ(status.st_size, 8);

  EXPECT_EQ(record({"--duration", "1", "--overwrite", "--output", file}).status, 0);
  EXPECT_NEAR(read_back(file).duration, 1, 0.5);
}

TEST(RecordCamera, ReportsAFileThatCannotBeWritten) {
  for (const char *const file : {"/nonexistent/camera.mkv", "/proc/camera.mkv"})
    expect_one_line(record({"--output", file}),
                    "record_camera: error gst-resource-error-quark 6: ");
}

// No file system has this much space, so each file is removed once it is complete.
TEST(RecordCamera, RemovesItsOldestFilesToKeepSpaceFree) {
  Scratch_Folder folder;
  const std::string foreign = folder.file("camera-of-someone-else.mkv");
  ASSERT_TRUE(g_file_set_contents(foreign.c_str(), "precious", -1, nullptr));
  const Outcome outcome = record({"--duration", "6", "--segment", "1", "--keep-free",
                                  "1000000000000000", "--output", folder.file("camera.mkv")});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_NE(outcome.out.find("to keep space free"), std::string::npos) << outcome.out;
  EXPECT_TRUE(exists(foreign));
  EXPECT_LE(folder.list().size(), 4U);
}

TEST(RecordCamera, WritesOnlyRegularFiles) {
  Scratch_Folder folder;
  const std::string file = folder.file("camera.mkv");
  ASSERT_EQ(symlink("/dev/full", file.c_str()), 0);
  expect_one_line(record({"--output", file}), "cannot write " + file);
}

TEST(RecordCamera, RefusesAnInvalidAddress) {
  for (const char *const uri : {"", "garbage", "http://127.0.0.1/"})
    expect_one_line(record({"--uri", uri}),
                    std::string("not the address of a camera: \"") + uri + '"');
}

TEST(RecordCamera, ReportsACameraWithMetadataOnly) {
  expect_one_line(record({"--video", "none", "--audio", "none", "--metadata"}),
                  "the camera offers neither video nor audio");
}

TEST(RecordCamera, KeepsTheFileIfThePipelineCannotBeDrawn) {
  Scratch_Folder folder;
  const std::string file = folder.file("camera.mkv");
  expect_one_line(
      record({"--duration", "1", "--graph", "/nonexistent/camera.svg", "--output", file}),
      "cannot draw the pipeline");
  EXPECT_NEAR(read_back(file).duration, 1, 0.5);
}

TEST(RecordCamera, ReportsAnUnreachableCamera) {
  Scratch_Folder folder;
  const std::string file = folder.file("camera.mkv");
  // Nothing listens on port 9 of the loopback address.
  expect_one_line(record({"--uri", "rtsp://127.0.0.1:9/camera", "--output", file}),
                  "record_camera: error gst-resource-error-quark ");
  EXPECT_FALSE(exists(file));
}

TEST(RecordCamera, PrintsItsHelpAndRefusesUnknownOptions) {
  const Outcome help = record({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_NE(help.out.find("--duration"), std::string::npos);
  expect_one_line(record({"--nonsense"}), "--nonsense");
  expect_one_line(record({"camera.mkv"}), "unexpected argument camera.mkv");
  expect_one_line(record({"--duration", "-1"}), "--duration");
}

TEST(RecordCamera, SkipsMetadata) {
  Scratch_Folder folder;
  const std::string file = folder.file("camera.mkv");
  const Outcome outcome = record({"--duration", "1", "--metadata", "--output", file});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_NE(outcome.out.find("the camera offers VND.ONVIF.METADATA: metadata, not recorded"),
            std::string::npos)
      << outcome.out;
  EXPECT_EQ(read_back(file).codecs(), (std::vector<std::string>{"aac", "h264"}));
}

// The complete chain: a camera with video and metadata is relayed, recorded and read.
TEST(RecordCamera, RecordsARelayedCamera) {
  Scratch_Folder folder;
  const std::string file = folder.file("camera.mp4");
  Child_Process camera({SIMULATED_CAMERA, "--metadata", "--lifetime", "60"});
  Child_Process relay({RELAY_STREAM, "--uri", camera.first_line()});
  const Outcome outcome = record(
      {"--uri", relay.first_line(), "--duration", std::to_string(duration), "--output", file});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.err, "");

  const Contents contents = read_back(file);
  EXPECT_EQ(contents.codecs(), (std::vector<std::string>{"aac", "h264"}));
  EXPECT_NEAR(contents.duration, duration, 0.5);
  for (const auto &[codec, frames] : contents.frames)
    EXPECT_GE(frames, least_frames(codec)) << codec;

  relay.send_signal(SIGTERM);
  const Outcome relayed = relay.wait();
  EXPECT_EQ(relayed.status, 0) << relayed.err;
  EXPECT_NE(relayed.out.find("VND.ONVIF.METADATA"), std::string::npos) << relayed.out;
}

// The audio that arrives while its parser is being created must not be recorded as late.
TEST(RecordCamera, KeepsStreamsSynchronisedWhenElementsAreSlowToCreate) {
  Scratch_Folder folder;
  const std::string file = folder.file("camera.mkv");
  const Camera camera;
  const Outcome outcome = run({RECORD_CAMERA_WITH_SLOW_PARSER, "--uri", camera.uri, "--transport",
                               "tcp", "--duration", std::to_string(duration), "--output", file});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  for (const auto &[codec, frames] : read_back(file).frames)
    EXPECT_GE(frames, least_frames(codec)) << codec;
}

TEST(RecordCamera, ShowsTheStreamToAViewerAndDrawsThePipeline) {
  Scratch_Folder folder;
  const std::string file = folder.file("camera.mkv");
  const std::string graph = folder.file("camera.svg");
  const Outcome outcome =
      record({"--duration", "4", "--view", "--verbose", "--graph", graph, "--output", file});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.out.find("the viewer showed 0 pictures"), std::string::npos) << outcome.out;
  EXPECT_NE(outcome.out.find(" Stats : Num Buffers = "), std::string::npos) << outcome.out;
  EXPECT_NE(outcome.out.find("H264"), std::string::npos) << outcome.out;

  char *drawn = nullptr;
  ASSERT_TRUE(g_file_get_contents(graph.c_str(), &drawn, nullptr, nullptr));
  const std::string picture = drawn;
  g_free(drawn);
  for (const char *const element : {"GstRTSPSrc", "GstAppSink", "GstQueue", "GstMatroskaMux"})
    EXPECT_NE(picture.find(element), std::string::npos) << element;
}

// The framework rejects the events of a source that is stopped while its first packet arrives.
TEST(RecordCamera, PrintsNoWarningWhenStoppedWhileItConnects) {
  Scratch_Folder folder;
  Child_Process camera({SIMULATED_CAMERA, "--lifetime", "60"});
  const std::string uri = camera.first_line();
  for (int delay = 0; delay < 20; ++delay) {
    Child_Process recorder(
        {RECORD_CAMERA, "--uri", uri, "--output", folder.file("camera.mkv"), "--overwrite"});
    ASSERT_TRUE(recorder.writes("(audio)")) << delay;
    g_usleep(static_cast<gulong>(delay) * 1000);
    recorder.send_signal(SIGTERM);
    const Outcome outcome = recorder.wait();
    EXPECT_EQ(outcome.err.find("GStreamer-"), std::string::npos) << outcome.err;
  }
}

// However a recording ends early, its file is finished and can be played.
class InterruptedRecording : public testing::TestWithParam<const char *> {
protected:
  InterruptedRecording()
      : camera_({SIMULATED_CAMERA, "--lifetime", "60"}),
        file_(folder_.file(std::string("camera.") + GetParam())),
        recorder_(
            {RECORD_CAMERA, "--uri", camera_.first_line(), "--duration", "0", "--output", file_}) {
    wait_for_bytes(file_, 20000);
  }

  void expect_playable() {
    const Contents contents = read_back(file_);
    EXPECT_EQ(contents.codecs(), (std::vector<std::string>{"aac", "h264"}));
    EXPECT_GT(contents.duration, 0.3);
    for (const auto &[codec, frames] : contents.frames)
      EXPECT_GT(frames, 5) << codec;
  }

  Scratch_Folder folder_;
  Child_Process camera_;
  std::string file_;
  Child_Process recorder_;
};

TEST_P(InterruptedRecording, IsCompleteAfterCtrlC) {
  recorder_.send_signal(SIGINT);
  const Outcome outcome = recorder_.wait();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  expect_playable();
}

TEST_P(InterruptedRecording, IsCompleteAfterSigterm) {
  recorder_.send_signal(SIGTERM);
  const Outcome outcome = recorder_.wait();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  expect_playable();
}

TEST_P(InterruptedRecording, IsCompleteAfterTwoSignalsAtOnce) {
  recorder_.send_signal(SIGINT);
  recorder_.send_signal(SIGTERM);
  const Outcome outcome = recorder_.wait();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  expect_playable();
}

TEST_P(InterruptedRecording, IsCompleteAfterTheCameraDies) {
  camera_.send_signal(SIGKILL);
  expect_one_line(recorder_.wait(), "record_camera: error gst-resource-error-quark ");
  expect_playable();
}

TEST_P(InterruptedRecording, IsCompleteAfterTheCameraGoesSilent) {
  camera_.send_signal(SIGSTOP);
  const Outcome outcome = recorder_.wait();
  camera_.send_signal(SIGCONT);
  expect_one_line(outcome,
                  "record_camera: error gst-resource-error-quark 9: the camera has gone silent");
  expect_playable();
}

INSTANTIATE_TEST_SUITE_P(EachContainer, InterruptedRecording,
                         testing::Values("mkv", "mp4", "avi", "mov"));

}  // namespace
}  // namespace kel::tavren::tests
