// Many threads at the same time: on separate objects, on shared objects, and on objects that change
// concurrently.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "depayloader_references.h"
#include "elements.h"
#include "errors.h"
#include "log_watch.h"
#include "operations.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

constexpr unsigned thread_count = 16;

// Collects errors from threads, and reports them at the end.
class Failures {
public:
  ~Failures() {
    for (const std::string &failure : failures_)
      ADD_FAILURE() << failure;
  }

  void note(const std::string &failure) {
    if (failure.empty()) return;
    const std::lock_guard lock(mutex_);
    failures_.insert(failure);
  }

private:
  std::mutex mutex_;
  std::set<std::string> failures_;
};

class Expected_Warnings {
public:
  Expected_Warnings() {
    for (const std::string &text : expected_warnings)
      logs_.push_back(std::make_unique<Expected_Log>(text));
  }

private:
  std::vector<std::unique_ptr<Expected_Log>> logs_;
};

// Runs a function on all threads, which start simultaneously, and waits for them.
void on_all_threads(const std::function<void(unsigned thread)> &work) {
  std::promise<void> start;
  const std::shared_future<void> started = start.get_future().share();
  std::vector<std::thread> threads;
  for (unsigned thread = 0; thread < thread_count; ++thread)
    threads.emplace_back([thread, started, &work] {
      started.wait();
      work(thread);
    });
  start.set_value();
  for (std::thread &thread : threads)
    thread.join();
}

// Returns each operation once for all n. Each thread begins with a different one.
const Operation &nth_operation(std::size_t n, unsigned thread) {
  return operations[(n + thread * operations.size() / thread_count) % operations.size()];
}

// Destroys a scene and describes the objects that outlive it.
std::string take_down(std::unique_ptr<Scene> scene) {
  std::vector<std::unique_ptr<Weak_Watch>> watches;
  for (const gpointer object : scene->objects())
    watches.push_back(std::make_unique<Weak_Watch>(object));
  scene.reset();
  for (std::size_t i = 0; i < watches.size(); ++i)
    if (!watches[i]->gone()) return "object " + std::to_string(i) + " outlives its scene";
  return {};
}

// Runs each operation once on this thread's own objects. Returns the first error.
std::string do_each_once(unsigned thread, bool rare_ones) {
  auto scene = std::make_unique<Scene>();
  for (std::size_t i = 0; i < operations.size(); ++i) {
    const Operation &operation = nth_operation(i, thread);
    if (operation.use == Operation::RARE && !rare_ones) continue;
    std::string wrong = unexpected_behaviour(operation, *scene);
    if (!wrong.empty()) return wrong;
    const std::string changes = scene->changed_counts();
    if (!changes.empty()) return operation.name + (": " + changes);
  }
  return take_down(std::move(scene));
}

// Returns the references to the factories that the operations use, except the depayloaders', which
// grow.
std::map<std::string, guint> factory_counts() {
  std::map<std::string, guint> counts;
  for (const char *const name : {"appsink", "bin", "capsfilter", "decodebin", "fakesink", "fakesrc",
                                 "filesrc", "identity", "multiqueue", "pipeline", "queue", "tee"})
    counts[name] = Depayloader_References::count(name);
  return counts;
}

// Running all operations once selects proxy elements for mu-law, which is tried third, and for caps
// that match none.
void expect_depayloaders_kept(const Depayloader_References &references, guint rounds) {
  for (std::size_t i = 0; i < std::size(depayloaders); ++i)
    EXPECT_EQ(Depayloader_References::count(depayloaders[i]),
              references.before(depayloaders[i]) + rounds * (i < 3 ? 2 : 1))
        << depayloaders[i];
}

TEST(Concurrency, AllowsAllOperationsOnSeparateObjects) {
  constexpr guint rounds = 10;
  const Expected_Warnings warnings;
  const Depayloader_References references;
  // Loads the plugins and creates the classes, which take references once.
  ASSERT_EQ(do_each_once(0, true), "");
  const std::map<std::string, guint> factories = factory_counts();
  {
    Failures failures;
    on_all_threads([&failures](unsigned thread) {
      for (guint round = 0; round < rounds; ++round)
        failures.note(do_each_once(thread, round == 0));
    });
  }
  EXPECT_EQ(factory_counts(), factories);
  expect_depayloaders_kept(references, 1 + thread_count * rounds);
}

