// The fill level of a queue as text for logs.

#include <algorithm>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include <gst/app/gstappsrc.h>
#include <gtest/gtest.h>
#include <tavren/capture/media_helper.h>

#include "elements.h"
#include "framework_version.h"
#include "grouping_locale.h"
#include "log_watch.h"
#include "replaced_function.h"

namespace {

// If set, contains the copies of names that were created on this thread and not freed.
thread_local std::vector<gconstpointer> *names_held = nullptr;

}  // namespace

using kel::tavren::tests::replaced_function;

extern "C" gchar *gst_object_get_name(GstObject *object) {
  static const auto get_name = replaced_function(gst_object_get_name, __func__);
  gchar *const name = get_name(object);
  if (names_held != nullptr) names_held->push_back(name);
  return name;
}

extern "C" void(g_free)(gpointer memory) {
  static const auto free_memory = replaced_function(g_free, __func__);
  if (names_held != nullptr)
    names_held->erase(std::remove(names_held->begin(), names_held->end(), memory),
                      names_held->end());
  free_memory(memory);
}

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

// A running pipeline whose queue is blocked. An element in front of the queue answers the source's
// allocation query.
class Filled_Queue {
public:
  explicit Filled_Queue(const std::string &name, const std::string &kind = "queue")
      : pipeline_(launch("appsrc name=source format=time ! identity drop-allocation=true ! " +
                         kind + " name=" + name +
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

  // Sends a buffer and waits until it is in the queue.
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
    return own(gst_parse_launch(description.c_str(), nullptr));
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

// Creates a level property that always has its default value.
using Make_Level = GParamSpec *(*)(const char *name);

void install_levels(gpointer element_class, gpointer make_level) {
  GObjectClass *const object_class = G_OBJECT_CLASS(element_class);
  object_class->get_property = [](GObject *, guint, GValue *value, GParamSpec *level) {
    g_param_value_set_default(level, value);
  };
  guint id = 0;
  for (const char *const name :
       {"current-level-buffers", "current-level-bytes", "current-level-time"})
    g_object_class_install_property(object_class, ++id,
                                    (*static_cast<const Make_Level *>(make_level))(name));
}

// Creates an element of a new type with three such properties.
Element make_element_with(const Make_Level &make_level, const std::string &type_name) {
  GTypeInfo type{};
  type.class_size = sizeof(GstElementClass);
  type.class_init = install_levels;
  type.class_data = &make_level;
  type.instance_size = sizeof(GstElement);
  const GType registered =
      g_type_register_static(GST_TYPE_ELEMENT, type_name.c_str(), &type, GTypeFlags{});
  return make_of_type(registered, "e");
}

TEST(QueueReport, ContainsBuffersBytesAndSeconds) {
  Filled_Queue queue("queue0");
  queue.add(7000, 0, 700 * GST_MSECOND);
  queue.add(6000, 700 * GST_MSECOND, 600 * GST_MSECOND);
  queue.add(1000, 1300 * GST_MSECOND, 600 * GST_MSECOND);
  EXPECT_EQ(queue.report(), "queue0 Stats : Num Buffers = 3, Num Bytes = 14000, Num Seconds = 1");
}

TEST(QueueReport, ContainsTheLevelsOfAQueue2) {
  Filled_Queue queue("buffering", "queue2 use-rate-estimate=false");
  queue.add(7000, 0, 700 * GST_MSECOND);
  queue.add(6000, 700 * GST_MSECOND, 600 * GST_MSECOND);
  EXPECT_EQ(queue.report(),
            "buffering Stats : Num Buffers = 2, Num Bytes = 13000, Num Seconds = 1");
}

TEST(QueueReport, FreesTheName) {
  const Element queue = make_element("queue", "queue0");
  std::vector<gconstpointer> held;
  names_held = &held;
  const std::string report = Media_Helper::generate_queue_stats_report(queue.get());
  names_held = nullptr;
  EXPECT_EQ(report.substr(0, 12), "queue0 Stats");
  EXPECT_TRUE(held.empty());
}

TEST(QueueReport, TruncatesToWholeSeconds) {
  const struct {
    GstClockTime time;
    const char *report;
  } rows[] = {
      {0, "q Stats : Num Buffers = 1, Num Bytes = 10, Num Seconds = 0"},
      {999999999, "q Stats : Num Buffers = 1, Num Bytes = 10, Num Seconds = 0"},
      {1000000000, "q Stats : Num Buffers = 1, Num Bytes = 10, Num Seconds = 1"},
      {1999999999, "q Stats : Num Buffers = 1, Num Bytes = 10, Num Seconds = 1"},
      {2000000000, "q Stats : Num Buffers = 1, Num Bytes = 10, Num Seconds = 2"},
      // more seconds than 32 bits can represent
      {5000000000000000000ULL,
       "q Stats : Num Buffers = 1, Num Bytes = 10, Num Seconds = 5000000000"},
  };
  for (const auto &row : rows) {
    Filled_Queue queue("q");
    queue.add(10, 0, row.time);
    EXPECT_EQ(queue.report(), row.report);
  }
}

TEST(QueueReport, IsZeroForAnEmptyQueue) {
  const Element queue = make_element("queue", "a queue with a longer name than most have");
  EXPECT_EQ(Media_Helper::generate_queue_stats_report(queue.get()),
            "a queue with a longer name than most have Stats : Num Buffers = 0, Num Bytes = 0, "
            "Num Seconds = 0");
  EXPECT_EQ(reference_count(queue.get()), 1U);
}

TEST(QueueReport, DoesNotDependOnTheLocale) {
  Filled_Queue queue("queue0");
  queue.add(14000, 0, 12345 * GST_SECOND);
  const Grouping_Locale locale;
  EXPECT_EQ(queue.report(),
            "queue0 Stats : Num Buffers = 1, Num Bytes = 14000, Num Seconds = 12345");
}

TEST(QueueReport, AcceptsNull) {
  EXPECT_EQ(Media_Helper::generate_queue_stats_report(nullptr), "queue == NULL");
}

// The framework writes as many bytes as the type of the property has.
TEST(QueueReport, AcceptsLevelsOfAnyIntegerType) {
  const struct {
    Make_Level make_level;
    const char *report;
  } rows[] = {
      {[](const char *name) {
         return g_param_spec_uchar(name, nullptr, nullptr, 0, G_MAXUINT8, 200, G_PARAM_READABLE);
       },
       "e Stats : Num Buffers = 200, Num Bytes = 200, Num Seconds = 0"},
      {[](const char *name) {
         return g_param_spec_int(name, nullptr, nullptr, 0, G_MAXINT, G_MAXINT, G_PARAM_READABLE);
       },
       "e Stats : Num Buffers = 2147483647, Num Bytes = 2147483647, Num Seconds = 2"},
      {[](const char *name) {
         return g_param_spec_uint(name, nullptr, nullptr, 0, G_MAXUINT, G_MAXUINT,
                                  G_PARAM_READABLE);
       },
       "e Stats : Num Buffers = 4294967295, Num Bytes = 4294967295, Num Seconds = 4"},
      {[](const char *name) {
         return g_param_spec_int64(name, nullptr, nullptr, 0, G_MAXINT64, G_MAXINT64,
                                   G_PARAM_READABLE);
       },
       "e Stats : Num Buffers = 9223372036854775807, Num Bytes = 9223372036854775807, "
       "Num Seconds = 9223372036"},
      {[](const char *name) {
         return g_param_spec_uint64(name, nullptr, nullptr, 0, G_MAXUINT64, 5000000000,
                                    G_PARAM_READABLE);
       },
       "e Stats : Num Buffers = 5000000000, Num Bytes = 5000000000, Num Seconds = 5"},
  };
  int count = 0;
  for (const auto &row : rows) {
    const Element element =
        make_element_with(row.make_level, "Element_With_Levels_" + std::to_string(++count));
    EXPECT_EQ(Media_Helper::generate_queue_stats_report(element.get()), row.report);
  }
}

// An appsrc has levels of 8 bytes.
TEST(QueueReport, ContainsTheLevelsOfAnAppsrc) {
  if (framework_is_1_18())
    GTEST_SKIP() << "the appsrc of GStreamer 1.18 does not have these levels";
  const Element source = make_element("appsrc", "source");
  GstBuffer *const buffer = gst_buffer_new_allocate(nullptr, 7000, nullptr);
  gst_buffer_memset(buffer, 0, 0, 7000);
  ASSERT_EQ(gst_app_src_push_buffer(GST_APP_SRC(source.get()), buffer), GST_FLOW_OK);
  EXPECT_EQ(Media_Helper::generate_queue_stats_report(source.get()),
            "source Stats : Num Buffers = 1, Num Bytes = 7000, Num Seconds = 0");
}

// The framework logs a critical about the first property. The others are not read.
TEST(QueueReport, IsZeroForAnElementThatIsNotAQueue) {
  const Element identity = make_element("identity", "no_queue");
  const Expected_Log log("current-level-buffers");
  EXPECT_EQ(Media_Helper::generate_queue_stats_report(identity.get()),
            "no_queue Stats : Num Buffers = 0, Num Bytes = 0, Num Seconds = 0");
  EXPECT_EQ(log.count(), 1);
  EXPECT_EQ(reference_count(identity.get()), 1U);
}

// An element gets its name when it is created. It has none only if the name is removed.
TEST(QueueReport, IsEmptyForAQueueWithoutAName) {
  const Element queue = make_element("queue");
  g_free(GST_OBJECT_NAME(queue.get()));
  GST_OBJECT_NAME(queue.get()) = nullptr;
  EXPECT_EQ(Media_Helper::generate_queue_stats_report(queue.get()), "");
}

}  // namespace
}  // namespace kel::tavren::tests
