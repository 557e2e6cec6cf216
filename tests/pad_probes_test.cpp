// Probes on the sink pad of an element.

#include <atomic>

#include "elements.h"
#include "errors.h"
#include "log_watch.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

struct Probe_Record {
  GstPadProbeReturn answer = GST_PAD_PROBE_OK;
  std::atomic<GstPad *> pad{nullptr};
  std::atomic<int> calls{0};
  std::atomic<int> destroyed{0};
};

GstPadProbeReturn record_probe(GstPad *pad, GstPadProbeInfo *, gpointer data) {
  auto *const record = static_cast<Probe_Record *>(data);
  record->pad = pad;
  ++record->calls;
  return record->answer;
}

void record_destruction(gpointer data) {
  ++static_cast<Probe_Record *>(data)->destroyed;
}

void add_probe(const Element &element, int mask, Probe_Record &record) {
  Media_Helper::add_probe_to_sink_pad_or_throw(element.get(), static_cast<GstPadProbeType>(mask),
                                               record_probe, &record, record_destruction);
}

class SinkPadProbe : public testing::Test {
protected:
  SinkPadProbe() { g_object_set(source_.get(), "num-buffers", 5, nullptr); }

  // Passes five buffers from the source to the sink.
  void run() const {
    const Element pipeline = make_pipeline();
    add_to_bin(pipeline, source_);
    add_to_bin(pipeline, sink_);
    ASSERT_TRUE(gst_element_link(source_.get(), sink_.get()));
    EXPECT_EQ(play_to_end(pipeline), GST_MESSAGE_EOS);
    // The streaming thread may keep the pipeline and its elements alive slightly longer.
    gst_bin_remove(as_bin(pipeline), sink_.get());
  }

  Element source_ = make_element("fakesrc");
  Element sink_ = make_element("fakesink");
  Pad sink_pad_ = static_pad(sink_, "sink");
  Probe_Record record_;
};

TEST_F(SinkPadProbe, ReportsABadElement) {
  for (GstElement *const bad : {as_element(nullptr), as_element(sink_pad_)})
    expect_error({TEC::NOT_AN_ELEMENT, {"element in add_probe_to_sink_pad_or_throw"}}, [&] {
      Media_Helper::add_probe_to_sink_pad_or_throw(bad, GST_PAD_PROBE_TYPE_IDLE, record_probe,
                                                   &record_, record_destruction);
    });
  EXPECT_EQ(record_.calls, 0);
  EXPECT_EQ(record_.destroyed, 0);
}

TEST_F(SinkPadProbe, ReportsAnElementWithoutASinkPad) {
  gst_object_set_name(GST_OBJECT(source_.get()), "camera");
  expect_error({TEC::STATIC_PAD_NOT_FOUND, {"sink", "camera", ""}},
               [&] { add_probe(source_, GST_PAD_PROBE_TYPE_BUFFER, record_); });
  EXPECT_EQ(record_.calls, 0);
  EXPECT_EQ(reference_count(source_.get()), 1u);
}

TEST_F(SinkPadProbe, IsCalledForEachBufferUntilThePadIsDestroyed) {
  const auto before = reference_counts({sink_.get(), sink_pad_.get()});
  add_probe(sink_, GST_PAD_PROBE_TYPE_BUFFER, record_);
  EXPECT_EQ(reference_counts({sink_.get(), sink_pad_.get()}), before);
  EXPECT_EQ(record_.calls, 0);
  run();
  EXPECT_EQ(record_.calls, 5);
  EXPECT_EQ(record_.pad, sink_pad_.get());
  EXPECT_EQ(record_.destroyed, 0);

  const Weak_Watch watch(sink_pad_.get());
  sink_pad_.reset();
  sink_.reset();
  EXPECT_TRUE(watch.gone());
  EXPECT_EQ(record_.destroyed, 1);
}

TEST_F(SinkPadProbe, IsCalledOnlyForTheTypesInTheMask) {
  Probe_Record of_lists;
  add_probe(sink_, GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, record_);
  add_probe(sink_, GST_PAD_PROBE_TYPE_BUFFER_LIST, of_lists);
  run();
  EXPECT_GE(record_.calls, 3);  // stream-start, segment and EOS
  EXPECT_EQ(of_lists.calls, 0);
  sink_pad_.reset();
  sink_.reset();
  EXPECT_EQ(record_.destroyed, 1);
  EXPECT_EQ(of_lists.destroyed, 1);
}

