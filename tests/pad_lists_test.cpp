// Lists of pads of an element.

#include <algorithm>
#include <string>
#include <vector>

#include "elements.h"
#include "errors.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;
using Pad_List = Media_Helper::Pad_List;

std::vector<std::string> names(const Pad_List &pads) {
  std::vector<std::string> result;
  for (const Pad &pad : pads)
    result.emplace_back(GST_OBJECT_NAME(pad.get()));
  return result;
}

using Names = std::vector<std::string>;

// The results of the iterators that a test provides. The iterator functions are plain functions,
// which use this global script.
struct Pad_Script {
  std::vector<GstPad *> pads;
  GstIteratorResult end = GST_ITERATOR_DONE;
  GstElement *asked_of = nullptr;
  int iterators_made = 0;
  int iterators_freed = 0;
};
Pad_Script *script = nullptr;

class GetElementPads : public testing::Test {
protected:
  GetElementPads() { script = &script_; }
  ~GetElementPads() override { script = nullptr; }

  Pad_Script script_;
};

struct Scripted_Iterator {
  GstIterator base;
  std::size_t position;
};

GstIteratorResult next_of_script(GstIterator *iterator, GValue *item) {
  std::size_t &position = reinterpret_cast<Scripted_Iterator *>(iterator)->position;
  if (position == script->pads.size()) return script->end;
  g_value_set_object(item, script->pads[position++]);
  return GST_ITERATOR_OK;
}

void resync_script(GstIterator *) {}
void free_script(GstIterator *) {
  ++script->iterators_freed;
}

GstIterator *iterate_script(GstElement *element) {
  static guint32 cookie = 0;
  script->asked_of = element;
  ++script->iterators_made;
  return gst_iterator_new(sizeof(Scripted_Iterator), GST_TYPE_PAD, nullptr, &cookie, nullptr,
                          next_of_script, nullptr, resync_script, free_script);
}

// Returns an iterator over the source pads of an element that calls a function with the element
// after each pad.
template <void (*Change)(GstElement *)>
GstIterator *iterate_while_changing(GstElement *element) {
  const GCompareFunc show_and_change = [](gconstpointer item, gconstpointer data) {
    const auto *const pad =
        static_cast<GstPad *>(g_value_get_object(static_cast<const GValue *>(item)));
    EXPECT_NE(pad, nullptr);
    Change(static_cast<GstElement *>(g_value_get_object(static_cast<const GValue *>(data))));
    return 0;
  };
  GValue changed = G_VALUE_INIT;
  g_value_init(&changed, GST_TYPE_ELEMENT);
  g_value_set_object(&changed, element);
  GstIterator *const iterator =
      gst_iterator_filter(gst_element_iterate_src_pads(element), show_and_change, &changed);
  g_value_unset(&changed);
  return iterator;
}

TEST_F(GetElementPads, ReportsABadElement) {
  const Pad pad = make_pad("src", GST_PAD_SRC);
  const Expected_Error bad_element{TEC::NOT_AN_ELEMENT,
                                   {"element in get_element_pads_with_iterator"}};
  for (GstElement *const bad : {as_element(nullptr), as_element(pad)}) {
    expect_error(bad_element, [&] { Media_Helper::get_element_pads(bad, iterate_script); });
    expect_error(bad_element, [&] { Media_Helper::get_element_src_pads(bad); });
    expect_error(bad_element, [&] { Media_Helper::get_element_sink_pads(bad); });
  }
  EXPECT_EQ(script_.iterators_made, 0);
  EXPECT_EQ(reference_count(pad.get()), 1u);
}

TEST_F(GetElementPads, ReturnsNothingForADirectionWithoutPads) {
  const Element source = make_element("fakesrc");
  const Element sink = make_element("fakesink");
  const Element tee = make_element("tee");
  const auto before = reference_counts({source.get(), sink.get(), tee.get()});
  EXPECT_TRUE(Media_Helper::get_element_sink_pads(source.get()).empty());
  EXPECT_TRUE(Media_Helper::get_element_src_pads(sink.get()).empty());
  EXPECT_TRUE(Media_Helper::get_element_src_pads(tee.get()).empty());
  EXPECT_EQ(reference_counts({source.get(), sink.get(), tee.get()}), before);
}