TEST(Concurrency, AllowsReadingOperationsOnSharedObjects) {
  constexpr guint rounds = 100;
  const Depayloader_References references;
  auto scene = std::make_unique<Scene>();
  const std::map<std::string, guint> factories = factory_counts();
  {
    Failures failures;
    on_all_threads([&failures, &scene](unsigned thread) {
      for (std::size_t i = 0; i < rounds * operations.size(); ++i) {
        const Operation &operation = nth_operation(i, thread);
        if (operation.use == Operation::SHARED)
          failures.note(unexpected_behaviour(operation, *scene));
      }
    });
  }
  EXPECT_EQ(scene->changed_counts(), "");
  EXPECT_EQ(take_down(std::move(scene)), "");
  EXPECT_EQ(factory_counts(), factories);
  expect_depayloaders_kept(references, thread_count * rounds);
}

// Makes a change repeatedly in a separate thread.
class Changes {
public:
  explicit Changes(const std::function<void()> &change)
      : thread_([this, change] {
          for (; !stop_; ++made_)
            change();
        }) {}
  ~Changes() {
    stop_ = true;
    thread_.join();
  }
  Changes(const Changes &) = delete;
  Changes &operator=(const Changes &) = delete;

  unsigned made() const { return made_; }

private:
  std::atomic<bool> stop_ = false;
  std::atomic<unsigned> made_ = 0;
  std::thread thread_;
};

// Calls each function repeatedly, for some time and until changes have been completed during ten
// calls. If only one processor is available for both threads, this requires several context
// switches.
void look_while_changing(const Changes &changes, const std::vector<std::function<void()>> &looks) {
  using Clock = std::chrono::steady_clock;
  for (const std::function<void()> &look : looks) {
    const Clock::time_point start = Clock::now();
    int overlaps = 0;
    while (Clock::now() - start < std::chrono::milliseconds(200) || overlaps < 10) {
      ASSERT_TRUE(Clock::now() - start < std::chrono::seconds(30))
          << "no changes were made in time";
      const unsigned before = changes.made();
      look();
      if (changes.made() != before) ++overlaps;
    }
  }
}

// Counts the elements that have been created and destroyed.
struct Passing {
  std::atomic<int> made = 0;
  std::atomic<int> gone = 0;

  Element make(const char *factory, const char *name) {
    ++made;
    Element element = make_element(factory, name);
    g_object_weak_ref(
        G_OBJECT(element.get()),
        [](gpointer passing, GObject *) { ++static_cast<Passing *>(passing)->gone; }, this);
    return element;
  }
};

void set_caps(const Element &appsink, const Caps &caps) {
  g_object_set(appsink.get(), "caps", caps.get(), nullptr);
}

// Adds an appsink, a tee and a bin with an appsink to a bin and removes them again.
void pass_through(Passing &passing, GstBin *bin, const Caps &caps) {
  const Element appsink = passing.make("appsink", "passing");
  const Element tee = passing.make("tee", nullptr);
  const Element inner = passing.make("bin", nullptr);
  const Element inner_appsink = passing.make("appsink", nullptr);
  set_caps(appsink, caps);
  set_caps(inner_appsink, caps);
  gst_bin_add(GST_BIN_CAST(inner.get()), inner_appsink.get());
  for (const Element &element : {appsink, tee, inner})
    gst_bin_add(bin, element.get());
  for (const Element &element : {appsink, tee, inner})
    gst_bin_remove(bin, element.get());
}

// Takes ownership of the result of a search. It may be the only reference.
Element found(GstElement *element) {
  return Element(element, false);
}

void expect_passing_or_error(GstBin *bin) {
  try {
    const Element passing = found(Media_Helper::gst_bin_get_by_name_or_throw(bin, "passing"));
    EXPECT_STREQ(GST_OBJECT_NAME(passing.get()), "passing");
  } catch (const Backend_Error<std::runtime_error> &error) {
    EXPECT_EQ(error.code(), TEC::ELEMENT_NOT_IN_BIN);
    EXPECT_EQ(error.what(), text_of({TEC::ELEMENT_NOT_IN_BIN, {"passing"}}));
  }
}

template <typename Handle>
void expect_distinct(const std::vector<Handle> &handles) {
  EXPECT_EQ(std::set<Handle>(handles.begin(), handles.end()).size(), handles.size());
}

