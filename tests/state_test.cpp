// States of elements.

#include <limits>
#include <string>
#include <utility>

#include "controlled_elements.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

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
  expect_error({TEC::STATE_CHANGE_FAILED, {"GST_STATE_PLAYING", "src0", "", ", starting capture"}},
               [&source] {
                 Media_Helper::gst_element_set_state_or_throw(source.get(), GST_STATE_PLAYING,
                                                              "starting capture");
               });
  EXPECT_EQ(reference_count(source.get()), 1U);
}

TEST(SetState, OmitsAnEmptyContext) {
  const Stopped source("filesrc", "src0");
  expect_error({TEC::STATE_CHANGE_FAILED, {"GST_STATE_PAUSED", "src0", "", ""}}, [&source] {
    Media_Helper::gst_element_set_state_or_throw(source.get(), GST_STATE_PAUSED, "");
  });
}

TEST(SetState, PrintsTheContextVerbatim) {
  const Stopped source("filesrc", "100% %s");
  expect_error(
      {TEC::STATE_CHANGE_FAILED, {"GST_STATE_PAUSED", "100% %s", "", ",  %1% \"a\""}}, [&source] {
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
        {TEC::STATE_CHANGE_FAILED, {name, "tap", "camera tap 100%", ""}},
        [&tap, to = state] { Media_Helper::gst_element_set_state_or_throw(tap.get(), to, ""); });
}

// The file source reaches READY and fails to reach PAUSED. It remains in READY.
TEST(SetState, DoesNotResetTheElementAfterAFailure) {
  const Stopped source("filesrc", "src0");
  const Stopped other("filesrc", "other");
  expect_error({TEC::STATE_CHANGE_FAILED, {"GST_STATE_PLAYING", "src0", "", ""}}, [&source] {
    Media_Helper::gst_element_set_state_or_throw(source.get(), GST_STATE_PLAYING, "");
  });
  ASSERT_EQ(gst_element_set_state(other.get(), GST_STATE_PLAYING), GST_STATE_CHANGE_FAILURE);
  EXPECT_EQ(GST_STATE(source.get()), GST_STATE(other.get()));
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
  expect_error({TEC::STATE_SYNC_WITH_PARENT_FAILED, {"parser", ""}}, [&element] {
    Media_Helper::gst_element_sync_state_with_parent_or_throw(element.get());
  });
  EXPECT_EQ(reference_count(element.get()), 1U);
}

TEST(SyncStateWithParent, ThrowsIfTheElementCannotChangeItsState) {
  const Stopped pipeline("pipeline");
  ASSERT_EQ(gst_element_set_state(pipeline.get(), GST_STATE_READY), GST_STATE_CHANGE_SUCCESS);
  const Element tap = make_owned_tap("tap");
  gst_bin_add(pipeline.as_bin(), tap.get());
  expect_error({TEC::STATE_SYNC_WITH_PARENT_FAILED, {"tap", "camera tap 100%"}},
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

}  // namespace
}  // namespace kel::tavren::tests
