#include <limits>
#include <string>
#include <utility>

#include "elements.h"
#include "errors.h"
#include "framework_version.h"
#include "log_watch.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

using Bus = boost::intrusive_ptr<GstBus>;
using Source = boost::intrusive_ptr<GSource>;

// An element that is set to NULL before its last reference is released, as the framework requires.
class Stopped {
public:
  explicit Stopped(const char *factory, const char *name = nullptr)
      : element_(make_element(factory, name)) {}
  ~Stopped() { gst_element_set_state(element_.get(), GST_STATE_NULL); }
  Stopped(const Stopped &) = delete;
  Stopped &operator=(const Stopped &) = delete;

  GstElement *get() const { return element_.get(); }
  GstBin *as_bin() const { return GST_BIN_CAST(element_.get()); }

  // Removes the messages from a pipeline's bus: each keeps a reference to its source element.
  void drop_messages() const {
    const Bus bus(gst_element_get_bus(element_.get()), false);
    gst_bus_set_flushing(bus.get(), TRUE);
    gst_bus_set_flushing(bus.get(), FALSE);
  }

private:
  Element element_;
};

// Passes null, and an object of another type.
void expect_element_checked(const std::string &description, void (*call)(GstElement *)) {
  const Pad pad = make_pad("src", GST_PAD_SRC);
  const std::string text = description + " is not a GstElement *.";
  expect_error(0x15160, text, [call] { call(nullptr); });
  expect_error(0x15160, text, [call, &pad] { call(as_element(pad.get())); });
  EXPECT_EQ(reference_count(pad.get()), 1U);
}

// Creates an element that never reaches READY. Unlike standard factories, its factory has metadata
// with the key "name".
GstElement *make_tap(const char *name) {
  static const GType type =
      make_subclass(GST_TYPE_ELEMENT, "TestTap", [](gpointer tap_class, gpointer) {
        auto *const element_class = static_cast<GstElementClass *>(tap_class);
        gst_element_class_set_static_metadata(element_class, "Long name", "Generic", "Taps", "Us");
        gst_element_class_add_static_metadata(element_class, "name", "camera tap 100%");
        element_class->change_state = [](GstElement *, GstStateChange change) {
          return change == GST_STATE_CHANGE_NULL_TO_READY ? GST_STATE_CHANGE_FAILURE
                                                          : GST_STATE_CHANGE_SUCCESS;
        };
      });
  static const gboolean registered =
      gst_element_register(nullptr, "capturetap", GST_RANK_NONE, type);
  EXPECT_TRUE(registered);
  return gst_element_factory_make("capturetap", name);
}

Element make_owned_tap(const char *name) {
  return own(make_tap(name));
}

TEST(SetState, ReturnsSuccess) {
  const Stopped element("identity");
  EXPECT_EQ(Media_Helper::gst_element_set_state_or_throw(element.get(), GST_STATE_READY, "start"),
            GST_STATE_CHANGE_SUCCESS);
  EXPECT_EQ(GST_STATE(element.get()), GST_STATE_READY);
  EXPECT_EQ(reference_count(element.get()), 1U);
}

TEST(SetState, ReturnsNoPrerollForALiveSource) {
  const Stopped source("fakesrc");
  g_object_set(source.get(), "is-live", TRUE, nullptr);
  EXPECT_EQ(Media_Helper::gst_element_set_state_or_throw(source.get(), GST_STATE_PAUSED, ""),
            GST_STATE_CHANGE_NO_PREROLL);
}

TEST(SetState, ReturnsAsyncForASinkThatPrerolls) {
  const Stopped sink("fakesink");
  EXPECT_EQ(Media_Helper::gst_element_set_state_or_throw(sink.get(), GST_STATE_PAUSED, ""),
            GST_STATE_CHANGE_ASYNC);
  EXPECT_EQ(GST_STATE_TARGET(sink.get()), GST_STATE_PAUSED);
  EXPECT_EQ(reference_count(sink.get()), 1U);
}

// The result of every state change of the elements below.
int answer_to_set_state = 0;

Element make_answering_element() {
  static const GType type =
      make_subclass(GST_TYPE_ELEMENT, "TestAnsweringElement", [](gpointer element_class, gpointer) {
        static_cast<GstElementClass *>(element_class)->set_state = [](GstElement *, GstState) {
          return static_cast<GstStateChangeReturn>(answer_to_set_state);
        };
      });
  return make_of_type(type);
}

