// Tests relay_stream with many viewers, including some that are killed or stop reading.

#include <csignal>

#include <fstream>
#include <list>
#include <memory>

#include <gtest/gtest.h>

#include "child_process.h"
#include "relay.h"
#include "simulated_camera.h"
#include "viewer.h"

namespace kel::tavren::tests {

namespace {

// AddressSanitizer keeps freed memory, so resident memory is not meaningful.
#ifdef __SANITIZE_ADDRESS__
constexpr long memory_tolerance = long{256} * 1024;  // KiB, the size of its quarantine
#else
constexpr long memory_tolerance = long{8} * 1024;  // KiB
#endif

// Resources that a process uses.
struct Resources {
  long memory = 0;  // resident, in KiB
  long threads = 0;
  long descriptors = 0;
};

Resources resources_of(const Child_Process &process) {
  const std::string folder = "/proc/" + std::to_string(process.id());
  Resources resources;
  std::ifstream status(folder + "/status");
  for (std::string key; status >> key;) {
    if (key == "VmRSS:") status >> resources.memory;
    if (key == "Threads:") status >> resources.threads;
  }
  GDir *const descriptors = g_dir_open((folder + "/fd").c_str(), 0, nullptr);
  while (g_dir_read_name(descriptors) != nullptr)
    ++resources.descriptors;
  g_dir_close(descriptors);
  return resources;
}

// Starts another process that plays a relay.
std::unique_ptr<Child_Process> make_player(const std::string &uri, const std::string &transport) {
  return std::make_unique<Child_Process>(
      std::vector<std::string>{"ffmpeg", "-v", "quiet", "-nostdin", "-rtsp_transport", transport,
                               "-i", uri, "-c", "copy", "-f", "null", "-"});
}

// Waits until the relay has released its resources for viewers. GLib keeps unused threads for 15 s,
// and uses a second descriptor for a connection while a thread waits for data on it.
Resources settled(const Child_Process &relay, const Resources &expected) {
  Resources resources = resources_of(relay);
  for (int i = 0; i < 400; ++i) {
    if (resources.threads <= expected.threads && resources.descriptors <= expected.descriptors)
      break;
    g_usleep(50 * G_TIME_SPAN_MILLISECOND);
    resources = resources_of(relay);
  }
  return resources;
}

void expect_no_more(const Resources &now, const Resources &before) {
  EXPECT_LE(now.threads, before.threads);
  EXPECT_LE(now.descriptors, before.descriptors);
  EXPECT_LE(now.memory, before.memory + memory_tolerance);
}

void watch_for_a_moment(const std::string &uri, const char *media, const char *transport) {
  const Viewer viewer(uri, media, transport);
  ASSERT_TRUE(viewer.sees(5)) << viewer.error();
}

// Returns the resources of the relay after it has served each stream over each transport.
Resources resources_after_first_viewers(const Relay &relay) {
  for (const char *const media : {"video", "audio"})
    for (const char *const transport : {"tcp", "udp"})
      watch_for_a_moment(relay.uri, media, transport);
  return resources_of(relay);
}

TEST(RelayViewers, LeakNothingWhenTheyConnectInTurn) {
  const Camera camera;
  Relay relay(camera.uri);
  const Resources before = resources_after_first_viewers(relay);
  for (int i = 0; i < 20; ++i)
    for (const char *const transport : {"tcp", "udp"})
      ASSERT_NO_FATAL_FAILURE(watch_for_a_moment(relay.uri, "video", transport))
          << i << ' ' << transport;
  expect_no_more(settled(relay, before), before);
  relay.send_signal(SIGTERM);
  EXPECT_EQ(relay.wait().status, 0);
}

// The camera's bit rate is so high that the buffer of a viewer that does not read is full within
// seconds.
TEST(RelayViewers, AreNotAffectedByStoppedOrKilledViewers) {
  const Camera camera({"--video", "jpeg", "--noise"});
  Relay relay(camera.uri);
  const Resources before = resources_after_first_viewers(relay);

  std::vector<std::unique_ptr<Child_Process>> players;
  for (int i = 0; i < 8; ++i)
    players.push_back(make_player(relay.uri, i % 2 == 0 ? "tcp" : "udp"));
  g_usleep(3 * G_TIME_SPAN_SECOND);
  for (std::size_t i = 0; i < 4; ++i)
    players[i]->send_signal(SIGSTOP);

  std::list<Viewer> viewers;
  for (int i = 0; i < 12; ++i)
    viewers.emplace_back(relay.uri, "audio", i % 2 == 0 ? "tcp" : "udp");
  const Viewer witness(relay.uri, "video");
  for (int second = 0; second < 8; ++second) {
    EXPECT_TRUE(witness.sees(500));
    if (second == 4)
      for (std::size_t i = 4; i < 8; ++i)
        players[i]->send_signal(SIGKILL);
  }
  for (const Viewer &viewer : viewers)
    EXPECT_TRUE(viewer.sees(50));

  // The resources of the former viewers are released, and a new viewer can play the stream.
  players.clear();
  viewers.clear();
  const Viewer newcomer(relay.uri, "video", "udp");
  EXPECT_TRUE(newcomer.sees(500));
  // Each of the remaining viewers has a connection, which uses up to two descriptors.
  Resources expected = before;
  expected.descriptors += 4;
  const Resources after = settled(relay, expected);
  EXPECT_LE(after.descriptors, expected.descriptors);
  EXPECT_LE(after.threads, expected.threads);
}

// The first viewer sends reports over TCP, the second over UDP.
TEST(RelayViewers, OverBothTransportsCauseNoWarning) {
  const Camera camera;
  Relay relay(camera.uri);
  const Viewer first(relay.uri, "video", "tcp");
  ASSERT_TRUE(first.sees(300));
  const Viewer second(relay.uri, "video", "udp");
  ASSERT_TRUE(second.sees(300));
  relay.send_signal(SIGTERM);
  EXPECT_EQ(relay.wait().err, "");
}

// If the only viewer over TCP is stopped, it must not block viewers over UDP.
TEST(RelayViewers, OverUdpDoNotWaitForAStoppedViewerOverTcp) {
  const Camera camera({"--video", "jpeg", "--noise"});
  const Relay relay(camera.uri);
  const auto player = make_player(relay.uri, "tcp");
  g_usleep(2 * G_TIME_SPAN_SECOND);
  player->send_signal(SIGSTOP);
  const Viewer viewer(relay.uri, "video", "udp");
  ASSERT_TRUE(viewer.sees(8000));
  const std::vector<Packet> packets = viewer.packets();
  for (std::size_t i = 1; i < packets.size(); ++i)
    ASSERT_LT(packets[i].arrival - packets[i - 1].arrival, 2 * G_TIME_SPAN_SECOND);
}

}  // namespace

}  // namespace kel::tavren::tests
