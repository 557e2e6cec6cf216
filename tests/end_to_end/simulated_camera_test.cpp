// Runs the program simulated_camera as users do.

#include <csignal>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <list>
#include <string>

#include <gtest/gtest.h>

#include "child_process.h"
#include "reserved_port.h"
#include "scratch_folder.h"
#include "simulated_camera.h"
#include "viewer.h"

namespace kel::tavren::tests {

namespace {

constexpr gint32 frame_step = 90000 / 25;

// Returns the number of packets lost between consecutive packets.
int lost(const std::vector<Packet> &packets) {
  int lost = 0;
  for (std::size_t i = 1; i < packets.size(); ++i)
    lost += static_cast<guint16>(packets[i].number - packets[i - 1].number) - 1;
  return lost;
}

gint64 longest_wait(const std::vector<Packet> &packets) {
  gint64 longest = 0;
  for (std::size_t i = 1; i < packets.size(); ++i)
    longest = std::max(longest, packets[i].arrival - packets[i - 1].arrival);
  return longest;
}

// A connection to a port on 127.0.0.1.
class Connection {
public:
  explicit Connection(const std::string &port)
      : socket_(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<in_port_t>(std::stoi(port)));
    is_started_ =
        connect(socket_, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0 ||
        errno == EINPROGRESS;
  }
  ~Connection() { close(socket_); }
  Connection(const Connection &) = delete;
  Connection &operator=(const Connection &) = delete;

