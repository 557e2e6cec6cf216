// Buses, parents and signals of elements.

#include <string>

#include "controlled_elements.h"
#include "framework_version.h"
#include "log_watch.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;
using Source = boost::intrusive_ptr<GSource>;

TEST(GetBus, ReturnsANewReference) {
  const Element pipeline = make_element("pipeline");
  const Bus own(gst_pipeline_get_bus(GST_PIPELINE(pipeline.get())), false);
  const guint before = reference_count(own.get());
  GstBus *const bus = Media_Helper::gst_element_get_bus_or_throw(pipeline.get());
  EXPECT_EQ(bus, own.get());
  EXPECT_EQ(reference_count(bus), before + 1);
  EXPECT_EQ(reference_count(pipeline.get()), 1U);
  gst_object_unref(bus);
}

TEST(GetBus, ReturnsTheBusOfAnElementInAPipeline) {
  const Element pipeline = make_element("pipeline");
  const Element element = make_element("identity");
  gst_bin_add(GST_BIN_CAST(pipeline.get()), element.get());
  const Bus expected(gst_element_get_bus(element.get()), false);
  ASSERT_TRUE(expected);
  const Bus bus(Media_Helper::gst_element_get_bus_or_throw(element.get()), false);
  EXPECT_EQ(bus, expected);
}

TEST(GetBus, ThrowsWithoutABus) {
  const Element element = make_element("identity", "100% %s");
  expect_error({TEC::ELEMENT_HAS_NO_BUS, {"100% %s"}},
               [&element] { Media_Helper::gst_element_get_bus_or_throw(element.get()); });
  EXPECT_EQ(reference_count(element.get()), 1U);
}

TEST(GetBus, ChecksItsElement) {
  expect_element_checked("element in gst_element_get_bus_or_throw", [](GstElement *element) {
    Media_Helper::gst_element_get_bus_or_throw(element);
  });
}

TEST(CreateWatch, ReturnsAnUnattachedSource) {
  const Bus bus(gst_bus_new(), false);
  {
    const Source watch(Media_Helper::gst_bus_create_watch_or_throw(bus.get()), false);
    EXPECT_EQ(watch->ref_count, 1U);
    EXPECT_EQ(g_source_get_context(watch.get()), nullptr);
    EXPECT_FALSE(g_source_is_destroyed(watch.get()));
  }
  // The watch may keep a reference to the bus only while it exists.
  EXPECT_EQ(reference_count(bus.get()), 1U);
}

TEST(CreateWatch, WatchesTheBus) {
  const Bus bus(gst_bus_new(), false);
  const Source watch(Media_Helper::gst_bus_create_watch_or_throw(bus.get()), false);
  const boost::intrusive_ptr<GMainContext> context(g_main_context_new(), false);
  int seen = 0;
  const GstBusFunc count_eos = [](GstBus *, GstMessage *message, gpointer data) -> gboolean {
    *static_cast<int *>(data) += GST_MESSAGE_TYPE(message) == GST_MESSAGE_EOS;
    return G_SOURCE_CONTINUE;
  };
  g_source_set_callback(watch.get(), G_SOURCE_FUNC(count_eos), &seen, nullptr);
  g_source_attach(watch.get(), context.get());
  gst_bus_post(bus.get(), gst_message_new_eos(nullptr));
  g_main_context_iteration(context.get(), FALSE);
  EXPECT_EQ(seen, 1);
  g_source_destroy(watch.get());
}

TEST(CreateWatch, ThrowsForASecondWatch) {
  if (framework_is_1_18()) GTEST_SKIP() << "GStreamer 1.18 adds a second watch to a bus";
  const Bus bus(gst_bus_new(), false);
  {
    const Source watch(Media_Helper::gst_bus_create_watch_or_throw(bus.get()), false);
    const guint before = reference_count(bus.get());
    expect_error({TEC::BUS_WATCH_CREATION_FAILED},
                 [&bus] { Media_Helper::gst_bus_create_watch_or_throw(bus.get()); });
    EXPECT_EQ(watch->ref_count, 1U);
    EXPECT_EQ(reference_count(bus.get()), before);
  }
  // The first watch is destroyed, so another one can be created.
  const Source watch(Media_Helper::gst_bus_create_watch_or_throw(bus.get()), false);
  EXPECT_EQ(watch->ref_count, 1U);
}

TEST(CreateWatch, ChecksItsBus) {
  const Expected_Error bad_bus{TEC::NOT_A_BUS, {"bus in gst_bus_create_watch_or_throw"}};
  const Element element = make_element("identity");
  expect_error(bad_bus, [] { Media_Helper::gst_bus_create_watch_or_throw(nullptr); });
  expect_error(bad_bus, [&element] {
    Media_Helper::gst_bus_create_watch_or_throw(
        static_cast<GstBus *>(static_cast<gpointer>(element.get())));
  });
  EXPECT_EQ(reference_count(element.get()), 1U);
}

TEST(GetParent, ReturnsANewReference) {
  const Element bin = make_element("bin");
  const Element element = make_element("identity");
  gst_bin_add(GST_BIN_CAST(bin.get()), element.get());
  GstElement *const parent = Media_Helper::gst_element_get_parent_or_throw(element.get());
  EXPECT_EQ(parent, bin.get());
  EXPECT_EQ(reference_count(parent), 2U);
  EXPECT_EQ(reference_count(element.get()), 2U);
  gst_object_unref(parent);
}

