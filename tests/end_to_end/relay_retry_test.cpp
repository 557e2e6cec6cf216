// Tests relay_stream with a camera that disconnects and returns.

#include <csignal>

#include <regex>

#include <gtest/gtest.h>

#include "child_process.h"
#include "relay.h"
#include "reserved_port.h"
#include "simulated_camera.h"
#include "viewer.h"

namespace kel::tavren::tests {

namespace {

std::string camera_at(const Reserved_Port &port) {
  return "rtsp://127.0.0.1:" + port.number() + "/camera";
}

// A relay with a viewer, and the camera that it relays.
struct Watched_Relay {
  std::unique_ptr<Camera> started_camera(const std::vector<std::string> &options = {}) const {
    return std::make_unique<Camera>(words({"--port", port.number()}, options));
  }

  const Reserved_Port port;
  std::unique_ptr<Camera> camera = started_camera();
  Relay relay{camera->uri, {"--retry", "20"}};
  const Viewer viewer{relay.uri, "video"};
};

TEST(RelayRetry, ResumesForTheSameViewerWhenTheCameraReturns) {
  Watched_Relay watched;
  ASSERT_TRUE(watched.viewer.sees(50));

  watched.camera.reset();
  ASSERT_TRUE(watched.relay.writes("lost the camera, trying again: "));
  watched.camera = watched.started_camera();
  ASSERT_TRUE(watched.viewer.sees(50));
  const Viewer newcomer(watched.relay.uri, "audio");
  EXPECT_TRUE(newcomer.sees(50));

  const std::string output = watched.relay.output_after(SIGTERM);
  EXPECT_TRUE(std::regex_search(
      output, std::regex("\ngap from [-0-9]+T[:.0-9]+Z to [-0-9]+T[:.0-9]+Z \\([.0-9]+ s\\): " +
                         std::string(camera_ended) + '\n')))
      << output;
}

// The duration of the gap passes for the viewer, too: its RTP clock never goes back.
TEST(RelayRetry, KeepsTheClockOfTheViewer) {
  const Reserved_Port port;
  const Camera camera({"--port", port.number(), "--misbehave", "gone:1@2"});
  const Relay relay(camera.uri, {"--retry", "20"});
  const Viewer viewer(relay.uri, "video");
  ASSERT_TRUE(viewer.sees(200));
  int gaps = 0;
  for (const gint32 step : viewer.timestamp_steps()) {
    EXPECT_GT(step, 0);
    if (step > 90000) ++gaps;
  }
  EXPECT_EQ(gaps, 1);
}

TEST(RelayRetry, WaitsForACameraThatIsUnavailableAtTheStart) {
  const Reserved_Port port;
  Child_Process relay(Relay::command(camera_at(port), {"--retry", "20"}));
  g_usleep(G_TIME_SPAN_SECOND);
  const Camera camera({"--port", port.number()});
  const std::string uri = relay.first_line();
  ASSERT_NE(uri, "");
  const Viewer viewer(uri, "video");
  EXPECT_TRUE(viewer.sees(50));
  relay.send_signal(SIGHUP);
  const Outcome outcome = relay.wait();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err.rfind("cannot reach the camera, trying again: ", 0), 0U) << outcome.err;
}

TEST(RelayRetry, StopsAfterTheConfiguredTime) {
  const Reserved_Port port;
  const gint64 start = g_get_monotonic_time();
  const Outcome outcome = run(Relay::command(camera_at(port), {"--retry", "2"}));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_NE(outcome.err.find("relay_stream: error gst-resource-error-quark 7: "), std::string::npos)
      << outcome.err;
  EXPECT_GE(g_get_monotonic_time() - start, 2 * G_TIME_SPAN_SECOND);
}

TEST(RelayRetry, EndsOnASignal) {
  const Reserved_Port port;
  Child_Process relay(Relay::command(camera_at(port), {"--retry", "60"}));
  g_usleep(2 * G_TIME_SPAN_SECOND);
  relay.send_signal(SIGTERM);
  EXPECT_EQ(relay.wait().status, 0);
}

// Viewers cannot continue with different streams. They are disconnected, and get the new streams
// when they reconnect.
TEST(RelayRetry, ServesOtherStreamsIfTheCameraReturnsWithThem) {
  Watched_Relay watched;
  ASSERT_TRUE(watched.viewer.sees(50));
  watched.camera.reset();
  watched.camera = watched.started_camera({"--video", "jpeg", "--audio", "mulaw"});
  ASSERT_TRUE(watched.relay.writes("RTP video JPEG: rtpjpegdepay -> rtpjpegpay\n"));
  EXPECT_TRUE(watched.viewer.sees_end());
  const Viewer newcomer(watched.relay.uri, "video");
  EXPECT_TRUE(newcomer.sees(50));
}

}  // namespace

}  // namespace kel::tavren::tests