TEST_F(SinkPadProbe, IsRemovedIfItsCallbackReturnsRemove) {
  record_.answer = GST_PAD_PROBE_REMOVE;
  add_probe(sink_, GST_PAD_PROBE_TYPE_BUFFER, record_);
  EXPECT_EQ(record_.destroyed, 0);
  run();
  EXPECT_EQ(record_.calls, 1);
  EXPECT_EQ(record_.destroyed, 1);
}

TEST_F(SinkPadProbe, RequiresNeitherDataNorADestroyFunction) {
  const auto let_pass = [](GstPad *, GstPadProbeInfo *, gpointer data) {
    EXPECT_EQ(data, nullptr);
    return GST_PAD_PROBE_OK;
  };
  Media_Helper::add_probe_to_sink_pad_or_throw(sink_.get(), GST_PAD_PROBE_TYPE_BUFFER, let_pass,
                                               nullptr, nullptr);
  run();
}

TEST_F(SinkPadProbe, BlocksWithoutACallback) {
  Media_Helper::add_probe_to_sink_pad_or_throw(sink_.get(), GST_PAD_PROBE_TYPE_BLOCK_DOWNSTREAM,
                                               nullptr, &record_, record_destruction);
  EXPECT_TRUE(gst_pad_is_blocked(sink_pad_.get()));
  EXPECT_EQ(record_.destroyed, 0);
  sink_pad_.reset();
  sink_.reset();
  EXPECT_EQ(record_.destroyed, 1);
}

TEST_F(SinkPadProbe, HoldsBuffersBackWithoutACallback) {
  Media_Helper::add_probe_to_sink_pad_or_throw(sink_.get(), GST_PAD_PROBE_TYPE_BLOCK_DOWNSTREAM,
                                               nullptr, nullptr, nullptr);
  const Element pipeline = make_pipeline();
  add_to_bin(pipeline, source_);
  add_to_bin(pipeline, sink_);
  ASSERT_TRUE(gst_element_link(source_.get(), sink_.get()));
  gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
  const gint64 deadline = g_get_monotonic_time() + 10 * G_TIME_SPAN_SECOND;
  while (!gst_pad_is_blocking(sink_pad_.get()) && g_get_monotonic_time() < deadline)
    g_usleep(G_TIME_SPAN_MILLISECOND);
  EXPECT_TRUE(gst_pad_is_blocking(sink_pad_.get()));
  gst_element_set_state(pipeline.get(), GST_STATE_NULL);
}

TEST_F(SinkPadProbe, RunsAtOnceOnAnIdlePadAndRemains) {
  add_probe(sink_, GST_PAD_PROBE_TYPE_IDLE, record_);
  EXPECT_EQ(record_.calls, 1);
  EXPECT_EQ(record_.destroyed, 0);
  sink_pad_.reset();
  sink_.reset();
  EXPECT_EQ(record_.destroyed, 1);
}

// An idle probe that removes itself immediately leaves no identifier, like a probe that was not
// added.
TEST_F(SinkPadProbe, IsReportedAsNotAddedIfItIsRemovedAtOnce) {
  const auto before = reference_counts({sink_.get(), sink_pad_.get()});
  record_.answer = GST_PAD_PROBE_REMOVE;
  expect_error({TEC::PROBE_NOT_ADDED}, [&] { add_probe(sink_, GST_PAD_PROBE_TYPE_IDLE, record_); });
  EXPECT_EQ(record_.calls, 1);
  EXPECT_EQ(record_.destroyed, 1);
  EXPECT_EQ(reference_counts({sink_.get(), sink_pad_.get()}), before);
}

TEST_F(SinkPadProbe, IsNotAddedForAnEmptyMask) {
  const auto before = reference_counts({sink_.get(), sink_pad_.get()});
  const Expected_Log log("gst_pad_add_probe: assertion 'mask != 0' failed");
  expect_error({TEC::PROBE_NOT_ADDED}, [&] { add_probe(sink_, 0, record_); });
  EXPECT_EQ(record_.calls, 0);
  EXPECT_EQ(reference_counts({sink_.get(), sink_pad_.get()}), before);
}

}  // namespace
}  // namespace kel::tavren::tests
