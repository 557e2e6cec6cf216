// The program relay_stream, as its users run it: between a camera and those who watch.

#include <atomic>
#include <csignal>
#include <memory>
#include <ostream>
#include <regex>

#include <gst/gst.h>
#include <gtest/gtest.h>
#include <tavren/capture/media_helper.h>

#include "child_process.h"
#include "references.h"

namespace kel::tavren::tests {

namespace {

using capture::Media_Helper;

constexpr gint64 longest_wait = gint64{20} * G_USEC_PER_SEC;

struct Camera : Child_Process {
  explicit Camera(std::vector<std::string> options = {}) : Child_Process(command(options)) {
    uri = first_line();
    if (uri.empty()) throw std::runtime_error("the camera does not start");
  }
  static std::vector<std::string> command(std::vector<std::string> options) {
    options.insert(options.begin(), SIMULATED_CAMERA);
    return options;
  }
  std::string uri;
};

struct Relay : Child_Process {
  explicit Relay(const std::string &camera, const std::vector<std::string> &options = {})
      : Child_Process(command(camera, options)), uri(first_line()) {}
  static std::vector<std::string> command(const std::string &camera,
                                          const std::vector<std::string> &options) {
    std::vector<std::string> words = {RELAY_STREAM, "--uri", camera};
    words.insert(words.end(), options.begin(), options.end());
    return words;
  }
  std::string uri;
};

// Plays one stream of a URI, the first of a kind, and asks for no other.
class Viewer {
public:
  Viewer(const std::string &uri, std::string media)
      : media_(std::move(media)),
        pipeline_(GST_ELEMENT_CAST(gst_object_ref_sink(Media_Helper::gst_parse_launch_or_throw(
                      "rtspsrc name=source protocols=tcp latency=0 ! "
                      "fakesink name=sink sync=false async=false signal-handoffs=true"))),
                  false) {
    const Element source(element("source"), false);
    const Element sink(element("sink"), false);
    g_object_set(source.get(), "location", uri.c_str(), nullptr);
    Media_Helper::g_signal_connect_or_throw(source.get(), "select-stream", G_CALLBACK(select),
                                            this);
    Media_Helper::g_signal_connect_or_throw(sink.get(), "handoff", G_CALLBACK(count), this);
    Media_Helper::gst_element_set_state_or_throw(pipeline_.get(), GST_STATE_PLAYING, "watching");
  }
  ~Viewer() { gst_element_set_state(pipeline_.get(), GST_STATE_NULL); }
  Viewer(const Viewer &) = delete;
  Viewer &operator=(const Viewer &) = delete;

  // Whether so many packets more come in time.
  bool sees(int packets) const {
    const int enough = packets_ + packets;
    const gint64 deadline = g_get_monotonic_time() + longest_wait;
    while (packets_ < enough && g_get_monotonic_time() < deadline)
      g_usleep(5000);
    return packets_ >= enough;
  }

  // Whether the stream ends in time, in whatever way.
  bool sees_end() const {
    const boost::intrusive_ptr<GstBus> bus(
        Media_Helper::gst_element_get_bus_or_throw(pipeline_.get()), false);
    const boost::intrusive_ptr<GstMessage> end(
        gst_bus_timed_pop_filtered(
            bus.get(), longest_wait * GST_USECOND,
            static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)),
        false);
    return end != nullptr;
  }

private:
  GstElement *element(const char *name) const {
    return Media_Helper::gst_bin_get_by_name_or_throw(GST_BIN(pipeline_.get()), name);
  }
  static gboolean select(GstElement *, guint, GstCaps *caps, gpointer viewer) noexcept {
    const GstStructure *const structure = gst_caps_get_structure(caps, 0);
    const std::string &media = static_cast<Viewer *>(viewer)->media_;
    return g_strcmp0(gst_structure_get_string(structure, "media"), media.c_str()) == 0;
  }
  static void count(GstElement *, GstBuffer *, GstPad *, gpointer viewer) noexcept {
    ++static_cast<Viewer *>(viewer)->packets_;
  }

