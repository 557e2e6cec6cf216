// Pads and links: lists of pads, quiet and checked links, chains, static pads, probes.

#include <algorithm>
#include <atomic>
#include <ostream>
#include <string>
#include <vector>

#include "errors.h"
#include "log_watch.h"
#include "references.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;
using Pad_List = Media_Helper::Pad_List;

constexpr GstElement *END = nullptr;

// Creates an element without a factory and without pads. Tests add the pads that they need.
Element make_bare_element(const char *name) {
  static const GType type =
      g_type_register_static_simple(GST_TYPE_ELEMENT, "TestBareElement", sizeof(GstElementClass),
                                    nullptr, sizeof(GstElement), nullptr, GTypeFlags{});
  auto *const element = static_cast<GstElement *>(g_object_new(type, "name", name, nullptr));
  return Element(GST_ELEMENT_CAST(gst_object_ref_sink(element)), false);
}

Pad make_pad_of_caps(const char *name, GstPadDirection direction, const char *caps) {
  GstPadTemplate *const pad_template =
      gst_pad_template_new(name, direction, GST_PAD_ALWAYS, make_caps(caps).get());
  gst_object_ref_sink(pad_template);
  GstPad *const pad = gst_pad_new_from_template(pad_template, name);
  gst_object_unref(pad_template);
  return Pad(GST_PAD_CAST(gst_object_ref_sink(pad)), false);
}

Pad add_pad(const Element &element, const Pad &pad) {
  EXPECT_TRUE(gst_element_add_pad(element.get(), pad.get()));
  return pad;
}

void add_to_bin(const Element &bin, const Element &element) {
  ASSERT_TRUE(gst_bin_add(GST_BIN(bin.get()), element.get()));
}

GstElement *as_element(const Pad &pad) {
  return reinterpret_cast<GstElement *>(pad.get());
}
GstPad *as_pad(const Element &element) {
  return reinterpret_cast<GstPad *>(element.get());
}

bool linked(const Pad &src, const Pad &sink) {
  const Pad peer(gst_pad_get_peer(src.get()), false);
  const Pad peer_of_peer(gst_pad_get_peer(sink.get()), false);
  return peer == sink && peer_of_peer == src;
}

bool linked(const Element &upstream, const Element &downstream) {
  return linked(static_pad(upstream, "src"), static_pad(downstream, "sink"));
}

bool unlinked(const Pad &pad) {
  return !gst_pad_is_linked(pad.get());
}

std::vector<std::string> names(const Pad_List &pads) {
  std::vector<std::string> result;
  for (const Pad &pad : pads)
    result.emplace_back(GST_OBJECT_NAME(pad.get()));
  return result;
}

using Names = std::vector<std::string>;

