// Links and unlinks without exceptions.

#include <vector>

#include "errors.h"
#include "links.h"
#include "log_watch.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

class UncheckedLink : public Link_Test {};

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

}  // namespace
}  // namespace kel::tavren::tests
