// Walks and texts that run out of memory: each of their allocations fails in turn, and nothing is
// lost, of the objects as little as of the texts.

#include <cstdlib>
#include <new>
#include <vector>

#include "errors.h"
#include "log_watch.h"
#include "references.h"

namespace {

// The allocations of this thread while they are watched, and which of them fails.
struct Allocations {
  bool watched = false;
  int seen = 0;
  int failing = 0;
};
thread_local Allocations allocations;

void *allocate(std::size_t size) noexcept {
  if (allocations.watched && ++allocations.seen == allocations.failing) return nullptr;
  return std::malloc(size != 0 ? size : 1);
}

void *allocate_or_throw(std::size_t size) {
  void *const memory = allocate(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

}  // namespace

// All of them, so that each delete meets the new that it belongs to.
void *operator new(std::size_t size) {
  return allocate_or_throw(size);
}
void *operator new[](std::size_t size) {
  return allocate_or_throw(size);
}
void *operator new(std::size_t size, const std::nothrow_t &) noexcept {
  return allocate(size);
}
void *operator new[](std::size_t size, const std::nothrow_t &) noexcept {
  return allocate(size);
}
void operator delete(void *memory) noexcept {
  std::free(memory);
}
void operator delete[](void *memory) noexcept {
  std::free(memory);
}
void operator delete(void *memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete[](void *memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete(void *memory, const std::nothrow_t &) noexcept {
  std::free(memory);
}
void operator delete[](void *memory, const std::nothrow_t &) noexcept {
  std::free(memory);
}

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

// Whether a call ends in std::bad_alloc when one of its allocations fails.
template <typename Call>
bool runs_out_of_memory(Call call, int failing_allocation) {
  allocations = {true, 0, failing_allocation};
  try {
    call();
  } catch (const std::bad_alloc &) {
    allocations = {};
    return true;
  }
  allocations = {};
  return false;
}

// Lets each allocation of a call fail, one at a time, until none is left to fail. A walk over
// several objects allocates for the text of its argument check, for the first object that it keeps,
// and again when it already keeps some: all three must have failed.
template <typename Call>
void expect_nothing_lost(const std::vector<gpointer> &objects, Call call) {
  constexpr int LIMIT = 100;
  const auto before = reference_counts(objects);
  int failing = 1;
  while (failing < LIMIT && runs_out_of_memory(call, failing)) {
    EXPECT_EQ(reference_counts(objects), before) << "allocation " << failing << " failed";
    ++failing;
  }
  EXPECT_GT(failing, 3);
  EXPECT_LT(failing, LIMIT);
  EXPECT_EQ(reference_counts(objects), before);
}

// An iterator holds the element whose pads it shows: one that was not freed would show in the
// element's count.
TEST(Walk_Without_Memory, LosesNoPads) {
  const Element tee = make_element("tee");
  const Element funnel = make_element("funnel");
  std::vector<gpointer> objects{tee.get(), funnel.get()};
  std::vector<Pad> pads;
  for (int i = 0; i < 6; ++i)
    for (GstPad *const pad : {gst_element_request_pad_simple(tee.get(), "src_%u"),
                              gst_element_request_pad_simple(funnel.get(), "sink_%u")}) {
      pads.emplace_back(pad, false);
      objects.push_back(pad);
    }

  std::size_t listed = 0;
  expect_nothing_lost(objects,
                      [&] { listed = Media_Helper::get_element_src_pads(tee.get()).size(); });
  EXPECT_EQ(listed, 6u);
  expect_nothing_lost(objects,
                      [&] { listed = Media_Helper::get_element_sink_pads(funnel.get()).size(); });
  EXPECT_EQ(listed, 6u);
  expect_nothing_lost(objects, [&] {
    listed = Media_Helper::get_element_pads(tee.get(), gst_element_iterate_pads).size();
  });
  EXPECT_EQ(listed, 7u);
}

// The same holds for the bins that a walk is in.
TEST(Walk_Without_Memory, LosesNoAppsinks) {
  const Element bin(GST_ELEMENT_CAST(gst_object_ref_sink(gst_bin_new("bin"))), false);
  GstElement *const nested = gst_bin_new("nested");
  ASSERT_TRUE(gst_bin_add(GST_BIN(bin.get()), nested));
  GstElementFactory *const factory = gst_element_factory_find("appsink");
  std::vector<gpointer> objects{bin.get(), nested, factory};
  for (int i = 0; i < 3; ++i)
    for (GstElement *const parent : {bin.get(), nested})
      for (const char *const kind : {"appsink", "identity"}) {
        GstElement *const element = gst_element_factory_make(kind, nullptr);
        ASSERT_TRUE(gst_bin_add(GST_BIN(parent), element));
        objects.push_back(element);
      }

  std::size_t listed = 0;
  expect_nothing_lost(objects,
                      [&] { listed = Media_Helper::find_all_appsinks(GST_BIN(bin.get())).size(); });
  EXPECT_EQ(listed, 6u);
  gst_object_unref(factory);
}

// A text is made whole or not at all.
template <typename Make>
void expect_whole_or_none(Make make) {
  constexpr int LIMIT = 200;
  const std::string whole = make();
  std::string text;
  int failing = 1;
  while (failing < LIMIT && runs_out_of_memory([&] { text = make(); }, failing)) {
    EXPECT_EQ(text, "") << "allocation " << failing << " failed";
    ++failing;
  }
  EXPECT_GT(failing, 1);
  EXPECT_LT(failing, LIMIT);
  EXPECT_EQ(text, whole);
}

TEST(Text_Without_Memory, IsWholeOrNotAtAll) {
  const Element queue = make_element("queue", "a_queue_with_a_name_of_some_length");
  GstSegment segment;
  gst_segment_init(&segment, GST_FORMAT_TIME);
  expect_whole_or_none([] { return Media_Helper::gst_time_to_string(3723000000001); });
  expect_whole_or_none([&] { return Media_Helper::gst_segment_to_string(&segment); });
  expect_whole_or_none([&] { return Media_Helper::generate_queue_stats_report(queue.get()); });
}

TEST(Text_Without_Memory, IsWholeInAnErrorOrTheErrorIsAnother) {
  const Element queue = make_element("queue", "a_queue_with_a_name_of_some_length");
  const guint before = reference_count(queue.get());
  expect_whole_or_none([&]() -> std::string {
    try {
      Media_Helper::gst_element_get_static_pad_or_throw(queue.get(), "no_pad_has_such_a_long_name");
    } catch (const Backend_Error<std::runtime_error> &error) {
      return error.what();
    }
    return {};
  });
  EXPECT_EQ(reference_count(queue.get()), before);
}

}  // namespace
}  // namespace kel::tavren::tests
