// Chains of links between elements.

#include <string>
#include <vector>

#include "errors.h"
#include "links.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

constexpr GstElement *END = nullptr;

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
    expect_error({TEC::NOT_AN_ELEMENT, {"element 1 in gst_element_link_many_or_throw"}}, [&] {
      Media_Helper::gst_element_link_many_or_throw(bad, bad, third_.get(), fourth_.get(), END);
    });
  EXPECT_TRUE(unlinked(static_pad(fourth_, "sink")));
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(LinkMany, ReportsANullSecondElement) {
  const Expected_Error bad_element{TEC::NOT_AN_ELEMENT,
                                   {"element 2 in gst_element_link_many_or_throw"}};
  expect_error(bad_element,
               [&] { Media_Helper::gst_element_link_many_or_throw(first_.get(), nullptr); });
  expect_error(bad_element,
               [&] { Media_Helper::gst_element_link_many_or_throw(first_.get(), nullptr, END); });
  EXPECT_TRUE(unlinked(static_pad(first_, "src")));
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(LinkMany, ReportsABadSecondElement) {
  expect_error({TEC::NOT_AN_ELEMENT, {"element 2 in gst_element_link_many_or_throw"}}, [&] {
    Media_Helper::gst_element_link_many_or_throw(first_.get(), as_element(not_an_element_),
                                                 third_.get(), END);
  });
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(LinkMany, ReportsAnInstanceWithoutAClass) {
  GTypeInstance instance{nullptr};
  const gpointer bad = &instance;
  expect_error({TEC::NOT_AN_ELEMENT, {"element 2 in gst_element_link_many_or_throw"}}, [&] {
    Media_Helper::gst_element_link_many_or_throw(first_.get(), static_cast<GstElement *>(bad), END);
  });
  EXPECT_EQ(counts(), counts_before_);
}

TEST_F(LinkMany, KeepsTheLinksMadeBeforeABadElement) {
  expect_error({TEC::NOT_AN_ELEMENT, {"element 3 in gst_element_link_many_or_throw"}}, [&] {
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
  expect_error({TEC::NOT_AN_ELEMENT, {"element 10 in gst_element_link_many_or_throw"}}, [&] {
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
  expect_error({TEC::ELEMENT_LINK_FAILED, {"fourth", "third"}}, [&] {
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
  expect_error({TEC::ELEMENT_LINK_FAILED, {"convert", "audio"}}, [&] {
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
  expect_error({TEC::ELEMENT_LINK_FAILED, {"fourth", "second"}}, [&] {
    Media_Helper::gst_element_link_many_or_throw(fourth_.get(), second_.get(),
                                                 as_element(not_an_element_), END);
  });
  EXPECT_EQ(counts(), counts_before_);
}

}  // namespace
}  // namespace kel::tavren::tests