// --- Lists of pads

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
  const std::string text = "element in get_element_pads_with_iterator is not a GstElement *.";
  for (GstElement *const bad : {END, as_element(pad)}) {
    expect_error(0x15160, text, [&] { Media_Helper::get_element_pads(bad, iterate_script); });
    expect_error(0x15160, text, [&] { Media_Helper::get_element_src_pads(bad); });
    expect_error(0x15160, text, [&] { Media_Helper::get_element_sink_pads(bad); });
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

// --- Quiet links

// A source pad and an element that are compatible, both without a parent.
class UncheckedLink : public testing::Test {
protected:
  const Element source_ = make_element("fakesrc");
  const Element sink_ = make_element("fakesink");
  const Pad src_pad_ = static_pad(source_, "src");
  const Pad sink_pad_ = static_pad(sink_, "sink");

  std::vector<guint> counts() const {
    return reference_counts({source_.get(), sink_.get(), src_pad_.get(), sink_pad_.get()});
  }
  const std::vector<guint> counts_before_ = counts();
};

TEST_F(UncheckedLink, LinksAPadToAnElement) {
  EXPECT_TRUE(Media_Helper::link_pad_to_element(src_pad_.get(), sink_.get()));
  EXPECT_TRUE(linked(src_pad_, sink_pad_));
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(UncheckedLink, LinksAnElementToAPad) {
  EXPECT_TRUE(Media_Helper::link_element_to_pad(source_.get(), sink_pad_.get()));
  EXPECT_TRUE(linked(src_pad_, sink_pad_));
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(UncheckedLink, UnlinksAPadFromAnElement) {
  ASSERT_EQ(gst_pad_link(src_pad_.get(), sink_pad_.get()), GST_PAD_LINK_OK);
  EXPECT_TRUE(Media_Helper::unlink_pad_from_element(src_pad_.get(), sink_.get()));
  EXPECT_TRUE(unlinked(src_pad_));
  EXPECT_TRUE(unlinked(sink_pad_));
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(UncheckedLink, ReturnsFalseForNull) {
  EXPECT_FALSE(Media_Helper::link_pad_to_element(nullptr, sink_.get()));
  EXPECT_FALSE(Media_Helper::link_pad_to_element(src_pad_.get(), nullptr));
  EXPECT_FALSE(Media_Helper::link_pad_to_element(nullptr, nullptr));
  EXPECT_FALSE(Media_Helper::link_element_to_pad(nullptr, sink_pad_.get()));
  EXPECT_FALSE(Media_Helper::link_element_to_pad(source_.get(), nullptr));
  EXPECT_FALSE(Media_Helper::link_element_to_pad(nullptr, nullptr));
  EXPECT_TRUE(unlinked(src_pad_));
  EXPECT_TRUE(unlinked(sink_pad_));

  ASSERT_EQ(gst_pad_link(src_pad_.get(), sink_pad_.get()), GST_PAD_LINK_OK);
  EXPECT_FALSE(Media_Helper::unlink_pad_from_element(nullptr, sink_.get()));
  EXPECT_FALSE(Media_Helper::unlink_pad_from_element(src_pad_.get(), nullptr));
  EXPECT_FALSE(Media_Helper::unlink_pad_from_element(nullptr, nullptr));
  EXPECT_TRUE(linked(src_pad_, sink_pad_));
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(UncheckedLink, ReturnsFalseForAnElementWithoutThePad) {
  EXPECT_FALSE(Media_Helper::link_pad_to_element(src_pad_.get(), source_.get()));
  EXPECT_FALSE(Media_Helper::unlink_pad_from_element(src_pad_.get(), source_.get()));
  EXPECT_FALSE(Media_Helper::link_element_to_pad(sink_.get(), sink_pad_.get()));
  EXPECT_TRUE(unlinked(src_pad_));
  EXPECT_TRUE(unlinked(sink_pad_));
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(UncheckedLink, ReturnsFalseForIncompatibleFormats) {
  const Element video = make_element("videotestsrc");
  const Element audio = make_element("audioconvert");
  const Pad video_pad = static_pad(video, "src");
  const Pad audio_pad = static_pad(audio, "sink");
  const auto before = reference_counts({video.get(), audio.get(), video_pad.get()});
  ASSERT_EQ(gst_pad_link(video_pad.get(), audio_pad.get()), GST_PAD_LINK_NOFORMAT);
  EXPECT_FALSE(Media_Helper::link_pad_to_element(video_pad.get(), audio.get()));
  EXPECT_FALSE(Media_Helper::link_element_to_pad(video.get(), audio_pad.get()));
  EXPECT_TRUE(unlinked(video_pad));
  EXPECT_TRUE(unlinked(audio_pad));
  EXPECT_EQ(reference_counts({video.get(), audio.get(), video_pad.get()}), before);
}

TEST_F(UncheckedLink, ReturnsFalseForALinkedPad) {
  ASSERT_EQ(gst_pad_link(src_pad_.get(), sink_pad_.get()), GST_PAD_LINK_OK);
  EXPECT_FALSE(Media_Helper::link_pad_to_element(src_pad_.get(), sink_.get()));
  EXPECT_FALSE(Media_Helper::link_element_to_pad(source_.get(), sink_pad_.get()));
  EXPECT_TRUE(linked(src_pad_, sink_pad_));
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(UncheckedLink, ReturnsFalseForPadsOfTheWrongDirection) {
  const Expected_Log log("gst_pad_link_full: assertion");
  EXPECT_FALSE(Media_Helper::link_pad_to_element(sink_pad_.get(), sink_.get()));
  EXPECT_FALSE(Media_Helper::link_element_to_pad(source_.get(), src_pad_.get()));
  EXPECT_EQ(log.count(), 2);
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(UncheckedLink, LeavesAPadOfTheWrongTypeToTheFramework) {
  const Expected_Log log("assertion 'GST_IS_PAD (");
  EXPECT_FALSE(Media_Helper::link_pad_to_element(as_pad(source_), sink_.get()));
  EXPECT_FALSE(Media_Helper::unlink_pad_from_element(as_pad(source_), sink_.get()));
  EXPECT_FALSE(Media_Helper::link_element_to_pad(source_.get(), as_pad(sink_)));
  EXPECT_EQ(log.count(), 3);
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(UncheckedLink, LeavesAnElementOfTheWrongTypeToTheFramework) {
  const Expected_Log log("gst_element_get_static_pad: assertion 'GST_IS_ELEMENT (element)' failed");
  EXPECT_FALSE(Media_Helper::link_pad_to_element(src_pad_.get(), as_element(sink_pad_)));
  EXPECT_FALSE(Media_Helper::unlink_pad_from_element(src_pad_.get(), as_element(sink_pad_)));
  EXPECT_FALSE(Media_Helper::link_element_to_pad(as_element(src_pad_), sink_pad_.get()));
  EXPECT_EQ(log.count(), 3);
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(UncheckedLink, DoesNotUnlinkAPadThatIsNotLinked) {
  EXPECT_FALSE(Media_Helper::unlink_pad_from_element(src_pad_.get(), sink_.get()));
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(UncheckedLink, DoesNotUnlinkFromAnotherElement) {
  const Element other = make_element("fakesink");
  ASSERT_EQ(gst_pad_link(src_pad_.get(), sink_pad_.get()), GST_PAD_LINK_OK);
  EXPECT_FALSE(Media_Helper::unlink_pad_from_element(src_pad_.get(), other.get()));
  EXPECT_TRUE(linked(src_pad_, sink_pad_));
  EXPECT_EQ(counts(), counts_before_);
}

// --- Checked links

class LinkPadToElementOrThrow : public UncheckedLink {
protected:
  LinkPadToElementOrThrow() {
    gst_object_set_name(GST_OBJECT(source_.get()), "camera");
    gst_object_set_name(GST_OBJECT(sink_.get()), "recorder");
  }
};

TEST_F(LinkPadToElementOrThrow, LinksAPadToAnElement) {
  Media_Helper::link_pad_to_element_or_throw(src_pad_.get(), sink_.get());
  EXPECT_TRUE(linked(src_pad_, sink_pad_));
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(LinkPadToElementOrThrow, ChecksTheElementBeforeThePad) {
  const std::string text = "sink element specified for linking to src_pad in "
                           "link_pad_to_element_or_throw is not a GstElement *.";
  for (GstElement *const bad : {END, as_element(sink_pad_)}) {
    expect_error(0x15160, text, [&] { Media_Helper::link_pad_to_element_or_throw(nullptr, bad); });
    expect_error(0x15160, text,
                 [&] { Media_Helper::link_pad_to_element_or_throw(src_pad_.get(), bad); });
  }
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(LinkPadToElementOrThrow, ReportsABadPad) {
  for (GstPad *const bad : {static_cast<GstPad *>(nullptr), as_pad(source_)})
    expect_error(0x15170, "src_pad in link_pad_to_element is not a GstPad *.",
                 [&] { Media_Helper::link_pad_to_element_or_throw(bad, sink_.get()); });
  // The given pad is checked before the element's pad.
  expect_error(0x15170, "src_pad in link_pad_to_element is not a GstPad *.",
               [&] { Media_Helper::link_pad_to_element_or_throw(nullptr, source_.get()); });
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(LinkPadToElementOrThrow, ReportsAnElementWithoutASinkPad) {
  expect_error(0x15100, "Failed to get static pad \"sink\" for element camera ().",
               [&] { Media_Helper::link_pad_to_element_or_throw(src_pad_.get(), source_.get()); });
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(LinkPadToElementOrThrow, ReportsPadsWithoutACommonGrandparent) {
  const Element first = make_bin("first");
  const Element second = make_bin("second");
  add_to_bin(first, source_);
  add_to_bin(second, sink_);
  const auto before = counts();
  expect_error(0x150B0,
               "Failed to link \"src\" pad from element \"camera\" with \"sink\" pad from element "
               "\"recorder\" (GST_PAD_LINK_WRONG_HIERARCHY: pads have no common grandparent).",
               [&] { Media_Helper::link_pad_to_element_or_throw(src_pad_.get(), sink_.get()); });
  EXPECT_TRUE(unlinked(src_pad_));
  EXPECT_EQ(counts(), before);
}

TEST_F(LinkPadToElementOrThrow, ReportsALinkedPad) {
  ASSERT_EQ(gst_pad_link(src_pad_.get(), sink_pad_.get()), GST_PAD_LINK_OK);
  expect_error(0x150B0,
               "Failed to link \"src\" pad from element \"camera\" with \"sink\" pad from element "
               "\"recorder\" (GST_PAD_LINK_WAS_LINKED: pad was already linked).",
               [&] { Media_Helper::link_pad_to_element_or_throw(src_pad_.get(), sink_.get()); });
  EXPECT_TRUE(linked(src_pad_, sink_pad_));
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(LinkPadToElementOrThrow, ReportsAPadOfTheWrongDirection) {
  const Expected_Log log("gst_pad_link_full: assertion 'GST_PAD_IS_SRC (srcpad)' failed");
  expect_error(0x150B0,
               "Failed to link \"sink\" pad from element \"recorder\" with \"sink\" pad from "
               "element \"recorder\" (GST_PAD_LINK_WRONG_DIRECTION: pads have wrong direction).",
               [&] { Media_Helper::link_pad_to_element_or_throw(sink_pad_.get(), sink_.get()); });
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(LinkPadToElementOrThrow, ReportsIncompatibleFormats) {
  const Element element = make_bare_element("listener");
  const Pad sink_pad = add_pad(element, make_pad_of_caps("sink", GST_PAD_SINK, "audio/x-raw"));
  const Element camera = make_bare_element("viewer");
  const Pad src_pad = add_pad(camera, make_pad_of_caps("picture", GST_PAD_SRC, "video/x-raw"));
  const std::vector<gpointer> objects{element.get(), sink_pad.get(), camera.get(), src_pad.get()};
  const auto before = reference_counts(objects);
  expect_error(0x150B0,
               "Failed to link \"picture\" pad from element \"viewer\" with \"sink\" pad from "
               "element \"listener\" (GST_PAD_LINK_NOFORMAT: pads do not have common format).",
               [&] { Media_Helper::link_pad_to_element_or_throw(src_pad.get(), element.get()); });
  EXPECT_TRUE(unlinked(src_pad));
  EXPECT_EQ(reference_counts(objects), before);
}

// The result of linking to the pad of an element.
template <GstPadLinkReturn Result>
GstPadLinkReturn answer_link(GstPad *, GstObject *, GstPad *) {
  return Result;
}

struct Refusal {
  GstPadLinkFunction answer;
  const char *text;
};

void PrintTo(const Refusal &refusal, std::ostream *out) {
  *out << refusal.text;
}

class RefusedLink : public testing::TestWithParam<Refusal> {};

TEST_P(RefusedLink, IsReportedWithTheResultOfThePad) {
  const Element upstream = make_bare_element("upstream");
  const Element downstream = make_bare_element("downstream");
  const Pad src_pad = add_pad(upstream, make_pad("src_3", GST_PAD_SRC));
  const Pad sink_pad = add_pad(downstream, make_pad("sink", GST_PAD_SINK));
  gst_pad_set_link_function(sink_pad.get(), GetParam().answer);
  const std::vector<gpointer> objects{upstream.get(), downstream.get(), src_pad.get(),
                                      sink_pad.get()};
  const auto before = reference_counts(objects);

  expect_error(
      0x150B0,
      std::string("Failed to link \"src_3\" pad from element \"upstream\" with \"sink\" "
                  "pad from element \"downstream\" (") +
          GetParam().text + ").",
      [&] { Media_Helper::link_pad_to_element_or_throw(src_pad.get(), downstream.get()); });
  EXPECT_TRUE(unlinked(src_pad));
  EXPECT_TRUE(unlinked(sink_pad));
  EXPECT_FALSE(Media_Helper::link_pad_to_element(src_pad.get(), downstream.get()));
  EXPECT_EQ(reference_counts(objects), before);
}

INSTANTIATE_TEST_SUITE_P(
    Answers, RefusedLink,
    testing::Values(
        Refusal{answer_link<GST_PAD_LINK_NOSCHED>,
                "GST_PAD_LINK_NOSCHED: pads cannot cooperate in scheduling"},
        Refusal{answer_link<GST_PAD_LINK_REFUSED>, "GST_PAD_LINK_REFUSED: refused for some reason"},
        Refusal{answer_link<static_cast<GstPadLinkReturn>(-7)>, "Unknown GstPadLinkReturn value"}));

TEST_F(LinkPadToElementOrThrow, ReportsUnknownAsTheElementOfAPadWithoutAParent) {
  const Pad lone = make_pad("stray", GST_PAD_SRC);
  ASSERT_EQ(gst_pad_link(src_pad_.get(), sink_pad_.get()), GST_PAD_LINK_OK);
  expect_error(0x150B0,
               "Failed to link \"stray\" pad from element \"Unknown\" with \"sink\" pad from "
               "element \"recorder\" (GST_PAD_LINK_WAS_LINKED: pad was already linked).",
               [&] { Media_Helper::link_pad_to_element_or_throw(lone.get(), sink_.get()); });
  EXPECT_EQ(reference_count(lone.get()), 1u);
  EXPECT_EQ(counts(), counts_before_);
}

// The parent of a ghost pad's internal pad is the ghost pad, not an element.
TEST_F(LinkPadToElementOrThrow, ReportsUnknownAsTheElementOfAnInternalPad) {
  const Pad ghost(GST_PAD_CAST(gst_object_ref_sink(gst_ghost_pad_new("in", sink_pad_.get()))),
                  false);
  const Pad internal(GST_PAD_CAST(gst_proxy_pad_get_internal(GST_PROXY_PAD(ghost.get()))), false);
  const auto before = reference_counts({ghost.get(), internal.get(), sink_.get()});
  expect_error(0x150B0,
               std::string("Failed to link \"") + GST_OBJECT_NAME(internal.get()) +
                   "\" pad from element \"Unknown\" with \"sink\" pad from element \"recorder\" "
                   "(GST_PAD_LINK_WAS_LINKED: pad was already linked).",
               [&] { Media_Helper::link_pad_to_element_or_throw(internal.get(), sink_.get()); });
  EXPECT_EQ(reference_counts({ghost.get(), internal.get(), sink_.get()}), before);
}

TEST_F(LinkPadToElementOrThrow, PrintsNothingForAnObjectWithoutAName) {
  ASSERT_EQ(gst_pad_link(src_pad_.get(), sink_pad_.get()), GST_PAD_LINK_OK);
  g_clear_pointer(&GST_OBJECT_NAME(src_pad_.get()), g_free);
  g_clear_pointer(&GST_OBJECT_NAME(source_.get()), g_free);
  g_clear_pointer(&GST_OBJECT_NAME(sink_.get()), g_free);
  expect_error(0x150B0,
               "Failed to link \"\" pad from element \"\" with \"sink\" pad from element \"\" "
               "(GST_PAD_LINK_WAS_LINKED: pad was already linked).",
               [&] { Media_Helper::link_pad_to_element_or_throw(src_pad_.get(), sink_.get()); });
  EXPECT_EQ(counts(), counts_before_);
}

// --- Chains

class LinkMany : public testing::Test {
protected:
  const Element first_ = make_element("fakesrc", "first");
  const Element second_ = make_element("queue", "second");
  const Element third_ = make_element("identity", "third");
  const Element fourth_ = make_element("fakesink", "fourth");
  const Pad not_an_element_ = make_pad("pad", GST_PAD_SRC);

  std::vector<guint> counts() const {
    return reference_counts({first_.get(), second_.get(), third_.get(), fourth_.get(),
                             static_pad(second_, "sink").get(), static_pad(second_, "src").get(),
                             not_an_element_.get()});
  }
  const std::vector<guint> counts_before_ = counts();
};

TEST_F(LinkMany, LinksTwoElements) {
  Media_Helper::gst_element_link_many_or_throw(first_.get(), second_.get(), END);
  EXPECT_TRUE(linked(first_, second_));
  EXPECT_TRUE(unlinked(static_pad(second_, "src")));
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(LinkMany, LinksEachElementToTheNext) {
  Media_Helper::gst_element_link_many_or_throw(first_.get(), second_.get(), third_.get(),
                                               fourth_.get(), END);
  EXPECT_TRUE(linked(first_, second_));
  EXPECT_TRUE(linked(second_, third_));
  EXPECT_TRUE(linked(third_, fourth_));
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(LinkMany, StopsReadingAtTheEndMarker) {
  Media_Helper::gst_element_link_many_or_throw(first_.get(), second_.get(), END,
                                               as_element(not_an_element_));
  EXPECT_TRUE(linked(first_, second_));
}

TEST_F(LinkMany, ReportsABadFirstElement) {
  for (GstElement *const bad : {END, as_element(not_an_element_)})
    expect_error(
        0x15160, "element 1 in gst_element_link_many_or_throw is not a GstElement *.", [&] {
          Media_Helper::gst_element_link_many_or_throw(bad, bad, third_.get(), fourth_.get(), END);
        });
  EXPECT_TRUE(unlinked(static_pad(fourth_, "sink")));
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(LinkMany, ReportsANullSecondElement) {
  const std::string text = "element 2 in gst_element_link_many_or_throw is not a GstElement *.";
  expect_error(0x15160, text,
               [&] { Media_Helper::gst_element_link_many_or_throw(first_.get(), nullptr); });
  expect_error(0x15160, text,
               [&] { Media_Helper::gst_element_link_many_or_throw(first_.get(), nullptr, END); });
  EXPECT_TRUE(unlinked(static_pad(first_, "src")));
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(LinkMany, ReportsABadSecondElement) {
  expect_error(0x15160, "element 2 in gst_element_link_many_or_throw is not a GstElement *.", [&] {
    Media_Helper::gst_element_link_many_or_throw(first_.get(), as_element(not_an_element_),
                                                 third_.get(), END);
  });
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(LinkMany, ReportsAnInstanceWithoutAClass) {
  GTypeInstance instance{nullptr};
  const gpointer bad = &instance;
  expect_error(0x15160, "element 2 in gst_element_link_many_or_throw is not a GstElement *.", [&] {
    Media_Helper::gst_element_link_many_or_throw(first_.get(), static_cast<GstElement *>(bad), END);
  });
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(LinkMany, KeepsTheLinksMadeBeforeABadElement) {
  expect_error(0x15160, "element 3 in gst_element_link_many_or_throw is not a GstElement *.", [&] {
    Media_Helper::gst_element_link_many_or_throw(first_.get(), second_.get(),
                                                 as_element(not_an_element_), END);
  });
  EXPECT_TRUE(linked(first_, second_));
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(LinkMany, CountsElementsBeyondNine) {
  std::vector<Element> chain;
  for (int i = 0; i < 9; ++i)
    chain.push_back(make_element("identity"));
  expect_error(0x15160, "element 10 in gst_element_link_many_or_throw is not a GstElement *.", [&] {
    Media_Helper::gst_element_link_many_or_throw(chain[0].get(), chain[1].get(), chain[2].get(),
                                                 chain[3].get(), chain[4].get(), chain[5].get(),
                                                 chain[6].get(), chain[7].get(), chain[8].get(),
                                                 as_element(not_an_element_), END);
  });
  for (std::size_t i = 1; i < chain.size(); ++i)
    EXPECT_TRUE(linked(chain[i - 1], chain[i]));
}

TEST_F(LinkMany, ReportsTheTwoElementsThatCannotBeLinked) {
  const auto before = counts();
  expect_error(0x151C0, "Failed to link element \"fourth\" and element \"third\".", [&] {
    Media_Helper::gst_element_link_many_or_throw(first_.get(), second_.get(), fourth_.get(), END);
    Media_Helper::gst_element_link_many_or_throw(fourth_.get(), third_.get(), END);
  });
  EXPECT_TRUE(linked(first_, second_));
  EXPECT_TRUE(linked(second_, fourth_));
  EXPECT_EQ(counts(), before);
}

TEST_F(LinkMany, KeepsTheLinksMadeBeforeAFailedLink) {
  const Element video = make_element("videotestsrc", "video");
  const Element audio = make_element("audioconvert", "audio");
  const Element convert = make_element("videoconvert", "convert");
  const auto before = reference_counts({video.get(), audio.get(), convert.get()});
  expect_error(0x151C0, "Failed to link element \"convert\" and element \"audio\".", [&] {
    Media_Helper::gst_element_link_many_or_throw(video.get(), convert.get(), audio.get(),
                                                 fourth_.get(), END);
  });
  EXPECT_TRUE(linked(video, convert));
  EXPECT_TRUE(unlinked(static_pad(convert, "src")));
  EXPECT_TRUE(unlinked(static_pad(fourth_, "sink")));
  EXPECT_EQ(reference_counts({video.get(), audio.get(), convert.get()}), before);
  EXPECT_EQ(counts(), counts_before_);
}

// The third element is invalid, but the link before it is tried first and fails.
TEST_F(LinkMany, ChecksEachElementJustBeforeLinkingIt) {
  expect_error(0x151C0, "Failed to link element \"fourth\" and element \"second\".", [&] {
    Media_Helper::gst_element_link_many_or_throw(fourth_.get(), second_.get(),
                                                 as_element(not_an_element_), END);
  });
  EXPECT_EQ(counts(), counts_before_);
}

// --- Static pads

// Unlike standard factories, the element's factory has metadata with the key "name".
void describe_with_a_name(gpointer element_class, gpointer) {
  gst_element_class_set_static_metadata(GST_ELEMENT_CLASS(element_class), "Named", "Test",
                                        "Has a name in its metadata", "Nobody");
  gst_element_class_add_static_metadata(GST_ELEMENT_CLASS(element_class), "name",
                                        "The \"%s\" Name");
}

Element make_element_of_a_named_factory(const char *name) {
  static const bool registered = [] {
    const GType type = g_type_register_static_simple(GST_TYPE_ELEMENT, "TestNamedElement",
                                                     sizeof(GstElementClass), describe_with_a_name,
                                                     sizeof(GstElement), nullptr, GTypeFlags{});
    return gst_element_register(nullptr, "testnamedelement", GST_RANK_NONE, type) != FALSE;
  }();
  EXPECT_TRUE(registered);
  return make_element("testnamedelement", name);
}

TEST(GetStaticPad, ReportsABadElement) {
  const Pad pad = make_pad("src", GST_PAD_SRC);
  for (GstElement *const bad : {END, as_element(pad)})
    expect_error(0x15160, "element in gst_element_get_static_pad_or_throw is not a GstElement *.",
                 [&] { Media_Helper::gst_element_get_static_pad_or_throw(bad, "sink"); });
}

TEST(GetStaticPad, ReturnsOneReference) {
  const Element queue = make_element("queue");
  const Pad expected = static_pad(queue, "src");
  const auto before = reference_counts({queue.get(), expected.get()});
  {
    const Pad pad(Media_Helper::gst_element_get_static_pad_or_throw(queue.get(), "src"), false);
    EXPECT_EQ(pad, expected);
    EXPECT_EQ(reference_counts({queue.get(), expected.get()}),
              (std::vector<guint>{before[0], before[1] + 1}));
  }
  EXPECT_EQ(reference_counts({queue.get(), expected.get()}), before);
}

TEST(GetStaticPad, FindsARequestedPadByItsName) {
  const Element tee = make_element("tee");
  const Pad branch = request_pad(tee.get(), "src_%u");
  const Pad found(Media_Helper::gst_element_get_static_pad_or_throw(tee.get(), "src_0"), false);
  EXPECT_EQ(found, branch);
}

TEST(GetStaticPad, ReportsThePadAndTheElement) {
  const Element tee = make_element("tee", "splitter");
  const auto before = reference_counts({tee.get(), gst_element_get_factory(tee.get())});
  expect_error(0x15100, "Failed to get static pad \"src\" for element splitter ().",
               [&] { Media_Helper::gst_element_get_static_pad_or_throw(tee.get(), "src"); });
  expect_error(0x15100, "Failed to get static pad \"\" for element splitter ().",
               [&] { Media_Helper::gst_element_get_static_pad_or_throw(tee.get(), ""); });
  EXPECT_EQ(reference_counts({tee.get(), gst_element_get_factory(tee.get())}), before);
}

TEST(GetStaticPad, DoesNotTreatANameAsAFormat) {
  const Element tee = make_element("tee", "100%s %1% %");
  expect_error(0x15100, "Failed to get static pad \"%d%%2%\" for element 100%s %1% % ().",
               [&] { Media_Helper::gst_element_get_static_pad_or_throw(tee.get(), "%d%%2%"); });
}

TEST(GetStaticPad, PrintsTheNameMetadataOfTheFactory) {
  const Element element = make_element_of_a_named_factory("thing");
  expect_error(0x15100, "Failed to get static pad \"sink\" for element thing (The \"%s\" Name).",
               [&] { Media_Helper::gst_element_get_static_pad_or_throw(element.get(), "sink"); });
}

TEST(GetStaticPad, PrintsNothingForAnElementWithoutAFactory) {
  const Element element = make_bare_element("homemade");
  expect_error(0x15100, "Failed to get static pad \"sink\" for element homemade ().",
               [&] { Media_Helper::gst_element_get_static_pad_or_throw(element.get(), "sink"); });
  EXPECT_EQ(reference_count(element.get()), 1u);
}

// --- Probes

struct Probe_Record {
  GstPadProbeReturn answer = GST_PAD_PROBE_OK;
  std::atomic<GstPad *> pad{nullptr};
  std::atomic<int> calls{0};
  std::atomic<int> destroyed{0};
};

GstPadProbeReturn record_probe(GstPad *pad, GstPadProbeInfo *, gpointer data) {
  auto *const record = static_cast<Probe_Record *>(data);
  record->pad = pad;
  ++record->calls;
  return record->answer;
}

void record_destruction(gpointer data) {
  ++static_cast<Probe_Record *>(data)->destroyed;
}

void add_probe(const Element &element, int mask, Probe_Record &record) {
  Media_Helper::add_probe_to_sink_pad_or_throw(element.get(), static_cast<GstPadProbeType>(mask),
                                               record_probe, &record, record_destruction);
}

class SinkPadProbe : public testing::Test {
protected:
  SinkPadProbe() { g_object_set(source_.get(), "num-buffers", 5, nullptr); }

  // Passes five buffers from the source to the sink.
  void run() const {
    const Element pipeline(GST_ELEMENT_CAST(gst_object_ref_sink(gst_pipeline_new(nullptr))), false);
    add_to_bin(pipeline, source_);
    add_to_bin(pipeline, sink_);
    ASSERT_TRUE(gst_element_link(source_.get(), sink_.get()));
    gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
    const boost::intrusive_ptr<GstBus> bus(gst_element_get_bus(pipeline.get()), false);
    const boost::intrusive_ptr<GstMessage> message(
        gst_bus_timed_pop_filtered(
            bus.get(), 10 * GST_SECOND,
            static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)),
        false);
    gst_element_set_state(pipeline.get(), GST_STATE_NULL);
    // The streaming thread may keep the pipeline and its elements alive slightly longer.
    gst_bin_remove(GST_BIN(pipeline.get()), sink_.get());
    ASSERT_TRUE(message);
    EXPECT_EQ(GST_MESSAGE_TYPE(message.get()), GST_MESSAGE_EOS);
  }

  Element source_ = make_element("fakesrc");
  Element sink_ = make_element("fakesink");
  Pad sink_pad_ = static_pad(sink_, "sink");
  Probe_Record record_;
};

TEST_F(SinkPadProbe, ReportsABadElement) {
  for (GstElement *const bad : {END, as_element(sink_pad_)})
    expect_error(0x15160, "element in add_probe_to_sink_pad_or_throw is not a GstElement *.", [&] {
      Media_Helper::add_probe_to_sink_pad_or_throw(bad, GST_PAD_PROBE_TYPE_IDLE, record_probe,
                                                   &record_, record_destruction);
    });
  EXPECT_EQ(record_.calls, 0);
  EXPECT_EQ(record_.destroyed, 0);
}

TEST_F(SinkPadProbe, ReportsAnElementWithoutASinkPad) {
  gst_object_set_name(GST_OBJECT(source_.get()), "camera");
  expect_error(0x15100, "Failed to get static pad \"sink\" for element camera ().",
               [&] { add_probe(source_, GST_PAD_PROBE_TYPE_BUFFER, record_); });
  EXPECT_EQ(record_.calls, 0);
  EXPECT_EQ(reference_count(source_.get()), 1u);
}

TEST_F(SinkPadProbe, IsCalledForEachBufferUntilThePadIsDestroyed) {
  const auto before = reference_counts({sink_.get(), sink_pad_.get()});
  add_probe(sink_, GST_PAD_PROBE_TYPE_BUFFER, record_);
  EXPECT_EQ(reference_counts({sink_.get(), sink_pad_.get()}), before);
  EXPECT_EQ(record_.calls, 0);
  run();
  EXPECT_EQ(record_.calls, 5);
  EXPECT_EQ(record_.pad, sink_pad_.get());
  EXPECT_EQ(record_.destroyed, 0);

  const Weak_Watch watch(sink_pad_.get());
  sink_pad_.reset();
  sink_.reset();
  EXPECT_TRUE(watch.gone());
  EXPECT_EQ(record_.destroyed, 1);
}

TEST_F(SinkPadProbe, IsCalledOnlyForTheTypesInTheMask) {
  Probe_Record of_lists;
  add_probe(sink_, GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, record_);
  add_probe(sink_, GST_PAD_PROBE_TYPE_BUFFER_LIST, of_lists);
  run();
  EXPECT_GE(record_.calls, 3);  // stream-start, segment and EOS
  EXPECT_EQ(of_lists.calls, 0);
  sink_pad_.reset();
  sink_.reset();
  EXPECT_EQ(record_.destroyed, 1);
  EXPECT_EQ(of_lists.destroyed, 1);
}

TEST_F(SinkPadProbe, IsRemovedIfItsCallbackReturnsRemove) {
  record_.answer = GST_PAD_PROBE_REMOVE;
  add_probe(sink_, GST_PAD_PROBE_TYPE_BUFFER, record_);
  EXPECT_EQ(record_.destroyed, 0);
  run();
  EXPECT_EQ(record_.calls, 1);
  EXPECT_EQ(record_.destroyed, 1);
}

TEST_F(SinkPadProbe, RequiresNeitherDataNorADestroyFunction) {
  const auto let_pass = [](GstPad *, GstPadProbeInfo *, gpointer data) {
    EXPECT_EQ(data, nullptr);
    return GST_PAD_PROBE_OK;
  };
  Media_Helper::add_probe_to_sink_pad_or_throw(sink_.get(), GST_PAD_PROBE_TYPE_BUFFER, let_pass,
                                               nullptr, nullptr);
  run();
}

TEST_F(SinkPadProbe, BlocksWithoutACallback) {
  Media_Helper::add_probe_to_sink_pad_or_throw(sink_.get(), GST_PAD_PROBE_TYPE_BLOCK_DOWNSTREAM,
                                               nullptr, &record_, record_destruction);
  EXPECT_TRUE(gst_pad_is_blocked(sink_pad_.get()));
  EXPECT_EQ(record_.destroyed, 0);
  sink_pad_.reset();
  sink_.reset();
  EXPECT_EQ(record_.destroyed, 1);
}

TEST_F(SinkPadProbe, RunsAtOnceOnAnIdlePadAndRemains) {
  add_probe(sink_, GST_PAD_PROBE_TYPE_IDLE, record_);
  EXPECT_EQ(record_.calls, 1);
  EXPECT_EQ(record_.destroyed, 0);
  sink_pad_.reset();
  sink_.reset();
  EXPECT_EQ(record_.destroyed, 1);
}

// An idle probe that removes itself immediately leaves no identifier, like a probe that was not
// added.
TEST_F(SinkPadProbe, IsReportedAsNotAddedIfItIsRemovedAtOnce) {
  const auto before = reference_counts({sink_.get(), sink_pad_.get()});
  record_.answer = GST_PAD_PROBE_REMOVE;
  expect_error(0x15150, "Failed to add timeout probe",
               [&] { add_probe(sink_, GST_PAD_PROBE_TYPE_IDLE, record_); });
  EXPECT_EQ(record_.calls, 1);
  EXPECT_EQ(record_.destroyed, 1);
  EXPECT_EQ(reference_counts({sink_.get(), sink_pad_.get()}), before);
}

TEST_F(SinkPadProbe, IsNotAddedForAnEmptyMask) {
  const auto before = reference_counts({sink_.get(), sink_pad_.get()});
  const Expected_Log log("gst_pad_add_probe: assertion 'mask != 0' failed");
  expect_error(0x15150, "Failed to add timeout probe", [&] { add_probe(sink_, 0, record_); });
  EXPECT_EQ(record_.calls, 0);
  EXPECT_EQ(reference_counts({sink_.get(), sink_pad_.get()}), before);
}

}  // namespace
}  // namespace kel::tavren::tests