  bool is_established() const {
    constexpr int shorter_than_a_retry = 500;  // ms
    pollfd writable{socket_, POLLOUT, 0};
    return is_started_ && poll(&writable, 1, shorter_than_a_retry) == 1 &&
           writable.revents == POLLOUT;
  }

private:
  int socket_;
  bool is_started_;
};

TEST(SimulatedCamera, QueuesConnectionsWhileItIsBusy) {
  const Camera camera;
  camera.send_signal(SIGSTOP);
  std::list<Connection> connections;
  for (int i = 0; i < 50; ++i)
    ASSERT_TRUE(connections.emplace_back(port_of(camera.uri)).is_established()) << i;
}

TEST(SimulatedCamera, KeepsTheClockOfAViewerWhileOthersConnect) {
  const Camera camera;
  const Viewer viewer(camera.uri, "video");
  ASSERT_TRUE(viewer.sees(20));
  for (const char *const transport : {"tcp", "udp", "tcp"}) {
    const Viewer other(camera.uri, "video", transport);
    ASSERT_TRUE(other.sees(20));
  }
  // ffmpeg asks to play from the start.
  run({"ffmpeg", "-v", "quiet", "-nostdin", "-i", camera.uri, "-t", "1", "-f", "null", "-"});
  ASSERT_TRUE(viewer.sees(20));
  for (const gint32 step : viewer.timestamp_steps())
    ASSERT_EQ(step, frame_step);
  EXPECT_EQ(lost(viewer.packets()), 0);
}

TEST(SimulatedCamera, ServesViewersInQuickSuccession) {
  const Camera camera;
  for (int i = 0; i < 20; ++i) {
    const Viewer viewer(camera.uri, "audio");
    ASSERT_TRUE(viewer.sees(3)) << i;
  }
}

TEST(SimulatedCamera, ListensOnTheRequestedPort) {
  const Reserved_Port reserved;
  const std::string &port = reserved.number();
  const Camera camera({"--port", port});
  EXPECT_EQ(camera.uri, "rtsp://127.0.0.1:" + port + "/camera");
  const Outcome refused = run({SIMULATED_CAMERA, "--port", port});
  EXPECT_EQ(refused.status, 1);
  EXPECT_NE(refused.err.find("cannot listen on 127.0.0.1 port " + port), std::string::npos)
      << refused.err;
}

// A viewer may join in the middle of a key frame, so skip to a later one before decoding.
TEST(SimulatedCamera, SendsSlicesThatDecodeWithoutErrors) {
  const Camera camera({"--slices", "4", "--audio", "none"});
  const Scratch_Folder folder;
  const std::string file = folder.file("slices.mkv");
  const Outcome recorded = run({"ffmpeg", "-v", "fatal", "-nostdin", "-rtsp_transport", "tcp", "-i",
                                camera.uri, "-t", "3", "-c", "copy", file});
  ASSERT_EQ(recorded.status, 0) << recorded.err;
  const Outcome decoded =
      run({"ffmpeg", "-v", "warning", "-nostdin", "-ss", "1", "-i", file, "-f", "null", "-"});
  EXPECT_EQ(decoded.status, 0);
  EXPECT_EQ(decoded.err, "");
}

TEST(SimulatedCamera, OffersOnlyTheRequestedTransport) {
  const Camera camera({"--transport", "udp"});
  EXPECT_TRUE(Viewer(camera.uri, "video", "tcp").sees_end());
  EXPECT_TRUE(Viewer(camera.uri, "video", "udp").sees(20));
}

TEST(SimulatedCameraMisbehaviour, PauseDelaysPacketsWithoutLoss) {
  const Camera camera({"--misbehave", "pause:1@1"});
  const Viewer viewer(camera.uri, "video");
  ASSERT_TRUE(viewer.sees(150));
  EXPECT_GT(longest_wait(viewer.packets()), G_TIME_SPAN_SECOND * 8 / 10);
  EXPECT_EQ(lost(viewer.packets()), 0);
  for (const gint32 step : viewer.timestamp_steps())
    ASSERT_EQ(step, frame_step);
}

TEST(SimulatedCameraMisbehaviour, DropLosesThePacketsSentMeanwhile) {
  const Camera camera({"--misbehave", "drop:1@1"});
  const Viewer viewer(camera.uri, "video");
  ASSERT_TRUE(viewer.sees(150));
  EXPECT_GT(longest_wait(viewer.packets()), G_TIME_SPAN_SECOND * 8 / 10);
  EXPECT_GT(lost(viewer.packets()), 15);  // 25 unless the machine is too slow for the frame rate
}

TEST(SimulatedCameraMisbehaviour, StopEndsOneStreamAndContinuesTheOther) {
  const Camera camera({"--misbehave", "stop-audio@3"});
  const Viewer video(camera.uri, "video");
  const Viewer audio(camera.uri, "audio");
  ASSERT_TRUE(audio.sees(10));
  ASSERT_TRUE(video.sees(300));
  const std::size_t before = audio.packets().size();
  ASSERT_TRUE(video.sees(50));
  EXPECT_EQ(audio.packets().size(), before);
}

TEST(SimulatedCameraMisbehaviour, SilenceKeepsTheConnection) {
  const Camera camera({"--misbehave", "silent@1"});
  const Viewer viewer(camera.uri, "video");
  ASSERT_TRUE(viewer.sees(10));
  g_usleep(2 * G_TIME_SPAN_SECOND);
  const std::size_t before = viewer.packets().size();
  g_usleep(G_TIME_SPAN_SECOND);
  EXPECT_EQ(viewer.packets().size(), before);
}

TEST(SimulatedCameraMisbehaviour, CloseEndsTheConnectionsButNotTheCamera) {
  const Camera camera({"--misbehave", "close@1"});
  const Viewer viewer(camera.uri, "video");
  ASSERT_TRUE(viewer.sees(10));
  EXPECT_TRUE(viewer.sees_end());
  EXPECT_TRUE(Viewer(camera.uri, "video").sees(20));
}

TEST(SimulatedCameraMisbehaviour, GoneRefusesConnectionsTemporarily) {
  const Reserved_Port port;
  const Camera camera({"--port", port.number(), "--misbehave", "gone:2@1"});
  const Viewer viewer(camera.uri, "video");
  ASSERT_TRUE(viewer.sees(10));
  EXPECT_TRUE(viewer.sees_end());
  EXPECT_TRUE(Viewer(camera.uri, "video").sees_end());
  g_usleep(4 * G_TIME_SPAN_SECOND);
  EXPECT_TRUE(Viewer(camera.uri, "video").sees(20));
}

void expect_refusal(const std::vector<std::string> &options, const std::string &text) {
  const Outcome outcome = run(words({SIMULATED_CAMERA}, options));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "simulated_camera: error " + text + "\n");
}

TEST(SimulatedCamera, RefusesInvalidOptions) {
  expect_refusal({"--port", "65536"}, "--port takes 0 to 65535");
  expect_refusal({"--slices", "0"}, "--slices takes 1 to 8");
  expect_refusal({"--lifetime", "0"}, "--lifetime takes 1 to 86400");
  expect_refusal({"--transport", "pigeon"}, "--transport takes any, tcp or udp, not \"pigeon\"");
  expect_refusal({"--video", "none", "--audio", "none"},
                 "the simulated camera has nothing to send");
  expect_refusal({"--audio", "brass"}, "the simulated camera has no audio of kind brass");
  for (const char *const misbehaviour :
       {"sulk@1", "pause@1", "silent:1@1", "pause:1", "pause:1@", "pause:x@1", "close@1,,close@2"})
    EXPECT_EQ(run({SIMULATED_CAMERA, "--misbehave", misbehaviour}).status, 1) << misbehaviour;
  expect_refusal({"--misbehave", "close@1,sulk@2"},
                 "--misbehave takes pause:S@T, drop:S@T, stop-video@T, stop-audio@T, silent@T, "
                 "close@T and gone:S@T, not \"sulk@2\"");
}

TEST(SimulatedCamera, ReportsAMissingElement) {
  const Scratch_Folder no_plugins;
  const Outcome outcome = run({SIMULATED_CAMERA, "--lifetime", "10"},
                              {{"GST_REGISTRY", no_plugins.file("registry.bin")},
                               {"GST_PLUGIN_SYSTEM_PATH_1_0", no_plugins.file("")},
                               {"GST_PLUGIN_PATH_1_0", ""}});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "simulated_camera: error 0x151D0: Could not find factory for "
                         "\"videotestsrc\" in gst_element_factory_find_or_throw\n");
}

}  // namespace

}  // namespace kel::tavren::tests
