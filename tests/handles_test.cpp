#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "elements.h"
#include "errors.h"
#include "replaced_function.h"

// These include the framework's declarations of the types, which must not conflict with the
// library's.
#include <gst/app/gstappsink.h>
#include <gst/rtsp-server/rtsp-server.h>

namespace {

// A call of a reference counting function by the adapter. Nested calls are not recorded.
struct Counting_Call {
  std::string function;
  gconstpointer argument;

  bool operator==(const Counting_Call &other) const {
    return function == other.function && argument == other.argument;
  }
};

std::ostream &operator<<(std::ostream &out, const Counting_Call &call) {
  return out << call.function << '(' << call.argument << ')';
}

thread_local std::vector<Counting_Call> *recorded = nullptr;
thread_local int depth = 0;

// Records a call if requested, and forwards it.
template <typename Result, typename Argument>
Result record(Result (*replacement)(Argument), const char *name, Argument argument) {
  const auto function = kel::tavren::tests::replaced_function(replacement, name);
  if (recorded == nullptr) return function(argument);
  if (depth == 0) recorded->push_back({name, argument});
  struct Level {
    Level() { ++depth; }
    ~Level() { --depth; }
  } const level;
  return function(argument);
}

}  // namespace

// Wraps the counting functions: the handles call different ones, and some counts are not visible
// from outside. The parentheses suppress macros of the same names.

extern "C" {

GstMiniObject *(gst_mini_object_ref)(GstMiniObject *object) {
  return record(gst_mini_object_ref, __func__, object);
}
void(gst_mini_object_unref)(GstMiniObject *object) {
  record(gst_mini_object_unref, __func__, object);
}
gpointer(gst_object_ref)(gpointer object) {
  return record(gst_object_ref, __func__, object);
}
void(gst_object_unref)(gpointer object) {
  record(gst_object_unref, __func__, object);
}
gpointer(g_object_ref)(gpointer object) {
  return record(g_object_ref, __func__, object);
}
void(g_object_unref)(gpointer object) {
  record(g_object_unref, __func__, object);
}
GSource *(g_source_ref)(GSource *source) {
  return record(g_source_ref, __func__, source);
}
void(g_source_unref)(GSource *source) {
  record(g_source_unref, __func__, source);
}
GMainLoop *(g_main_loop_ref)(GMainLoop *loop) {
  return record(g_main_loop_ref, __func__, loop);
}
void(g_main_loop_unref)(GMainLoop *loop) {
  record(g_main_loop_unref, __func__, loop);
}
GMainContext *(g_main_context_ref)(GMainContext *context) {
  return record(g_main_context_ref, __func__, context);
}
void(g_main_context_unref)(GMainContext *context) {
  record(g_main_context_unref, __func__, context);
}
void(g_free)(gpointer memory) {
  record(g_free, __func__, memory);
}
void(gst_iterator_free)(GstIterator *iterator) {
  record(gst_iterator_free, __func__, iterator);
}

}  // extern "C"

