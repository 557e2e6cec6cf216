// Peers and ancestry: the elements that feed an element, and the bins that contain it.

#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "elements.h"
#include "errors.h"
#include "log_watch.h"
#include "replaced_function.h"

namespace {

// If true, a pad is unlinked when its peer is queried.
thread_local bool links_go_away = false;

// If set, called with each object on this thread before its parent is looked up.
thread_local void (*before_parent_is_asked)(GstObject *) = nullptr;

}  // namespace

using kel::tavren::tests::replaced_function;

extern "C" GstPad *gst_pad_get_peer(GstPad *pad) {
  static const auto get_peer = replaced_function(gst_pad_get_peer, __func__);
  return links_go_away ? nullptr : get_peer(pad);
}

extern "C" GstObject *gst_object_get_parent(GstObject *object) {
  static const auto get_parent = replaced_function(gst_object_get_parent, __func__);
  if (before_parent_is_asked != nullptr) before_parent_is_asked(object);
  return get_parent(object);
}

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

// --- Peers

class SinkPeer : public testing::Test {
protected:
  const Element source_ = make_element("fakesrc", "source");
  const Element queue_ = make_element("queue", "queue");
  const Element sink_ = make_element("fakesink", "sink");
  const Pad queue_src_ = static_pad(queue_, "src");
  const Pad sink_pad_ = static_pad(sink_, "sink");

  void link() const { ASSERT_TRUE(gst_element_link(queue_.get(), sink_.get())); }

  std::vector<guint> counts() const {
    return reference_counts(
        {source_.get(), queue_.get(), sink_.get(), queue_src_.get(), sink_pad_.get()});
  }
  const std::vector<guint> counts_before_ = counts();

  // Expects the same error from both operations, without any change.
  void expect_both(const Expected_Error &error, GstElement *element) const {
    const auto before = counts();
    expect_error(error, [&] { Media_Helper::get_element_sink_peer_pad_or_throw(element); });
    expect_error(error, [&] { Media_Helper::get_element_sink_peer_or_throw(element); });
    EXPECT_EQ(counts(), before);
  }
};

TEST_F(SinkPeer, ReportsABadElement) {
  for (GstElement *const bad :
       {static_cast<GstElement *>(nullptr), reinterpret_cast<GstElement *>(sink_pad_.get())})
    expect_both({TEC::NOT_AN_ELEMENT, {"element in get_element_sink_peer_pad_or_throw"}}, bad);
}

TEST_F(SinkPeer, ReportsAnElementWithoutASinkPad) {
  expect_both({TEC::STATIC_PAD_NOT_FOUND, {"sink", "source", ""}}, source_.get());
}

TEST_F(SinkPeer, ReportsAnUnlinkedSinkPad) {
  expect_both({TEC::SINK_PAD_NOT_LINKED}, sink_.get());
  link();
  gst_element_unlink(queue_.get(), sink_.get());
  expect_both({TEC::SINK_PAD_NOT_LINKED}, sink_.get());
}

TEST_F(SinkPeer, ReportsALinkThatIsRemovedMeanwhile) {
  link();
  links_go_away = true;
  expect_both({TEC::SINK_PAD_HAS_NO_PEER}, sink_.get());
  links_go_away = false;
}

