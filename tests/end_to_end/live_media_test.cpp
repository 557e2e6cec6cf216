// Serves a media in the process of the test.

#include <atomic>
#include <memory>

#include <gst/rtsp-server/rtsp-server.h>
#include <gtest/gtest.h>
#include <tavren/capture/media_helper.h>

#include "references.h"
#include "rtsp_server/live_media.h"
#include "rtsp_server/loopback_server.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

GstPadProbeReturn count_packet(GstPad *, GstPadProbeInfo *, gpointer count) noexcept {
  ++*static_cast<std::atomic<int> *>(count);
  return GST_PAD_PROBE_OK;
}

// Makes the sender of a stream send a report every few milliseconds instead of every few seconds.
void send_many_reports(GstRTSPStream *stream) {
  const std::unique_ptr<GObject, decltype(&g_object_unref)> session(
      gst_rtsp_stream_get_rtpsession(stream), g_object_unref);
  g_object_set(session.get(), "rtcp-min-interval", guint64{GST_MSECOND}, "bandwidth", 1e9, nullptr);
}

class LiveMedia : public testing::Test {
protected:
  // The threads of the server end later than the server.
  ~LiveMedia() override { gst_rtsp_thread_pool_cleanup(); }
};

TEST_F(LiveMedia, PlaysWithoutViewersWhenItSendsPacketsAndReportsAtOnce) {
  constexpr int enough = 2000;
  programs::Loopback_Server server(nullptr, 0);
  const Element bin(GST_ELEMENT_CAST(gst_object_ref_sink(Media_Helper::gst_parse_launch_or_throw(
                        "( audiotestsrc is-live=true samplesperbuffer=8 ! "
                        "audio/x-raw, rate=8000, channels=1 ! rtpL16pay name=pay0 )"))),
                    false);
  std::atomic<int> packets{0};
  const Element payloader(Media_Helper::gst_bin_get_by_name_or_throw(GST_BIN(bin.get()), "pay0"),
                          false);
  Media_Helper::add_probe_to_sink_pad_or_throw(payloader.get(), GST_PAD_PROBE_TYPE_BUFFER,
                                               count_packet, &packets, nullptr);
  programs::Live_Media media(server, "/live", bin);
  media.start();
  send_many_reports(gst_rtsp_media_get_stream(media.media(), 0));
  for (int i = 0; i < 300 && packets < enough; ++i)
    g_usleep(100 * G_TIME_SPAN_MILLISECOND);
  EXPECT_GE(packets, enough);
  media.check();
}

}  // namespace
}  // namespace kel::tavren::tests