namespace kel::tavren::tests {
namespace {

using Calls = std::vector<Counting_Call>;

template <typename Action>
Calls calls_of(Action &&action) {
  Calls calls;
  recorded = &calls;
  action();
  recorded = nullptr;
  return calls;
}

// Each way of creating a handle must take and release one reference with the given functions. The
// caller keeps a reference to the object throughout.
template <typename T>
void expect_counted_by(const std::string &ref, const std::string &unref, T *object) {
  using Handle = boost::intrusive_ptr<T>;
  const Counting_Call taken{ref, object};
  const Counting_Call given{unref, object};

  EXPECT_EQ(calls_of([object] { intrusive_ptr_add_ref(object); }), Calls{taken});
  EXPECT_EQ(calls_of([object] { intrusive_ptr_release(object); }), Calls{given});

  EXPECT_EQ(calls_of([object] { const Handle borrowed(object); }), (Calls{taken, given}));
  EXPECT_EQ(calls_of([object] {
              const Handle first(object);
              const Handle copy(first);
            }),
            (Calls{taken, taken, given, given}));
  EXPECT_EQ(calls_of([object] {
              Handle first(object);
              const Handle moved(std::move(first));
            }),
            (Calls{taken, given}));
  EXPECT_EQ(calls_of([object] {
              Handle adopting(object, false);
              adopting.detach();
            }),
            Calls{});
  EXPECT_EQ(calls_of([object] {
              Handle handle(object);
              handle = handle.get();
              handle.reset();
            }),
            (Calls{taken, taken, given, given}));
  EXPECT_EQ(calls_of([] {
              Handle null;
              const Handle copy(null);
              null.reset();
            }),
            Calls{});
}

// An object of the framework with a visible reference count, initially one.
template <typename T>
void expect_object_counted_by(const std::string &ref, const std::string &unref, T *made) {
  const Weak_Watch watch(made);
  {
    const boost::intrusive_ptr<T> owner(made, false);
    expect_counted_by(ref, unref, made);
    EXPECT_EQ(reference_count(made), 1U);
    {
      const boost::intrusive_ptr<T> copy(owner);
      EXPECT_EQ(reference_count(made), 2U);
    }
    EXPECT_EQ(reference_count(made), 1U);
    EXPECT_FALSE(watch.gone());
  }
  EXPECT_TRUE(watch.gone());
}

bool weak_notified = false;
void notify_weak(gpointer, GstMiniObject *) {
  weak_notified = true;
}

template <typename T>
void expect_mini_object_counted(T *made) {
  GstMiniObject *const object = GST_MINI_OBJECT_CAST(made);
  weak_notified = false;
  gst_mini_object_weak_ref(object, notify_weak, nullptr);
  {
    const boost::intrusive_ptr<T> owner(made, false);
    expect_counted_by("gst_mini_object_ref", "gst_mini_object_unref", made);
    EXPECT_EQ(GST_MINI_OBJECT_REFCOUNT_VALUE(object), 1);
    {
      const boost::intrusive_ptr<T> copy(owner);
      EXPECT_EQ(GST_MINI_OBJECT_REFCOUNT_VALUE(object), 2);
    }
    EXPECT_EQ(GST_MINI_OBJECT_REFCOUNT_VALUE(object), 1);
    EXPECT_FALSE(weak_notified);
  }
  EXPECT_TRUE(weak_notified);
}

template <typename T>
T *sink_as(gpointer object) {
  return static_cast<T *>(gst_object_ref_sink(object));
}

TEST(Handles, CountReferencesToSamples) {
  expect_mini_object_counted(gst_sample_new(nullptr, nullptr, nullptr, nullptr));
}

TEST(Handles, CountReferencesToCaps) {
  expect_mini_object_counted(gst_caps_new_empty_simple("video/x-raw"));
}

TEST(Handles, CountReferencesToMessages) {
  expect_mini_object_counted(gst_message_new_eos(nullptr));
}

TEST(Handles, CountReferencesToPads) {
  expect_object_counted_by("gst_object_ref", "gst_object_unref",
                           sink_as<GstPad>(gst_pad_new("src", GST_PAD_SRC)));
}

TEST(Handles, CountReferencesToElements) {
  expect_object_counted_by("gst_object_ref", "gst_object_unref",
                           sink_as<GstElement>(gst_element_factory_make("identity", nullptr)));
}

TEST(Handles, CountReferencesToAppSinks) {
  expect_object_counted_by("gst_object_ref", "gst_object_unref",
                           sink_as<GstAppSink>(gst_element_factory_make("appsink", nullptr)));
}

TEST(Handles, CountReferencesToBuses) {
  expect_object_counted_by("gst_object_ref", "gst_object_unref", gst_bus_new());
}

TEST(Handles, CountReferencesToRtspServers) {
  expect_object_counted_by("gst_object_ref", "gst_object_unref", gst_rtsp_server_new());
}

TEST(Handles, CountReferencesToRtspMediaFactories) {
  expect_object_counted_by("g_object_ref", "g_object_unref", gst_rtsp_media_factory_new());
}

TEST(Handles, CountReferencesToRtspAuths) {
  expect_object_counted_by("g_object_ref", "g_object_unref", gst_rtsp_auth_new());
}

TEST(Handles, CountReferencesToRtspMountPoints) {
  expect_object_counted_by("g_object_ref", "g_object_unref", gst_rtsp_mount_points_new());
}

// A source that records its finalisation, and thereby that of its context, which holds the only
// reference to it.
bool source_finalised = false;
GSource *make_source() {
  static GSourceFuncs functions = {
      nullptr, nullptr, nullptr, [](GSource *) { source_finalised = true; }, nullptr, nullptr};
  source_finalised = false;
  return g_source_new(&functions, sizeof(GSource));
}

void leave_source_to(GMainContext *context) {
  GSource *const source = make_source();
  g_source_attach(source, context);
  g_source_unref(source);
}

TEST(Handles, CountReferencesToSources) {
  {
    const boost::intrusive_ptr<GSource> owner(make_source(), false);
    expect_counted_by("g_source_ref", "g_source_unref", owner.get());
    EXPECT_FALSE(source_finalised);
  }
  EXPECT_TRUE(source_finalised);
}

TEST(Handles, CountReferencesToMainContexts) {
  {
    const boost::intrusive_ptr<GMainContext> owner(g_main_context_new(), false);
    leave_source_to(owner.get());
    expect_counted_by("g_main_context_ref", "g_main_context_unref", owner.get());
    EXPECT_FALSE(source_finalised);
  }
  EXPECT_TRUE(source_finalised);
}

TEST(Handles, CountReferencesToMainLoops) {
  {
    GMainContext *const context = g_main_context_new();
    leave_source_to(context);
    const boost::intrusive_ptr<GMainLoop> owner(g_main_loop_new(context, FALSE), false);
    g_main_context_unref(context);
    expect_counted_by("g_main_loop_ref", "g_main_loop_unref", owner.get());
    EXPECT_FALSE(source_finalised);
  }
  EXPECT_TRUE(source_finalised);
}

TEST(Handles, MoveTheirReferenceToAnotherThread) {
  Element element = make_element("identity");
  const Weak_Watch watch(element.get());
  std::thread([moved = std::move(element)]() mutable {
    EXPECT_EQ(reference_count(moved.get()), 1U);
    moved.reset();
  }).join();
  EXPECT_FALSE(element);
  EXPECT_TRUE(watch.gone());
}

TEST(Handles, AreReleasedByAThrow) {
  const Caps caps = make_caps("video/x-raw");
  try {
    const Caps copy(caps);
    EXPECT_EQ(reference_count(caps.get()), 2);
    throw std::runtime_error("failure");
  } catch (const std::runtime_error &) {
  }
  EXPECT_EQ(reference_count(caps.get()), 1);
}

using Text = std::unique_ptr<char, Emancipator<char>>;
using Iterator = std::unique_ptr<GstIterator, Emancipator<GstIterator>>;

static_assert(std::is_empty_v<Emancipator<char>> && std::is_empty_v<Emancipator<GstIterator>>);
static_assert(sizeof(Text) == sizeof(char *) && sizeof(Iterator) == sizeof(GstIterator *));

TEST(Emancipator, FreesText) {
  const Element element = make_element("identity", "parser");
  char *const name = gst_object_get_name(GST_OBJECT_CAST(element.get()));
  EXPECT_EQ(calls_of([name] { const Text text(name); }), (Calls{{"g_free", name}}));
  char *const other = g_strdup("text");
  EXPECT_EQ(calls_of([other] { Emancipator<char>()(other); }), (Calls{{"g_free", other}}));
}

TEST(Emancipator, FreesIterators) {
  const Element element = make_element("identity");
  GstIterator *const iterator = gst_element_iterate_pads(element.get());
  EXPECT_EQ(reference_count(element.get()), 2U);
  EXPECT_EQ(calls_of([iterator] { const Iterator owner(iterator); }),
            (Calls{{"gst_iterator_free", iterator}}));
  EXPECT_EQ(reference_count(element.get()), 1U);
}

TEST(Emancipator, IsNotCalledByAnEmptyHolder) {
  EXPECT_EQ(calls_of([] {
              const Text text;
              const Iterator iterator(nullptr);
            }),
            Calls{});
}

TEST(Emancipator, IsCalledByAThrow) {
  char *const text = g_strdup("text");
  EXPECT_EQ(calls_of([text] {
              try {
                const Text owner(text);
                throw 1;
              } catch (int) {
              }
            }),
            (Calls{{"g_free", text}}));
}

}  // namespace
}  // namespace kel::tavren::tests