  const std::string media_;
  std::atomic<int> packets_ = 0;
  Element pipeline_;
};

void expect_streams(const std::string &uri, capture::MediaType video, capture::MediaType audio) {
  const auto info = Media_Helper::get_media_info(uri, 20 * GST_SECOND);
  ASSERT_EQ(info->video_caps.size(), 1U);
  ASSERT_EQ(info->audio_caps.size(), 1U);
  EXPECT_EQ(Media_Helper::get_media_type(info->video_caps[0].get()), video);
  EXPECT_EQ(Media_Helper::get_media_type(info->audio_caps[0].get()), audio);
  EXPECT_EQ(Media_Helper::get_resolution_from_caps(info->video_caps[0].get()),
            std::make_pair(320ULL, 240ULL));
}

struct Kinds {
  std::string video;
  std::string audio;
  std::string lines;
  capture::MediaType video_type;
  capture::MediaType audio_type;
};

void PrintTo(const Kinds &kinds, std::ostream *out) {
  *out << kinds.video << ", " << kinds.audio;
}

class Relay_Stream_Kinds : public testing::TestWithParam<Kinds> {};

TEST_P(Relay_Stream_Kinds, Arrive_As_They_Were_Sent) {
  const Kinds &kinds = GetParam();
  const Camera camera({"--video", kinds.video, "--audio", kinds.audio});
  Relay relay(camera.uri);
  ASSERT_TRUE(std::regex_match(relay.uri, std::regex("rtsp://127\\.0\\.0\\.1:[0-9]+/relay")))
      << relay.uri;
  expect_streams(relay.uri, kinds.video_type, kinds.audio_type);
  relay.send_signal(SIGTERM);
  const Outcome outcome = relay.wait();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out, relay.uri + "\n" + kinds.lines);
}

INSTANTIATE_TEST_SUITE_P(All, Relay_Stream_Kinds,
                         testing::Values(Kinds{"h264", "aac",
                                               "RTP video H264: rtph264depay -> rtph264pay\n"
                                               "RTP audio MP4A-LATM: rtpmp4adepay -> rtpmp4apay\n",
                                               capture::H264, capture::MPEG_AUDIO},
                                         Kinds{"jpeg", "mulaw",
                                               "RTP video JPEG: rtpjpegdepay -> rtpjpegpay\n"
                                               "RTP audio PCMU: rtppcmudepay -> rtppcmupay\n",
                                               capture::JPEG, capture::MULAW},
                                         Kinds{"mpeg4", "mulaw",
                                               "RTP video MP4V-ES: rtpmp4vdepay -> rtpmp4vpay\n"
                                               "RTP audio PCMU: rtppcmudepay -> rtppcmupay\n",
                                               capture::MPEG_VIDEO, capture::MULAW}),
                         [](const auto &kinds) { return kinds.param.video; });

TEST(Relay_Stream, Leaves_Out_Metadata_And_Says_So) {
  const Camera camera({"--metadata"});
  Relay relay(camera.uri);
  expect_streams(relay.uri, capture::H264, capture::MPEG_AUDIO);
  relay.send_signal(SIGINT);
  const Outcome outcome = relay.wait();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out, relay.uri + "\n"
                                     "RTP video H264: rtph264depay -> rtph264pay\n"
                                     "RTP audio MP4A-LATM: rtpmp4adepay -> rtpmp4apay\n"
                                     "RTP_METADATA application VND.ONVIF.METADATA: not relayed, "
                                     "metadata is no media\n");
}

TEST(Relay_Stream, Leaves_Out_What_No_Elements_Can_Relay) {
  const Camera camera({"--video", "vp8", "--audio", "mulaw"});
  Relay relay(camera.uri, {"--duration", "1"});
  const Outcome outcome = relay.wait();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out, relay.uri + "\n"
                                     "RTP video VP8: not relayed, Failed to select proxy elements: "
                                     "Unsupported caps.\n"
                                     "RTP audio PCMU: rtppcmudepay -> rtppcmupay\n");
}