TEST_F(GetElementPads, FreesTheIteratorOfAnElementWithoutPads) {
  const Element element = make_bare_element("bare");
  EXPECT_TRUE(Media_Helper::get_element_pads(element.get(), iterate_script).empty());
  EXPECT_EQ(script_.asked_of, element.get());
  EXPECT_EQ(script_.iterators_made, 1);
  EXPECT_EQ(script_.iterators_freed, 1);
}

TEST_F(GetElementPads, SeparatesTheDirections) {
  const Element tee = make_element("tee");
  const Pad first = request_pad(tee.get(), "src_%u");
  const Pad second = request_pad(tee.get(), "src_%u");
  const Pad third = request_pad(tee.get(), "src_%u");
  EXPECT_EQ(Media_Helper::get_element_src_pads(tee.get()), (Pad_List{first, second, third}));
  EXPECT_EQ(Media_Helper::get_element_sink_pads(tee.get()), Pad_List{static_pad(tee, "sink")});
}

TEST_F(GetElementPads, KeepsTheOrderOfTheIterator) {
  const Element element = make_bare_element("bare");
  for (const char *const name : {"zulu", "alpha", "mike", "bravo"})
    add_pad(element, make_pad(name, GST_PAD_SINK));
  EXPECT_EQ(names(Media_Helper::get_element_sink_pads(element.get())),
            (Names{"zulu", "alpha", "mike", "bravo"}));
}

TEST_F(GetElementPads, AcceptsAnyIteratorFunction) {
  const Element queue = make_element("queue");
  Pad_List pads = Media_Helper::get_element_pads(queue.get(), gst_element_iterate_pads);
  Names all = names(pads);
  std::sort(all.begin(), all.end());
  EXPECT_EQ(all, (Names{"sink", "src"}));
}

TEST_F(GetElementPads, ListsGhostPads) {
  const Element bin = make_bin("bin");
  const Element sink = make_element("fakesink");
  add_to_bin(bin, sink);
  GstPad *const ghost = gst_ghost_pad_new("in", static_pad(sink, "sink").get());
  ASSERT_TRUE(gst_element_add_pad(bin.get(), ghost));
  EXPECT_EQ(Media_Helper::get_element_sink_pads(bin.get()), Pad_List{Pad(ghost)});
  EXPECT_TRUE(Media_Helper::get_element_src_pads(bin.get()).empty());
}

TEST_F(GetElementPads, NeitherRemovesDuplicatesNorSorts) {
  const Element element = make_bare_element("bare");
  const Pad first = add_pad(element, make_pad("first", GST_PAD_SRC));
  const Pad second = add_pad(element, make_pad("second", GST_PAD_SINK));
  const auto before = reference_counts({element.get(), first.get(), second.get()});
  script_.pads = {second.get(), first.get(), second.get()};
  {
    const Pad_List pads = Media_Helper::get_element_pads(element.get(), iterate_script);
    EXPECT_EQ(pads, (Pad_List{second, first, second}));
    EXPECT_EQ(script_.iterators_freed, 1);
    EXPECT_EQ(reference_count(first.get()), before[1] + 1);
    EXPECT_EQ(reference_count(second.get()), before[2] + 2);
  }
  EXPECT_EQ(reference_counts({element.get(), first.get(), second.get()}), before);
}

TEST_F(GetElementPads, HoldsOneReferencePerEntry) {
  const Element tee = make_element("tee");
  const Pad first = request_pad(tee.get(), "src_%u");
  const Pad second = request_pad(tee.get(), "src_%u");
  const auto before = reference_counts({tee.get(), first.get(), second.get()});
  {
    Pad_List pads = Media_Helper::get_element_src_pads(tee.get());
    ASSERT_EQ(pads.size(), 2u);
    EXPECT_EQ(reference_counts({tee.get(), first.get(), second.get()}),
              (std::vector<guint>{before[0], before[1] + 1, before[2] + 1}));
    pads.erase(pads.begin());
    EXPECT_EQ(reference_count(first.get()), before[1]);
    EXPECT_EQ(reference_count(second.get()), before[2] + 1);
  }
  EXPECT_EQ(reference_counts({tee.get(), first.get(), second.get()}), before);
}

