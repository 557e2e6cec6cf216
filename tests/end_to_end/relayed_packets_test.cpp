// Tests that viewers of relay_stream receive the camera's frames with the camera's times.

#include <algorithm>
#include <cstdlib>

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

TEST(Relayed_Packets, Keep_The_Cameras_Times_From_The_First_On) {
  const Camera camera;
  const Relay relay(camera.uri);
  const Viewer video(relay.uri, "video");
  const Viewer audio(relay.uri, "audio");
  ASSERT_TRUE(video.sees(100));
  ASSERT_TRUE(audio.sees(100));
  expect_steps(video.timestamp_steps(), frame_step, millisecond);
  expect_steps(audio.timestamp_steps(), audio_step, audio_step / 20);
}

TEST(Relayed_Packets, Keep_The_Cameras_Times_Through_A_Pause_And_The_Burst_After_It) {
  const Camera camera({"--misbehave", "pause:1.5@1"});
  const Relay relay(camera.uri);
  const Viewer viewer(relay.uri, "video");
  ASSERT_TRUE(viewer.sees(200));
  expect_steps(viewer.timestamp_steps(), frame_step, millisecond);
}

// A key frame begins with a sequence parameter set, after an access unit delimiter.
TEST(Relayed_Packets, Begin_With_A_Key_Frame_For_Each_Viewer) {
  constexpr int delimiter = 9;
  constexpr int sequence_parameter_set = 7;
  const Camera camera;
  const Relay relay(camera.uri);
  for (const char *const transport : {"tcp", "udp", "tcp", "udp"}) {
    const Viewer viewer(relay.uri, "video", transport);
    ASSERT_TRUE(viewer.sees(5));
    EXPECT_EQ(viewer.packets()[0].h264_unit_type(), delimiter);
    EXPECT_EQ(viewer.packets()[1].h264_unit_type(), sequence_parameter_set);
    // Connects the next viewer at another position between two key frames.
    g_usleep(G_TIME_SPAN_SECOND / 7);
  }
}

// Returns the errors of an independent decoder for two seconds of a stream.
std::string complaints(const std::string &uri, const std::string &transport) {
  const Outcome outcome = run({"ffmpeg", "-v", "warning", "-nostdin", "-rtsp_transport", transport,
                               "-i", uri, "-map", "0:v", "-t", "2", "-f", "null", "-"});
  return outcome.status == 0 ? outcome.err
                             : "exit status " + std::to_string(outcome.status) + ": " + outcome.err;
}

TEST(Relayed_Packets, Of_Several_Slices_Decode_Without_A_Complaint) {
  const Camera camera({"--slices", "4", "--audio", "none"});
  const Relay relay(camera.uri);
  EXPECT_EQ(complaints(relay.uri, "tcp"), "");
  EXPECT_EQ(complaints(relay.uri, "udp"), "");
}

// The camera sends each slice of a picture as one packet, after an access unit delimiter.
TEST(Relayed_Packets, Hold_As_Many_Slices_As_The_Camera_Sends) {
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

class Relayed_Transports : public testing::TestWithParam<const char *> {};

TEST_P(Relayed_Transports, Are_Found_By_The_Relay) {
  const Camera camera({"--transport", GetParam()});
  const Relay relay(camera.uri);
  const Viewer viewer(relay.uri, "video");
  EXPECT_TRUE(viewer.sees(50));
}

TEST_P(Relayed_Transports, Serve_A_Viewer) {
  const Camera camera;
  const Relay relay(camera.uri);
  const Viewer viewer(relay.uri, "audio", GetParam());
  EXPECT_TRUE(viewer.sees(50));
}

INSTANTIATE_TEST_SUITE_P(All, Relayed_Transports, testing::Values("tcp", "udp"),
                         [](const auto &transport) { return std::string(transport.param); });

TEST(Relayed_Transports, Are_Not_Tried_If_Another_Is_Asked_For) {
  const Camera camera({"--transport", "udp"});
  const Outcome outcome = run(Relay::command(camera.uri, {"--transport", "tcp"}));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_NE(outcome.err.find("No supported stream was found"), std::string::npos) << outcome.err;
}

}  // namespace

}  // namespace kel::tavren::tests