// A stream that the first viewer did not want must still be there for the next.
TEST(Relay_Stream, Serves_Viewers_Beside_And_After_Each_Other) {
  const Camera camera;
  Relay relay(camera.uri);
  ASSERT_NE(relay.uri, "");
  {
    const Viewer first(relay.uri, "video");
    ASSERT_TRUE(first.sees(50));
    const Viewer second(relay.uri, "audio");
    EXPECT_TRUE(second.sees(20));
    EXPECT_TRUE(first.sees(50));
  }
  const Viewer later(relay.uri, "audio");
  EXPECT_TRUE(later.sees(20));
  relay.send_signal(SIGTERM);
  const Outcome outcome = relay.wait();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_TRUE(later.sees_end());
}

TEST(Relay_Stream, Ends_When_The_Watched_Camera_Goes_Away) {
  Camera camera;
  Relay relay(camera.uri);
  const Viewer viewer(relay.uri, "video");
  ASSERT_TRUE(viewer.sees(20));
  camera.send_signal(SIGKILL);
  const Outcome outcome = relay.wait();
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "relay_stream: error gst-resource-error-quark 9: the camera ended its stream\n");
  EXPECT_TRUE(viewer.sees_end());
}

TEST(Relay_Stream, Ends_When_The_Unwatched_Camera_Goes_Away) {
  Camera camera;
  Relay relay(camera.uri);
  ASSERT_NE(relay.uri, "");
  camera.send_signal(SIGKILL);
  const Outcome outcome = relay.wait();
  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(std::regex_match(
      outcome.err,
      std::regex(
          "relay_stream: error gst-resource-error-quark 9: the camera does not answer: [^\n]+\n")))
      << outcome.err;
}

TEST(Relay_Stream, Ends_When_Its_Time_Is_Over) {
  const Camera camera;
  const gint64 start = g_get_monotonic_time();
  const Outcome outcome = run(Relay::command(camera.uri, {"--duration", "2"}));
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_GE(g_get_monotonic_time() - start, 2 * G_USEC_PER_SEC - G_USEC_PER_SEC / 2);
}

void expect_refusal(const std::vector<std::string> &command, const std::string &text) {
  const Outcome outcome = run(command);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "relay_stream: error " + text + "\n");
}

TEST(Relay_Stream, Refuses_A_Camera_With_Nothing_To_Relay) {
  const Camera camera({"--video", "vp8", "--audio", "opus"});
  expect_refusal(Relay::command(camera.uri, {}),
                 "gst-resource-error-quark 3: none of the camera's streams can be relayed");
}

TEST(Relay_Stream, Refuses_A_Camera_That_Is_Not_There) {
  Camera camera;
  const std::string uri = camera.uri;
  camera.send_signal(SIGTERM);
  camera.wait();
  expect_refusal(Relay::command(uri, {}),
                 "gst-resource-error-quark 7: Could not open resource for reading and writing. "
                 "(from camera)");
}

TEST(Relay_Stream, Refuses_A_Port_That_Is_Taken) {
  const Camera camera;
  std::smatch port;
  ASSERT_TRUE(std::regex_search(camera.uri, port, std::regex(":([0-9]+)/")));
  const Outcome outcome = run(Relay::command(camera.uri, {"--port", port[1]}));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err.rfind(
                "relay_stream: error gst-resource-error-quark 7: cannot listen on 127.0.0.1 port " +
                    port[1].str() + ": ",
                0),
            0U)
      << outcome.err;
}

TEST(Relay_Stream, Refuses_Bad_Options) {
  expect_refusal({RELAY_STREAM}, "--uri is missing");
  expect_refusal(Relay::command("rtsp://127.0.0.1/", {"--port", "65536"}),
                 "--port takes 0 to 65535");
  expect_refusal(Relay::command("rtsp://127.0.0.1/", {"--duration", "-1"}),
                 "--duration must not be negative");
}

}  // namespace

}  // namespace kel::tavren::tests
