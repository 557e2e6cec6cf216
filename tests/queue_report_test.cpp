// How full a queue is, as a log line shows it.

#include <chrono>
#include <string>
#include <thread>

#include <gst/app/gstappsrc.h>
#include <gtest/gtest.h>
#include <tavren/capture/media_helper.h>

#include "grouping_locale.h"
#include "log_watch.h"
#include "references.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

// A running pipeline whose queue lets nothing out, not even the source's question about memory:
// that one is answered in front of the queue.
class Filled_Queue {
public:
  explicit Filled_Queue(const std::string &name)
      : pipeline_(launch(
            "appsrc name=source format=time ! identity drop-allocation=true ! queue name=" + name +
            " max-size-buffers=0 max-size-bytes=0 max-size-time=0 ! fakesink")),
        source_(child("source")), queue_(child(name.c_str())) {
    const Pad pad(gst_element_get_static_pad(queue_.get(), "src"), false);
    gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BLOCK_DOWNSTREAM, stay_blocked, nullptr,
                      nullptr);
    gst_element_set_state(pipeline_.get(), GST_STATE_PLAYING);
  }
  ~Filled_Queue() { gst_element_set_state(pipeline_.get(), GST_STATE_NULL); }

  Filled_Queue(const Filled_Queue &) = delete;
  Filled_Queue &operator=(const Filled_Queue &) = delete;

  // Sends a buffer and waits until the queue has it.
  void add(gsize bytes, GstClockTime time, GstClockTime duration) {
    GstBuffer *const buffer = gst_buffer_new_allocate(nullptr, bytes, nullptr);
    gst_buffer_memset(buffer, 0, 0, bytes);
    GST_BUFFER_PTS(buffer) = time;
    GST_BUFFER_DURATION(buffer) = duration;
    ASSERT_EQ(gst_app_src_push_buffer(GST_APP_SRC(source_.get()), buffer), GST_FLOW_OK);

    ++buffers_;
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (level() != buffers_ && std::chrono::steady_clock::now() < limit)
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ASSERT_EQ(level(), buffers_);
  }

  std::string report() const { return Media_Helper::generate_queue_stats_report(queue_.get()); }

private:
  static Element launch(const std::string &description) {
    GstElement *const pipeline = gst_parse_launch(description.c_str(), nullptr);
    return Element(GST_ELEMENT_CAST(gst_object_ref_sink(pipeline)), false);
  }

  static GstPadProbeReturn stay_blocked(GstPad *, GstPadProbeInfo *, gpointer) {
    return GST_PAD_PROBE_OK;
  }

  Element child(const char *name) const {
    return Element(gst_bin_get_by_name(GST_BIN(pipeline_.get()), name), false);
  }

  guint level() const {
    guint buffers = 0;
    g_object_get(queue_.get(), "current-level-buffers", &buffers, nullptr);
    return buffers;
  }

  Element pipeline_;
  Element source_;
  Element queue_;
  guint buffers_ = 0;
};

TEST(Queue_Report, tells_buffers_bytes_and_seconds) {
  Filled_Queue queue("queue0");
  queue.add(7000, 0, 700 * GST_MSECOND);
  queue.add(6000, 700 * GST_MSECOND, 600 * GST_MSECOND);
  queue.add(1000, 1300 * GST_MSECOND, 600 * GST_MSECOND);
  EXPECT_EQ(queue.report(), "queue0 Stats : Num Buffers = 3, Num Bytes = 14000, Num Seconds = 1");
}

TEST(Queue_Report, drops_the_fraction_of_a_second) {
  const struct {
    GstClockTime time;
    const char *report;
  } rows[] = {
      {0, "q Stats : Num Buffers = 1, Num Bytes = 10, Num Seconds = 0"},
      {999999999, "q Stats : Num Buffers = 1, Num Bytes = 10, Num Seconds = 0"},
      {1000000000, "q Stats : Num Buffers = 1, Num Bytes = 10, Num Seconds = 1"},
      {1999999999, "q Stats : Num Buffers = 1, Num Bytes = 10, Num Seconds = 1"},
      {2000000000, "q Stats : Num Buffers = 1, Num Bytes = 10, Num Seconds = 2"},
      // more seconds than 32 bits hold
      {5000000000000000000ULL,
       "q Stats : Num Buffers = 1, Num Bytes = 10, Num Seconds = 5000000000"},
  };
  for (const auto &row : rows) {
    Filled_Queue queue("q");
    queue.add(10, 0, row.time);
    EXPECT_EQ(queue.report(), row.report);
  }
}

TEST(Queue_Report, of_an_empty_queue_is_zeros) {
  const Element queue = make_element("queue", "a queue with a longer name than most have");
  EXPECT_EQ(Media_Helper::generate_queue_stats_report(queue.get()),
            "a queue with a longer name than most have Stats : Num Buffers = 0, Num Bytes = 0, "
            "Num Seconds = 0");
  EXPECT_EQ(reference_count(queue.get()), 1U);
}

TEST(Queue_Report, does_not_change_with_the_locale) {
  Filled_Queue queue("queue0");
  queue.add(14000, 0, 12345 * GST_SECOND);
  const Grouping_Locale locale;
  EXPECT_EQ(queue.report(),
            "queue0 Stats : Num Buffers = 1, Num Bytes = 14000, Num Seconds = 12345");
}

TEST(Queue_Report, of_no_queue) {
  EXPECT_EQ(Media_Helper::generate_queue_stats_report(nullptr), "queue == NULL");
}

// The framework complains about the first property and reads no other.
TEST(Queue_Report, of_what_is_no_queue_is_zeros) {
  const Element identity = make_element("identity", "no_queue");
  const Expected_Log log("current-level-buffers");
  EXPECT_EQ(Media_Helper::generate_queue_stats_report(identity.get()),
            "no_queue Stats : Num Buffers = 0, Num Bytes = 0, Num Seconds = 0");
  EXPECT_EQ(log.count(), 1);
  EXPECT_EQ(reference_count(identity.get()), 1U);
}

// An element gets its name when it is made: only one who takes it away leaves none.
TEST(Queue_Report, of_a_queue_without_a_name_is_empty) {
  const Element queue = make_element("queue");
  g_free(GST_OBJECT_NAME(queue.get()));
  GST_OBJECT_NAME(queue.get()) = nullptr;
  EXPECT_EQ(Media_Helper::generate_queue_stats_report(queue.get()), "");
}

}  // namespace
}  // namespace kel::tavren::tests