TEST_F(SinkPeer, IsThePadWithOneNewReference) {
  link();
  {
    const Pad peer(Media_Helper::get_element_sink_peer_pad_or_throw(sink_.get()), false);
    EXPECT_EQ(peer, queue_src_);
    EXPECT_EQ(reference_count(queue_src_.get()), counts_before_[3] + 1);
    EXPECT_EQ(reference_count(sink_pad_.get()), counts_before_[4]);
  }
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(SinkPeer, IsTheElementWithOneNewReference) {
  link();
  {
    const Element peer(Media_Helper::get_element_sink_peer_or_throw(sink_.get()), false);
    EXPECT_EQ(peer, queue_);
    EXPECT_EQ(reference_count(queue_.get()), counts_before_[1] + 1);
    EXPECT_EQ(reference_count(queue_src_.get()), counts_before_[3]);
    EXPECT_EQ(reference_count(sink_pad_.get()), counts_before_[4]);
  }
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(SinkPeer, MayBeAPadWithoutAnElement) {
  const Pad lone = make_pad("lone", GST_PAD_SRC);
  ASSERT_EQ(gst_pad_link(lone.get(), sink_pad_.get()), GST_PAD_LINK_OK);
  const Pad peer(Media_Helper::get_element_sink_peer_pad_or_throw(sink_.get()), false);
  EXPECT_EQ(peer, lone);
  expect_error({TEC::NOT_AN_ELEMENT, {"pad parent element in get_element_sink_peer_or_throw"}},
               [&] { Media_Helper::get_element_sink_peer_or_throw(sink_.get()); });
  EXPECT_EQ(reference_count(lone.get()), 2u);  // this one and the handle above
  EXPECT_EQ(counts(), counts_before_);
}

// An element behind a bin's ghost pad is fed by that pad's internal pad.
TEST_F(SinkPeer, IsNotAnElementBehindAGhostPad) {
  const Element bin = make_bin("bin");
  add_to_bin(bin, sink_);
  GstPad *const ghost = gst_ghost_pad_new("sink", sink_pad_.get());
  ASSERT_TRUE(gst_element_add_pad(bin.get(), ghost));
  ASSERT_TRUE(gst_element_link(queue_.get(), bin.get()));

  const Element peer_of_bin(Media_Helper::get_element_sink_peer_or_throw(bin.get()), false);
  EXPECT_EQ(peer_of_bin, queue_);

  const Pad inner(Media_Helper::get_element_sink_peer_pad_or_throw(sink_.get()), false);
  EXPECT_EQ(GST_OBJECT_PARENT(inner.get()), GST_OBJECT(ghost));
  const auto before = reference_counts({inner.get(), ghost, sink_.get(), sink_pad_.get()});
  expect_error({TEC::NOT_AN_ELEMENT, {"pad parent element in get_element_sink_peer_or_throw"}},
               [&] { Media_Helper::get_element_sink_peer_or_throw(sink_.get()); });
  EXPECT_EQ(reference_counts({inner.get(), ghost, sink_.get(), sink_pad_.get()}), before);
}

// --- Ancestry

// An element in a bin in a pipeline, and another pipeline.
class Ancestry : public testing::Test {
protected:
  Ancestry() {
    add_to_bin(bin_, element_);
    add_to_bin(pipeline_, bin_);
  }

  std::vector<guint> counts() const {
    return reference_counts({element_.get(), bin_.get(), pipeline_.get(), other_.get()});
  }

  void expect_top_parent(const Element &element, const Element &top) const {
    const auto before = counts();
    Media_Helper::verify_element_top_parent(element.get(), top.get());
    EXPECT_EQ(counts(), before);
  }

  void expect_mismatch(int kind, const Element &element, const Element &top) const {
    const auto before = counts();
    expect_error({TEC::TOP_PARENT_MISMATCH, {}, kind},
                 [&] { Media_Helper::verify_element_top_parent(element.get(), top.get()); });
    EXPECT_EQ(counts(), before);
  }

  const Element element_ = make_element("identity");
  const Element bin_ = make_bin("bin");
  const Element pipeline_ = make_pipeline("pipeline");
  const Element other_ = make_pipeline("other");
  const Pad not_an_element_ = static_pad(element_, "src");
};

TEST_F(Ancestry, ReportsABadElement) {
  for (GstElement *const bad : {static_cast<GstElement *>(nullptr),
                                reinterpret_cast<GstElement *>(not_an_element_.get())}) {
    expect_error({TEC::NOT_AN_ELEMENT, {"element in get_most_parent"}},
                 [&] { Media_Helper::get_most_parent(bad); });
    expect_error({TEC::NOT_AN_ELEMENT, {"element in verify_element_top_parent"}},
                 [&] { Media_Helper::verify_element_top_parent(bad, pipeline_.get()); });
    expect_error({TEC::NOT_AN_ELEMENT, {"element in verify_element_top_parent"}},
                 [&] { Media_Helper::verify_element_top_parent(bad, nullptr); });
    expect_error({TEC::NOT_AN_ELEMENT, {"expected_top_parent in verify_element_top_parent"}},
                 [&] { Media_Helper::verify_element_top_parent(element_.get(), bad); });
  }
}

TEST_F(Ancestry, ReachesThePipeline) {
  const auto before = counts();
  for (const Element &element : {element_, bin_}) {
    const Element top(Media_Helper::get_most_parent(element.get()), false);
    EXPECT_EQ(top, pipeline_);
    EXPECT_EQ(reference_count(pipeline_.get()), before[2] + 1);
  }
  EXPECT_EQ(counts(), before);
}

TEST_F(Ancestry, ReachesTheOutermostBin) {
  const Element outermost = make_bin("outermost");
  const Element middle = make_bin("middle");
  const Element innermost = make_element("identity");
  add_to_bin(outermost, middle);
  add_to_bin(middle, innermost);
  const Element top(Media_Helper::get_most_parent(innermost.get()), false);
  EXPECT_EQ(top, outermost);
  EXPECT_EQ(reference_count(outermost.get()), 2u);
  EXPECT_EQ(reference_count(middle.get()), 2u);  // its bin's and the handle here
}

TEST_F(Ancestry, HasNoTopForAnElementWithoutAParent) {
  const Element alone = make_element("identity");
  EXPECT_EQ(Media_Helper::get_most_parent(pipeline_.get()), nullptr);
  EXPECT_EQ(Media_Helper::get_most_parent(alone.get()), nullptr);
  EXPECT_EQ(reference_count(alone.get()), 1u);
  EXPECT_EQ(reference_count(pipeline_.get()), 1u);
}

TEST_F(Ancestry, AcceptsThePipelineAsTheExpectedTop) {
  expect_top_parent(element_, pipeline_);
  expect_top_parent(bin_, pipeline_);
}

TEST_F(Ancestry, AcceptsAnElementWithoutAParentAsItsOwnTop) {
  expect_top_parent(pipeline_, pipeline_);
  const Element alone = make_element("identity");
  expect_top_parent(alone, alone);
}

TEST_F(Ancestry, ReportsAnotherTopForAnElementWithoutAParent) {
  expect_mismatch(1, pipeline_, other_);
  expect_mismatch(1, pipeline_, element_);
  expect_mismatch(1, make_element("identity"), pipeline_);
}

TEST_F(Ancestry, ReportsATopThatIsNotTheExpectedOne) {
  expect_mismatch(2, element_, other_);
  expect_mismatch(2, element_, bin_);
  expect_mismatch(2, element_, element_);
  expect_mismatch(2, bin_, bin_);
}

// A bin in a pipeline. All its owners release it immediately before its parent is looked up.
Element dying;
bool bin_was_held = false;

void let_go_of_bin(GstObject *object) {
  if (object != GST_OBJECT(dying.get())) return;
  const Element pipeline(GST_ELEMENT(GST_OBJECT_PARENT(object)));
  gst_bin_remove(GST_BIN(pipeline.get()), dying.get());
  bin_was_held = reference_count(dying.get()) == 2;  // this one and the walk's
  if (bin_was_held) dying.reset();
}

// Walks up from an element in the bin, while all owners of the bin release it. Returns the watch of
// the bin.
std::unique_ptr<Weak_Watch> walk_up_from_dying_bin(const Element &pipeline,
                                                   const std::function<void(GstElement *)> &walk) {
  dying = make_bin("dying");
  auto watch = std::make_unique<Weak_Watch>(dying.get());
  const Element element = make_element("identity");
  add_to_bin(dying, element);
  add_to_bin(pipeline, dying);
  bin_was_held = false;
  before_parent_is_asked = let_go_of_bin;
  walk(element.get());
  before_parent_is_asked = nullptr;
  EXPECT_TRUE(bin_was_held);
  dying.reset();
  return watch;
}

TEST_F(Ancestry, HoldsEachAncestorWhileGettingTheNext) {
  Element top;
  const auto watch = walk_up_from_dying_bin(pipeline_, [&top](GstElement *element) {
    top = Element(Media_Helper::get_most_parent(element), false);
  });
  ASSERT_FALSE(watch->gone());
  EXPECT_EQ(reference_count(top.get()), 1U);
  EXPECT_STREQ(GST_OBJECT_NAME(top.get()), "dying");
  top.reset();
  EXPECT_TRUE(watch->gone());
}

TEST_F(Ancestry, HoldsEachAncestorWhileVerifyingIt) {
  const auto watch = walk_up_from_dying_bin(pipeline_, [this](GstElement *element) {
    expect_error({TEC::TOP_PARENT_MISMATCH, {}, 2},
                 [&] { Media_Helper::verify_element_top_parent(element, pipeline_.get()); });
  });
  EXPECT_TRUE(watch->gone());
}

// A bin that is removed from its pipeline during the walk remains valid, because the walk keeps a
// reference.
TEST_F(Ancestry, MayChangeDuringTheWalk) {
  const auto before = counts();
  std::atomic<bool> done{false};
  std::thread mover([&] {
    while (!done) {
      gst_bin_remove(GST_BIN(pipeline_.get()), bin_.get());
      gst_bin_add(GST_BIN(pipeline_.get()), bin_.get());
    }
  });
  for (int i = 0; i < 5000; ++i) {
    const Element top(Media_Helper::get_most_parent(element_.get()), false);
    EXPECT_TRUE(top == bin_ || top == pipeline_);
  }
  done = true;
  mover.join();
  EXPECT_EQ(counts(), before);
}

}  // namespace
}  // namespace kel::tavren::tests