TEST(SetState, ReturnsEveryOtherResultUnchanged) {
  const Element element = make_answering_element();
  for (const int result : {1, 2, 3, 4, 5, 1000000, std::numeric_limits<int>::max(), -1,
                           std::numeric_limits<int>::min()}) {
    answer_to_set_state = result;
    EXPECT_EQ(static_cast<int>(
                  Media_Helper::gst_element_set_state_or_throw(element.get(), GST_STATE_READY, "")),
              result);
  }
}

TEST(SetState, ThrowsIfTheElementRefuses) {
  const Stopped source("filesrc", "src0");
  expect_error(0x152E0,
               "Failed to set state GST_STATE_PLAYING on element src0 (), starting capture",
               [&source] {
                 Media_Helper::gst_element_set_state_or_throw(source.get(), GST_STATE_PLAYING,
                                                              "starting capture");
               });
  EXPECT_EQ(reference_count(source.get()), 1U);
}

TEST(SetState, OmitsAnEmptyContext) {
  const Stopped source("filesrc", "src0");
  expect_error(0x152E0, "Failed to set state GST_STATE_PAUSED on element src0 ()", [&source] {
    Media_Helper::gst_element_set_state_or_throw(source.get(), GST_STATE_PAUSED, "");
  });
}

TEST(SetState, PrintsTheContextVerbatim) {
  const Stopped source("filesrc", "100% %s");
  expect_error(
      0x152E0, "Failed to set state GST_STATE_PAUSED on element 100% %s (),  %1% \"a\"", [&source] {
        Media_Helper::gst_element_set_state_or_throw(source.get(), GST_STATE_PAUSED, " %1% \"a\"");
      });
}

TEST(SetState, PrintsTheNameOfTheState) {
  const Element tap = make_owned_tap("tap");
  const std::pair<GstState, std::string> states[] = {{GST_STATE_READY, "GST_STATE_READY"},
                                                     {GST_STATE_PAUSED, "GST_STATE_PAUSED"},
                                                     {GST_STATE_PLAYING, "GST_STATE_PLAYING"}};
  for (const auto &[state, name] : states)
    expect_error(
        0x152E0, "Failed to set state " + name + " on element tap (camera tap 100%)",
        [&tap, to = state] { Media_Helper::gst_element_set_state_or_throw(tap.get(), to, ""); });
}

// The file source reaches READY and fails to reach PAUSED. It remains in READY.
TEST(SetState, DoesNotResetTheElementAfterAFailure) {
  const Stopped source("filesrc", "src0");
  const Stopped twin("filesrc", "twin");
  expect_error(0x152E0, "Failed to set state GST_STATE_PLAYING on element src0 ()", [&source] {
    Media_Helper::gst_element_set_state_or_throw(source.get(), GST_STATE_PLAYING, "");
  });
  ASSERT_EQ(gst_element_set_state(twin.get(), GST_STATE_PLAYING), GST_STATE_CHANGE_FAILURE);
  EXPECT_EQ(GST_STATE(source.get()), GST_STATE(twin.get()));
  EXPECT_EQ(GST_STATE(source.get()), GST_STATE_READY);
}

TEST(SetState, ChecksItsElement) {
  expect_element_checked("element", [](GstElement *element) {
    Media_Helper::gst_element_set_state_or_throw(element, GST_STATE_READY, "context");
  });
}

TEST(SyncStateWithParent, ChangesTheElementToTheStateOfItsParent) {
  const Stopped pipeline("pipeline");
  ASSERT_EQ(gst_element_set_state(pipeline.get(), GST_STATE_READY), GST_STATE_CHANGE_SUCCESS);
  const Element element = make_element("identity");
  gst_bin_add(pipeline.as_bin(), element.get());
  ASSERT_EQ(GST_STATE(element.get()), GST_STATE_NULL);
  Media_Helper::gst_element_sync_state_with_parent_or_throw(element.get());
  EXPECT_EQ(GST_STATE(element.get()), GST_STATE_READY);
  pipeline.drop_messages();
  EXPECT_EQ(reference_count(element.get()), 2U);
  EXPECT_EQ(reference_count(pipeline.get()), 1U);
}

