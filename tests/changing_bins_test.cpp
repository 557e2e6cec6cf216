// Searches of bins that change meanwhile.

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "bin_search.h"
#include "replaced_function.h"

namespace {

// If set, iterations over bins on this thread call it after the first element, with the bin.
thread_local void (*change_during_walk)(GstBin *) = nullptr;

// Shows every element of an iteration, and changes the bin once.
int show_and_change(gconstpointer, gconstpointer data) {
  const auto *const bin = static_cast<const GValue *>(data);
  if (void (*const change)(GstBin *) = change_during_walk; change != nullptr) {
    change_during_walk = nullptr;
    change(GST_BIN(g_value_get_object(bin)));
  }
  return 0;
}

}  // namespace

extern "C" GstIterator *gst_bin_iterate_recurse(GstBin *bin) {
  static const auto iterate =
      kel::tavren::tests::replaced_function(gst_bin_iterate_recurse, __func__);
  GstIterator *const iterator = iterate(bin);
  if (change_during_walk == nullptr) return iterator;
  GValue changed = G_VALUE_INIT;
  g_value_init(&changed, GST_TYPE_BIN);
  g_value_set_object(&changed, bin);
  GstIterator *const changing = gst_iterator_filter(iterator, show_and_change, &changed);
  g_value_unset(&changed);
  return changing;
}

namespace kel::tavren::tests {
namespace {

void add_appsink(GstBin *bin) {
  ASSERT_TRUE(gst_bin_add(bin, make_appsink("audio/x-raw").get()));
}

void remove_appsinks(GstBin *bin) {
  for (const Element &appsink : walk(Element(GST_ELEMENT(bin))))
    ASSERT_TRUE(gst_bin_remove(bin, appsink.get()));
}

class ChangingBin : public Bin_Search_Test {
protected:
  ChangingBin() {
    for (int i = 0; i < 3; ++i)
      add_to_bin(bin_, make_appsink("video/x-raw"));
  }
  ~ChangingBin() override { change_during_walk = nullptr; }
};

TEST_F(ChangingBin, IsSearchedAgainAfterAnElementIsAdded) {
  change_during_walk = add_appsink;
  const Element found = find_appsink(bin_, "audio/x-raw");
  EXPECT_EQ(change_during_walk, nullptr);
  ASSERT_TRUE(found);
  EXPECT_EQ(GST_OBJECT_PARENT(found.get()), GST_OBJECT(bin_.get()));
  EXPECT_EQ(reference_count(found.get()), 2u);
  EXPECT_EQ(reference_count(bin_.get()), 1u);
}

TEST_F(ChangingBin, IsCheckedForATypeAgainAfterAnElementIsAdded) {
  change_during_walk = [](GstBin *bin) { gst_bin_add(bin, make_element("tee").get()); };
  EXPECT_TRUE(Media_Helper::bin_has_element_type(as_bin(bin_), tee_type_));
  EXPECT_EQ(change_during_walk, nullptr);
  EXPECT_EQ(reference_count(bin_.get()), 1u);
}

TEST_F(ChangingBin, IsSearchedAgainAfterElementsAreRemoved) {
  change_during_walk = remove_appsinks;
  EXPECT_FALSE(find_appsink(bin_, "audio/x-raw"));
  EXPECT_EQ(change_during_walk, nullptr);
  EXPECT_EQ(GST_BIN_NUMCHILDREN(bin_.get()), 0);
  EXPECT_EQ(reference_count(bin_.get()), 1u);
}

TEST_F(ChangingBin, IsListedOnlyUpToTheAdditionOfAnElement) {
  const Elements before = walk(bin_);
  const std::vector<guint> counts = reference_counts({before[0].get(), before[1].get()});
  change_during_walk = add_appsink;
  EXPECT_EQ(Media_Helper::find_all_appsinks(as_bin(bin_)), Elements{before[0]});
  EXPECT_EQ(change_during_walk, nullptr);
  EXPECT_EQ(GST_BIN_NUMCHILDREN(bin_.get()), 4);
  EXPECT_EQ(reference_counts({before[0].get(), before[1].get()}), counts);
}

TEST_F(ChangingBin, IsListedOnlyUpToTheRemovalOfElements) {
  change_during_walk = remove_appsinks;
  const Elements found = Media_Helper::find_all_appsinks(as_bin(bin_));
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(reference_count(found[0].get()), 1u);
  EXPECT_EQ(GST_BIN_NUMCHILDREN(bin_.get()), 0);
}

// The peer of a tee may be any element, even one that changes the bin during a caps query.
int caps_questions = 0;

gboolean change_bin_and_answer(GstPad *pad, GstObject *parent, GstQuery *query) {
  if (GST_QUERY_TYPE(query) == GST_QUERY_CAPS && ++caps_questions == 1) {
    const Element bin(GST_ELEMENT(gst_object_get_parent(parent)), false);
    add_appsink(as_bin(bin));
  }
  return gst_pad_query_default(pad, parent, query);
}

TEST_F(ChangingBin, MayBeChangedByAnElementThatIsQueried) {
  const Element source = add_to_bin(bin_, make_element("videotestsrc"));
  const Element tee = add_to_bin(bin_, make_element("tee"));
  ASSERT_TRUE(gst_element_link(source.get(), tee.get()));
  gst_pad_set_query_function(static_pad(source, "src").get(), change_bin_and_answer);
  caps_questions = 0;
  EXPECT_FALSE(find_tee(bin_, "audio/x-raw"));
  EXPECT_EQ(caps_questions, 2);
  EXPECT_EQ(walk(bin_).size(), 4u);
}

TEST_F(ChangingBin, IsSearchedWhileAnotherThreadChangesIt) {
  const Element tee = add_to_bin(bin_, make_element("tee"));
  const Elements kept = walk(bin_);
  std::atomic<bool> done{false};
  std::thread changer([&] {
    while (!done) {
      const Element appsink = add_to_bin(bin_, make_appsink("audio/x-raw"));
      std::this_thread::sleep_for(std::chrono::microseconds(50));
      gst_bin_remove(as_bin(bin_), appsink.get());
      std::this_thread::sleep_for(std::chrono::microseconds(50));
    }
  });
  for (int i = 0; i < 1000; ++i) {
    EXPECT_EQ(find_tee(bin_, "ANY"), tee);
    EXPECT_TRUE(find_appsink(bin_, "video/x-raw"));
    EXPECT_TRUE(Media_Helper::bin_has_element_type(as_bin(bin_), tee_type_));
    EXPECT_FALSE(Media_Helper::bin_has_element_type(as_bin(bin_), GST_TYPE_BIN));
    EXPECT_LE(Media_Helper::find_all_appsinks(as_bin(bin_)).size(), kept.size() + 1);
  }
  done = true;
  changer.join();
  EXPECT_EQ(walk(bin_), kept);
  for (const Element &appsink : kept)
    EXPECT_EQ(reference_count(appsink.get()), 2u);  // the bin's and the list's
  EXPECT_EQ(reference_count(bin_.get()), 1u);
}

}  // namespace
}  // namespace kel::tavren::tests