TEST_F(GetElementPads, KeepsThePadsAliveAfterTheElementIsDestroyed) {
  Element queue = make_element("queue");
  const Weak_Watch queue_watch(queue.get());
  Pad_List pads = Media_Helper::get_element_sink_pads(queue.get());
  ASSERT_EQ(pads.size(), 1u);
  const Weak_Watch pad_watch(pads[0].get());

  queue.reset();
  EXPECT_TRUE(queue_watch.gone());
  ASSERT_FALSE(pad_watch.gone());
  EXPECT_EQ(reference_count(pads[0].get()), 1u);
  EXPECT_EQ(GST_OBJECT_PARENT(pads[0].get()), nullptr);
  EXPECT_EQ(names(pads), Names{"sink"});

  pads.clear();
  EXPECT_TRUE(pad_watch.gone());
}

TEST_F(GetElementPads, KeepsThePadsThatTheElementHasReleased) {
  const Element tee = make_element("tee");
  Pad branch = request_pad(tee.get(), "src_%u");
  Pad_List pads = Media_Helper::get_element_src_pads(tee.get());
  const Weak_Watch watch(branch.get());
  gst_element_release_request_pad(tee.get(), branch.get());
  branch.reset();
  ASSERT_FALSE(watch.gone());
  EXPECT_EQ(reference_count(pads[0].get()), 1u);
  pads.clear();
  EXPECT_TRUE(watch.gone());
}

void request_branch(GstElement *tee) {
  request_pad(tee, "src_%u");
}

void release_branch(GstElement *tee) {
  const Pad branch(gst_element_get_static_pad(tee, "src_1"), false);
  if (branch) gst_element_release_request_pad(tee, branch.get());
}

TEST_F(GetElementPads, KeepsThePadsListedBeforeAPadIsAdded) {
  const Element tee = make_element("tee");
  const Pad first = request_pad(tee.get(), "src_%u");
  const Pad second = request_pad(tee.get(), "src_%u");
  const auto before = reference_counts({tee.get(), first.get(), second.get()});
  EXPECT_EQ(Media_Helper::get_element_pads(tee.get(), iterate_while_changing<request_branch>),
            Pad_List{first});
  EXPECT_EQ(tee->numsrcpads, 3);
  EXPECT_EQ(reference_counts({tee.get(), first.get(), second.get()}), before);
}

TEST_F(GetElementPads, KeepsThePadsListedBeforeAPadIsRemoved) {
  const Element tee = make_element("tee");
  const Pad first = request_pad(tee.get(), "src_%u");
  const Pad second = request_pad(tee.get(), "src_%u");
  EXPECT_EQ(Media_Helper::get_element_pads(tee.get(), iterate_while_changing<release_branch>),
            Pad_List{first});
  EXPECT_EQ(tee->numsrcpads, 1);
  EXPECT_EQ(reference_count(second.get()), 1u);
}

TEST_F(GetElementPads, KeepsThePadsListedBeforeTheIteratorFails) {
  const Element element = make_bare_element("bare");
  const Pad pad = add_pad(element, make_pad("src", GST_PAD_SRC));
  script_.pads = {pad.get()};
  for (const GstIteratorResult end : {GST_ITERATOR_ERROR, GST_ITERATOR_RESYNC}) {
    script_.end = end;
    EXPECT_EQ(Media_Helper::get_element_pads(element.get(), iterate_script), Pad_List{pad});
  }
  EXPECT_EQ(script_.iterators_made, 2);
  EXPECT_EQ(script_.iterators_freed, 2);
  EXPECT_EQ(reference_count(pad.get()), 2u);
}

}  // namespace
}  // namespace kel::tavren::tests
