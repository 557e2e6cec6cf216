// Links of a pad to an element that report every failure.

#include <ostream>
#include <string>
#include <vector>

#include "errors.h"
#include "links.h"
#include "log_watch.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

Pad make_pad_of_caps(const char *name, GstPadDirection direction, const char *caps) {
  GstPadTemplate *const pad_template =
      gst_pad_template_new(name, direction, GST_PAD_ALWAYS, make_caps(caps).get());
  gst_object_ref_sink(pad_template);
  Pad pad = own(gst_pad_new_from_template(pad_template, name));
  gst_object_unref(pad_template);
  return pad;
}

class LinkPadToElementOrThrow : public Link_Test {
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
  const Expected_Error bad_element{
      TEC::NOT_AN_ELEMENT,
      {"sink element specified for linking to src_pad in link_pad_to_element_or_throw"}};
  for (GstElement *const bad : {as_element(nullptr), as_element(sink_pad_)}) {
    expect_error(bad_element, [&] { Media_Helper::link_pad_to_element_or_throw(nullptr, bad); });
    expect_error(bad_element,
                 [&] { Media_Helper::link_pad_to_element_or_throw(src_pad_.get(), bad); });
  }
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(LinkPadToElementOrThrow, ReportsABadPad) {
  for (GstPad *const bad : {static_cast<GstPad *>(nullptr), as_pad(source_)})
    expect_error({TEC::NOT_A_PAD, {"src_pad in link_pad_to_element"}},
                 [&] { Media_Helper::link_pad_to_element_or_throw(bad, sink_.get()); });
  // The given pad is checked before the element's pad.
  expect_error({TEC::NOT_A_PAD, {"src_pad in link_pad_to_element"}},
               [&] { Media_Helper::link_pad_to_element_or_throw(nullptr, source_.get()); });
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(LinkPadToElementOrThrow, ReportsAnElementWithoutASinkPad) {
  expect_error({TEC::STATIC_PAD_NOT_FOUND, {"sink", "camera", ""}},
               [&] { Media_Helper::link_pad_to_element_or_throw(src_pad_.get(), source_.get()); });
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(LinkPadToElementOrThrow, ReportsPadsWithoutACommonGrandparent) {
  const Element first = make_bin("first");
  const Element second = make_bin("second");
  add_to_bin(first, source_);
  add_to_bin(second, sink_);
  const auto before = counts();
  expect_error({TEC::PAD_LINK_FAILED,
                {"src", "camera", "recorder",
                 "GST_PAD_LINK_WRONG_HIERARCHY: pads have no common grandparent"}},
               [&] { Media_Helper::link_pad_to_element_or_throw(src_pad_.get(), sink_.get()); });
  EXPECT_TRUE(unlinked(src_pad_));
  EXPECT_EQ(counts(), before);
}

TEST_F(LinkPadToElementOrThrow, ReportsALinkedPad) {
  ASSERT_EQ(gst_pad_link(src_pad_.get(), sink_pad_.get()), GST_PAD_LINK_OK);
  expect_error({TEC::PAD_LINK_FAILED,
                {"src", "camera", "recorder", "GST_PAD_LINK_WAS_LINKED: pad was already linked"}},
               [&] { Media_Helper::link_pad_to_element_or_throw(src_pad_.get(), sink_.get()); });
  EXPECT_TRUE(linked(src_pad_, sink_pad_));
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(LinkPadToElementOrThrow, ReportsAPadOfTheWrongDirection) {
  const Expected_Log log("gst_pad_link_full: assertion 'GST_PAD_IS_SRC (srcpad)' failed");
  expect_error(
      {TEC::PAD_LINK_FAILED,
       {"sink", "recorder", "recorder", "GST_PAD_LINK_WRONG_DIRECTION: pads have wrong direction"}},
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
  expect_error(
      {TEC::PAD_LINK_FAILED,
       {"picture", "viewer", "listener", "GST_PAD_LINK_NOFORMAT: pads do not have common format"}},
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

  expect_error({TEC::PAD_LINK_FAILED, {"src_3", "upstream", "downstream", GetParam().text}}, [&] {
    Media_Helper::link_pad_to_element_or_throw(src_pad.get(), downstream.get());
  });
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
  expect_error(
      {TEC::PAD_LINK_FAILED,
       {"stray", "Unknown", "recorder", "GST_PAD_LINK_WAS_LINKED: pad was already linked"}},
      [&] { Media_Helper::link_pad_to_element_or_throw(lone.get(), sink_.get()); });
  EXPECT_EQ(reference_count(lone.get()), 1u);
  EXPECT_EQ(counts(), counts_before_);
}

// The parent of a ghost pad's internal pad is the ghost pad, not an element.
TEST_F(LinkPadToElementOrThrow, ReportsUnknownAsTheElementOfAnInternalPad) {
  const Pad ghost = own(gst_ghost_pad_new("in", sink_pad_.get()));
  const Pad internal(GST_PAD_CAST(gst_proxy_pad_get_internal(GST_PROXY_PAD(ghost.get()))), false);
  const auto before = reference_counts({ghost.get(), internal.get(), sink_.get()});
  expect_error({TEC::PAD_LINK_FAILED,
                {GST_OBJECT_NAME(internal.get()), "Unknown", "recorder",
                 "GST_PAD_LINK_WAS_LINKED: pad was already linked"}},
               [&] { Media_Helper::link_pad_to_element_or_throw(internal.get(), sink_.get()); });
  EXPECT_EQ(reference_counts({ghost.get(), internal.get(), sink_.get()}), before);
}

TEST_F(LinkPadToElementOrThrow, PrintsNothingForAnObjectWithoutAName) {
  ASSERT_EQ(gst_pad_link(src_pad_.get(), sink_pad_.get()), GST_PAD_LINK_OK);
  g_clear_pointer(&GST_OBJECT_NAME(src_pad_.get()), g_free);
  g_clear_pointer(&GST_OBJECT_NAME(source_.get()), g_free);
  g_clear_pointer(&GST_OBJECT_NAME(sink_.get()), g_free);
  expect_error(
      {TEC::PAD_LINK_FAILED, {"", "", "", "GST_PAD_LINK_WAS_LINKED: pad was already linked"}},
      [&] { Media_Helper::link_pad_to_element_or_throw(src_pad_.get(), sink_.get()); });
  EXPECT_EQ(counts(), counts_before_);
}

}  // namespace
}  // namespace kel::tavren::tests