TEST(SyncStateWithParent, ThrowsWithoutAParent) {
  const Element element = make_element("identity", "parser");
  expect_error(0x150F0, "Failed to sync element parser () with parent.", [&element] {
    Media_Helper::gst_element_sync_state_with_parent_or_throw(element.get());
  });
  EXPECT_EQ(reference_count(element.get()), 1U);
}

TEST(SyncStateWithParent, ThrowsIfTheElementCannotChangeItsState) {
  const Stopped pipeline("pipeline");
  ASSERT_EQ(gst_element_set_state(pipeline.get(), GST_STATE_READY), GST_STATE_CHANGE_SUCCESS);
  const Element tap = make_owned_tap("tap");
  gst_bin_add(pipeline.as_bin(), tap.get());
  expect_error(0x150F0, "Failed to sync element tap (camera tap 100%) with parent.",
               [&tap] { Media_Helper::gst_element_sync_state_with_parent_or_throw(tap.get()); });
  pipeline.drop_messages();
  EXPECT_EQ(reference_count(tap.get()), 2U);
  EXPECT_EQ(reference_count(pipeline.get()), 1U);
}

TEST(SyncStateWithParent, ChecksItsElement) {
  expect_element_checked("element in gst_element_sync_state_with_parent_or_throw",
                         [](GstElement *element) {
                           Media_Helper::gst_element_sync_state_with_parent_or_throw(element);
                         });
}

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
  expect_error(0x151A0, "Could not retrieve pipeline bus for element \"100% %s\".",
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
    expect_error(0x151B0, "Could not create bus watch in gst_bus_create_watch_or_throw",
                 [&bus] { Media_Helper::gst_bus_create_watch_or_throw(bus.get()); });
    EXPECT_EQ(watch->ref_count, 1U);
    EXPECT_EQ(reference_count(bus.get()), before);
  }
  // The first watch is destroyed, so another one can be created.
  const Source watch(Media_Helper::gst_bus_create_watch_or_throw(bus.get()), false);
  EXPECT_EQ(watch->ref_count, 1U);
}

