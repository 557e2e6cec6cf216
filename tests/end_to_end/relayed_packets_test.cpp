// Tests that viewers of relay_stream receive the camera's frames with the camera's times.

#include <algorithm>
#include <cstdlib>
#include <set>

#include <gtest/gtest.h>

#include "child_process.h"
#include "relay.h"
#include "simulated_camera.h"
#include "viewer.h"

namespace kel::tavren::tests {

namespace {

constexpr gint32 frame_step = 90000 / 25;     // of the video, in units of its clock
constexpr gint32 millisecond = 90000 / 1000;  // in the same units
constexpr gint32 audio_step = 1024;           // samples of an AAC frame

void expect_steps(const std::vector<gint32> &steps, gint32 expected, gint32 tolerance) {
  EXPECT_GE(steps.size(), 10U);
  for (const gint32 step : steps)
    EXPECT_LE(std::abs(step - expected), tolerance) << step;
}

TEST(RelayedPackets, KeepTheTimestampsOfTheCameraFromTheFirstOn) {
  const Camera camera;
  const Relay relay(camera.uri);
  const Viewer video(relay.uri, "video");
  const Viewer audio(relay.uri, "audio");
  ASSERT_TRUE(video.sees(100));
  ASSERT_TRUE(audio.sees(100));
  expect_steps(video.timestamp_steps(), frame_step, millisecond);
  expect_steps(audio.timestamp_steps(), audio_step, audio_step / 20);
}

TEST(RelayedPackets, KeepTheTimestampsOfTheCameraThroughAPauseAndABurst) {
  const Camera camera({"--misbehave", "pause:1.5@1"});
  const Relay relay(camera.uri);
  const Viewer viewer(relay.uri, "video");
  ASSERT_TRUE(viewer.sees(200));
  expect_steps(viewer.timestamp_steps(), frame_step, millisecond);
}

// Returns the number of pictures before the first key frame, which begins with an access unit
// delimiter and a sequence parameter set. Counts the pictures of all packets if there is none.
std::size_t pictures_before_key_frame(const std::vector<Packet> &packets) {
  constexpr int delimiter = 9;
  constexpr int sequence_parameter_set = 7;
  const auto key_frame = std::adjacent_find(
      packets.begin(), packets.end(), [](const Packet &packet, const Packet &next) {
        return packet.h264_unit_type() == delimiter &&
               next.h264_unit_type() == sequence_parameter_set;
      });
  std::set<guint32> pictures;
  std::for_each(packets.begin(), key_frame,
                [&pictures](const Packet &packet) { pictures.insert(packet.timestamp); });
  return pictures.size();
}

// On a busy machine, packets of the picture before the key frame can still be in the queues of the
// RTSP server when a viewer begins to play.
TEST(RelayedPackets, BeginWithAKeyFrameForEachViewer) {
  const Camera camera;
  const Relay relay(camera.uri);
  for (const char *const transport : {"tcp", "udp", "tcp", "udp"}) {
    const Viewer viewer(relay.uri, "video", transport);
    ASSERT_TRUE(viewer.sees(8));
    EXPECT_LE(pictures_before_key_frame(viewer.packets()), 1) << transport;
    // Connects the next viewer at another position between two key frames.
    g_usleep(G_TIME_SPAN_SECOND / 7);
  }
}

// Returns the errors of an independent decoder for two seconds of a stream.
std::string decoding_errors(const std::string &uri, const std::string &transport) {
  const Outcome outcome = run({"ffmpeg", "-v", "warning", "-nostdin", "-rtsp_transport", transport,
                               "-i", uri, "-map", "0:v", "-t", "2", "-f", "null", "-"});
  return outcome.status == 0 ? outcome.err
                             : "exit status " + std::to_string(outcome.status) + ": " + outcome.err;
}

TEST(RelayedPackets, OfSeveralSlicesDecodeWithoutErrors) {
  const Camera camera({"--slices", "4", "--audio", "none"});
  const Relay relay(camera.uri);
  EXPECT_EQ(decoding_errors(relay.uri, "tcp"), "");
  EXPECT_EQ(decoding_errors(relay.uri, "udp"), "");
}

// The camera sends each slice of a picture as one packet, after an access unit delimiter.
TEST(RelayedPackets, ContainAllSlicesThatTheCameraSends) {
  const Camera camera({"--slices", "4", "--audio", "none"});
  const Relay relay(camera.uri);
  const Viewer viewer(relay.uri, "video");
  ASSERT_TRUE(viewer.sees(200));
  const std::vector<Packet> packets = viewer.packets();
  const guint32 picture = packets[100].timestamp;
  const auto is_of_picture = [picture](const Packet &packet) {
    return packet.timestamp == picture;
  };
  EXPECT_GE(std::count_if(packets.begin(), packets.end(), is_of_picture), 5);
}

class RelayedTransports : public testing::TestWithParam<const char *> {};

TEST_P(RelayedTransports, AreDetectedByTheRelay) {
  const Camera camera({"--transport", GetParam()});
  const Relay relay(camera.uri);
  const Viewer viewer(relay.uri, "video");
  EXPECT_TRUE(viewer.sees(50));
}

TEST_P(RelayedTransports, ServeAViewer) {
  const Camera camera;
  const Relay relay(camera.uri);
  const Viewer viewer(relay.uri, "audio", GetParam());
  EXPECT_TRUE(viewer.sees(50));
}

INSTANTIATE_TEST_SUITE_P(All, RelayedTransports, testing::Values("tcp", "udp"),
                         [](const auto &transport) { return std::string(transport.param); });

TEST(RelayedTransports, AreNotTriedIfAnotherIsRequested) {
  const Camera camera({"--transport", "udp"});
  const Outcome outcome = run(Relay::command(camera.uri, {"--transport", "tcp"}));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_NE(outcome.err.find("No supported stream was found"), std::string::npos) << outcome.err;
}

}  // namespace

}  // namespace kel::tavren::tests