TEST(GetParent, ThrowsForATopLevelPipeline) {
  const Element pipeline = make_element("pipeline", "recording");
  expect_error({TEC::ELEMENT_HAS_NO_PARENT, {"recording", ""}},
               [&pipeline] { Media_Helper::gst_element_get_parent_or_throw(pipeline.get()); });
  EXPECT_EQ(reference_count(pipeline.get()), 1U);
}

TEST(GetParent, ReturnsAParentThatIsNotAnElementWithAWarning) {
  const Element element = make_element("identity");
  const Bus parent(gst_bus_new(), false);
  ASSERT_TRUE(gst_object_set_parent(GST_OBJECT_CAST(element.get()), GST_OBJECT_CAST(parent.get())));
  const guint before = reference_count(parent.get());
  {
    const Expected_Log warning("invalid cast from 'GstBus' to 'GstElement'");
    const Element given(Media_Helper::gst_element_get_parent_or_throw(element.get()), false);
    EXPECT_EQ(static_cast<gpointer>(given.get()), static_cast<gpointer>(parent.get()));
    EXPECT_EQ(reference_count(parent.get()), before + 1);
    EXPECT_EQ(warning.count(), 1);
  }
  EXPECT_EQ(reference_count(parent.get()), before);
  gst_object_unparent(GST_OBJECT_CAST(element.get()));
}

TEST(GetParent, ChecksItsElement) {
  expect_element_checked("element in gst_element_get_parent_or_throw", [](GstElement *element) {
    Media_Helper::gst_element_get_parent_or_throw(element);
  });
}

void count_pad(GstElement *, GstPad *, gpointer count) {
  ++*static_cast<int *>(count);
}

TEST(SignalConnect, ReturnsTheHandlerId) {
  const Element tee = make_element("tee");
  int count = 0;
  const gulong handler = Media_Helper::g_signal_connect_or_throw(tee.get(), "pad-added",
                                                                 G_CALLBACK(count_pad), &count);
  EXPECT_NE(handler, 0U);
  EXPECT_TRUE(g_signal_handler_is_connected(tee.get(), handler));
  EXPECT_EQ(reference_count(tee.get()), 1U);

  const Pad first = request_pad(tee.get(), "src_%u");
  EXPECT_EQ(count, 1);
  g_signal_handler_disconnect(tee.get(), handler);
  const Pad second = request_pad(tee.get(), "src_%u");
  EXPECT_EQ(count, 1);

  gst_element_release_request_pad(tee.get(), first.get());
  gst_element_release_request_pad(tee.get(), second.get());
}

int changes = 0;
void count_change(GstElement *, GParamSpec *, gpointer data) {
  EXPECT_EQ(data, nullptr);
  ++changes;
}

TEST(SignalConnect, AcceptsADetailAndNoData) {
  changes = 0;
  const Element element = make_element("identity");
  EXPECT_NE(Media_Helper::g_signal_connect_or_throw(element.get(), "notify::silent",
                                                    G_CALLBACK(count_change), nullptr),
            0U);
  g_object_set(element.get(), "silent", FALSE, "dump", TRUE, nullptr);
  EXPECT_EQ(changes, 1);
}

void note_before(GstElement *, GstPad *, gpointer data) {
  static_cast<std::string *>(data)->append("before ");
}
void note_after(GstElement *, GstPad *, gpointer data) {
  static_cast<std::string *>(data)->append("after ");
}

TEST(SignalConnect, RunsTheHandlerBeforeHandlersConnectedAfter) {
  const Element tee = make_element("tee");
  std::string order;
  g_signal_connect_after(tee.get(), "pad-added", G_CALLBACK(note_after), &order);
  Media_Helper::g_signal_connect_or_throw(tee.get(), "pad-added", G_CALLBACK(note_before), &order);

  const Pad pad = request_pad(tee.get(), "src_%u");
  EXPECT_EQ(order, "before after ");
  gst_element_release_request_pad(tee.get(), pad.get());
}

void expect_no_signal(const std::string &signal, const std::string &warning) {
  const Element element = make_element("identity", "parser");
  const Expected_Log log(warning);
  int data = 0;
  expect_error({TEC::SIGNAL_CONNECTION_FAILED, {signal, "parser"}}, [&] {
    Media_Helper::g_signal_connect_or_throw(element.get(), signal, G_CALLBACK(count_pad), &data);
  });
  EXPECT_EQ(reference_count(element.get()), 1U);
}

TEST(SignalConnect, ThrowsForAMisspeltSignal) {
  expect_no_signal("pad-adeddd", "is invalid for instance");
  expect_no_signal("100%s", "is invalid for instance");
  expect_no_signal("", "is invalid for instance");
}

TEST(SignalConnect, ThrowsForASignalOfAnotherClass) {
  expect_no_signal("new-sample", "is invalid for instance");
}

TEST(SignalConnect, ThrowsForADetailThatTheSignalDoesNotSupport) {
  expect_no_signal("pad-added::src", "does not support detail");
}

TEST(SignalConnect, ChecksItsElement) {
  expect_element_checked("element", [](GstElement *element) {
    Media_Helper::g_signal_connect_or_throw(element, "pad-added", G_CALLBACK(count_pad), nullptr);
  });
}

}  // namespace
}  // namespace kel::tavren::tests