TEST(CreateWatch, ChecksItsBus) {
  const std::string text = "bus in gst_bus_create_watch_or_throw is not a GstBus *.";
  const Element element = make_element("identity");
  expect_error(0x15190, text, [] { Media_Helper::gst_bus_create_watch_or_throw(nullptr); });
  expect_error(0x15190, text, [&element] {
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
  expect_error(0x15110, "Failed to get parent for element recording ().",
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
  expect_error(0x152D0, "Failed to connect to signal \"" + signal + "\" on element \"parser\".",
               [&] {
                 Media_Helper::g_signal_connect_or_throw(element.get(), signal,
                                                         G_CALLBACK(count_pad), &data);
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

// The parentheses in the messages contain the metadata with the key "name", not the long name.

TEST(ElementText, ContainsTheNameMetadataOfTheFactory) {
  const Element tap = make_owned_tap("tap");
  expect_error(0x15110, "Failed to get parent for element tap (camera tap 100%).",
               [&tap] { Media_Helper::gst_element_get_parent_or_throw(tap.get()); });
  expect_error(0x150F0, "Failed to sync element tap (camera tap 100%) with parent.",
               [&tap] { Media_Helper::gst_element_sync_state_with_parent_or_throw(tap.get()); });
  expect_error(
      0x152E0, "Failed to set state GST_STATE_READY on element tap (camera tap 100%), starting",
      [&tap] {
        Media_Helper::gst_element_set_state_or_throw(tap.get(), GST_STATE_READY, "starting");
      });
  EXPECT_EQ(reference_count(tap.get()), 1U);
}

TEST(ElementText, ContainsTheNameMetadataOfARefusedElement) {
  const Element bin = make_element("bin");
  gst_bin_add(GST_BIN_CAST(bin.get()), make_tap("tap"));
  GstElement *const refused = make_tap("tap");
  const Weak_Watch watch(refused);
  expect_error(0x150E0, "Failed to add element tap (camera tap 100%) to bin.",
               [&] { Media_Helper::gst_bin_add_or_throw(GST_BIN_CAST(bin.get()), refused); });
  EXPECT_TRUE(watch.gone());
}

// Longer than a typical fixed-size buffer, and in Latin-1.
const std::string awkward_names[] = {std::string(300, 'n'), std::string(5000, 'n'), "Geb\xE4ude 3",
                                     std::string(400, '\xFF') + "\xC3"};

void expect_whole_name_of_an_element(const std::string &name) {
  const Element element = make_owned_tap(name.c_str());
  const std::string quoted = "\"" + name + "\"";
  const std::string tap = name + " (camera tap 100%)";
  expect_error(0x152E0, "Failed to set state GST_STATE_READY on element " + tap + ", " + name, [&] {
    Media_Helper::gst_element_set_state_or_throw(element.get(), GST_STATE_READY, name);
  });
  expect_error(0x150F0, "Failed to sync element " + tap + " with parent.",
               [&] { Media_Helper::gst_element_sync_state_with_parent_or_throw(element.get()); });
  expect_error(0x151A0, "Could not retrieve pipeline bus for element " + quoted + ".",
               [&] { Media_Helper::gst_element_get_bus_or_throw(element.get()); });
  expect_error(0x15110, "Failed to get parent for element " + tap + ".",
               [&] { Media_Helper::gst_element_get_parent_or_throw(element.get()); });
  expect_error(0x15100, "Failed to get static pad " + quoted + " for element " + tap + ".", [&] {
    Media_Helper::gst_element_get_static_pad_or_throw(element.get(), name.c_str());
  });
  const Element bin = make_element("bin");
  gst_bin_add(GST_BIN_CAST(bin.get()), make_tap(name.c_str()));
  expect_error(0x150E0, "Failed to add element " + tap + " to bin.", [&] {
    Media_Helper::gst_bin_add_or_throw(GST_BIN_CAST(bin.get()), make_tap(name.c_str()));
  });
}

void expect_whole_names_of_a_link(const std::string &name) {
  const Element first = make_owned_tap(name.c_str());
  const Element second = make_element("fakesink", ("to " + name).c_str());
  const std::string source = "\"" + name + "\"";
  const std::string sink = "\"to " + name + "\"";
  expect_error(0x151C0, "Failed to link element " + source + " and element " + sink + ".", [&] {
    Media_Helper::gst_element_link_many_or_throw(first.get(), second.get(),
                                                 static_cast<GstElement *>(nullptr));
  });
  GstPad *const pad = gst_pad_new(name.c_str(), GST_PAD_SRC);
  gst_element_add_pad(first.get(), pad);
  const Element other = make_element("fakesrc");
  ASSERT_TRUE(gst_element_link(other.get(), second.get()));
  expect_error(0x150B0,
               "Failed to link " + source + " pad from element " + source +
                   " with \"sink\" pad from element " + sink +
                   " (GST_PAD_LINK_WAS_LINKED: pad was already linked).",
               [&] { Media_Helper::link_pad_to_element_or_throw(pad, second.get()); });
}

TEST(ElementText, ContainsNamesByteForByte) {
  for (const std::string &name : awkward_names) {
    expect_whole_name_of_an_element(name);
    expect_whole_names_of_a_link(name);
  }
}

TEST(ElementText, IsEmptyWithoutANameAndAFactory) {
  static const GType type = make_subclass(GST_TYPE_BIN, "TestNamelessBin");
  const Element bin = make_of_type(type, "own");
  ASSERT_EQ(gst_element_get_factory(bin.get()), nullptr);
  expect_error(0x15110, "Failed to get parent for element own ().",
               [&bin] { Media_Helper::gst_element_get_parent_or_throw(bin.get()); });

  g_free(GST_OBJECT_NAME(bin.get()));
  GST_OBJECT_NAME(bin.get()) = nullptr;
  expect_error(0x15110, "Failed to get parent for element  ().",
               [&bin] { Media_Helper::gst_element_get_parent_or_throw(bin.get()); });
  // A bin has no bus unless it is in a pipeline.
  expect_error(0x151A0, "Could not retrieve pipeline bus for element \"\".",
               [&bin] { Media_Helper::gst_element_get_bus_or_throw(bin.get()); });
}

}  // namespace
}  // namespace kel::tavren::tests