// The framework restarts a search when the bin changes, so elements that remain in the bin are
// found. It does not restart an iteration, so a list may lack any element.
TEST(Concurrency, AllowsSearchesOfABinThatChanges) {
  const Scene scene;
  const unsigned long long tee_type = Media_Helper::get_element_type("tee");
  Passing passing;
  {
    const Changes changes([&] { pass_through(passing, scene.recording_bin(), scene.jpeg); });
    look_while_changing(
        changes,
        {[&] {
           EXPECT_EQ(found(Media_Helper::find_element_with_caps_and_type(scene.bin(), tee_type,
                                                                         scene.jpeg.get())),
                     scene.split);
           EXPECT_EQ(found(Media_Helper::find_tee_with_caps(scene.bin(), scene.jpeg.get())),
                     scene.split);
         },
         [&] {
           EXPECT_EQ(found(Media_Helper::find_appsink_with_caps(scene.bin(), scene.raw.get())),
                     scene.snapshots);
         },
         [&] {
           const Element appsink =
               found(Media_Helper::find_appsink_with_caps(scene.bin(), scene.jpeg.get()));
           if (!appsink) return;
           EXPECT_EQ(G_OBJECT_TYPE(appsink.get()), G_OBJECT_TYPE(scene.snapshots.get()));
           EXPECT_NE(appsink, scene.snapshots);
         },
         [&] {
           const std::vector<Element> appsinks = Media_Helper::find_all_appsinks(scene.bin());
           for (const Element &appsink : appsinks)
             EXPECT_EQ(G_OBJECT_TYPE(appsink.get()), G_OBJECT_TYPE(scene.snapshots.get()));
           EXPECT_LE(appsinks.size(), 3U);
           expect_distinct(appsinks);
         },
         [&] { EXPECT_TRUE(Media_Helper::bin_has_element_type(scene.bin(), tee_type)); },
         [&] {
           EXPECT_EQ(found(Media_Helper::gst_bin_get_by_name_or_throw(scene.bin(), "deep")),
                     scene.deep);
           expect_passing_or_error(scene.bin());
         }});
  }
  EXPECT_EQ(Media_Helper::find_all_appsinks(scene.bin()), std::vector<Element>{scene.snapshots});
  EXPECT_EQ(scene.changed_counts(), "");
  EXPECT_EQ(passing.gone, passing.made);
}

void expect_pads(const Media_Helper::Pad_List &pads, GstPadDirection direction) {
  for (const Pad &pad : pads) {
    EXPECT_TRUE(GST_IS_PAD(pad.get()));
    EXPECT_EQ(gst_pad_get_direction(pad.get()), direction);
  }
  expect_distinct(pads);
}

// All pads of an element belong to one list for this purpose: a change of its source pads also ends
// an iteration over its sink pads.
TEST(Concurrency, AllowsListsOfPadsThatChange) {
  const Scene scene;
  GstElement *const tee = scene.split.get();
  const Pad tee_sink = static_pad(scene.split, "sink");
  {
    const Changes changes([tee] {
      const Pad pads[] = {request_pad(tee, "src_%u"), request_pad(tee, "src_%u")};
      for (const Pad &pad : pads)
        gst_element_release_request_pad(tee, pad.get());
    });
    look_while_changing(
        changes, {[tee] {
                    const Media_Helper::Pad_List pads = Media_Helper::get_element_src_pads(tee);
                    expect_pads(pads, GST_PAD_SRC);
                    EXPECT_LE(pads.size(), 3U);
                  },
                  [tee] {
                    const Media_Helper::Pad_List pads = Media_Helper::get_element_sink_pads(tee);
                    expect_pads(pads, GST_PAD_SINK);
                    EXPECT_LE(pads.size(), 1U);
                  },
                  [tee] {
                    const Media_Helper::Pad_List pads =
                        Media_Helper::get_element_pads(tee, gst_element_iterate_pads);
                    expect_distinct(pads);
                    EXPECT_LE(pads.size(), 4U);
                  }});
  }
  EXPECT_EQ(Media_Helper::get_element_src_pads(tee), Media_Helper::Pad_List{scene.split_src});
  EXPECT_EQ(Media_Helper::get_element_sink_pads(tee), Media_Helper::Pad_List{tee_sink});
  EXPECT_EQ(reference_count(tee_sink.get()), 2U);
  EXPECT_EQ(scene.changed_counts(), "");
}

}  // namespace
}  // namespace kel::tavren::tests
