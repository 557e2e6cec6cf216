// Construction and lookup of elements.

#include <memory>
#include <string>

#include "elements.h"
#include "errors.h"
#include "log_watch.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

// Creates a bin with one child, whose name is then taken.
Element make_bin_with(const char *child_name) {
  Element bin = make_element("bin", "recording");
  gst_bin_add(as_bin(bin), gst_element_factory_make("identity", child_name));
  return bin;
}

TEST(ElementFactoryFind, ReturnsANewReference) {
  GstElementFactory *const own = gst_element_factory_find("identity");
  const guint before = reference_count(own);
  GstElementFactory *const found = Media_Helper::gst_element_factory_find_or_throw("identity");
  EXPECT_EQ(found, own);
  EXPECT_EQ(reference_count(own), before + 1);
  EXPECT_STREQ(GST_OBJECT_NAME(found), "identity");
  gst_object_unref(found);
  gst_object_unref(own);
}

TEST(ElementFactoryFind, ThrowsForAnUnknownName) {
  for (const std::string name : {"nosuchfactory", "", "Identity", "coreelements", "100% %s"})
    expect_error({TEC::FACTORY_NOT_FOUND, {name}},
                 [&name] { Media_Helper::gst_element_factory_find_or_throw(name); });
}

TEST(ElementFactoryMake, ReturnsAFloatingElementWithTheName) {
  GstElement *const made = Media_Helper::gst_element_factory_make_or_throw("identity", "parser");
  EXPECT_TRUE(g_object_is_floating(made));
  EXPECT_EQ(reference_count(made), 1U);
  EXPECT_EQ(name_of(made), "parser");
  EXPECT_STREQ(G_OBJECT_TYPE_NAME(made), "GstIdentity");
  gst_object_unref(made);
}

// Returns the number in a default name, which consists of the factory's name and a counter.
int chosen_number() {
  GstElement *const made = Media_Helper::gst_element_factory_make_or_throw("identity", "");
  const std::string name = name_of(made);
  gst_object_unref(made);
  EXPECT_EQ(name.substr(0, 8), "identity");
  return std::stoi(name.substr(8));
}

TEST(ElementFactoryMake, LetsTheFrameworkChooseAName) {
  const int first = chosen_number();
  EXPECT_EQ(chosen_number(), first + 1);
}

TEST(ElementFactoryMake, ThrowsForAnUnknownFactory) {
  expect_error({TEC::ELEMENT_CREATION_FAILED, {"nosuchfactory", ""}},
               [] { Media_Helper::gst_element_factory_make_or_throw("nosuchfactory", ""); });
  expect_error({TEC::ELEMENT_CREATION_FAILED, {"nosuchfactory 100%", "%s"}},
               [] { Media_Helper::gst_element_factory_make_or_throw("nosuchfactory", "100% %s"); });
  expect_error({TEC::ELEMENT_CREATION_FAILED, {"", "parser"}},
               [] { Media_Helper::gst_element_factory_make_or_throw("", "parser"); });
}

TEST(ParseLaunch, ReturnsAFloatingPipeline) {
  GstElement *const made = Media_Helper::gst_parse_launch_or_throw("fakesrc ! fakesink name=end");
  EXPECT_TRUE(GST_IS_PIPELINE(made));
  EXPECT_TRUE(g_object_is_floating(made));
  EXPECT_EQ(reference_count(made), 1U);
  EXPECT_EQ(GST_BIN_NUMCHILDREN(made), 2);
  gst_object_unref(made);
}

TEST(ParseLaunch, ReturnsASingleElementWithoutAPipeline) {
  GstElement *const made = Media_Helper::gst_parse_launch_or_throw("identity name=parser");
  EXPECT_FALSE(GST_IS_BIN(made));
  EXPECT_TRUE(g_object_is_floating(made));
  EXPECT_EQ(reference_count(made), 1U);
  EXPECT_EQ(name_of(made), "parser");
  gst_object_unref(made);
}

// The parser skips invalid parts and continues.
TEST(ParseLaunch, AcceptsErrorsThatTheParserRecoversFrom) {
  GstElement *const made =
      Media_Helper::gst_parse_launch_or_throw("fakesrc ! nosuchelement ! fakesink");
  ASSERT_TRUE(GST_IS_PIPELINE(made));
  EXPECT_TRUE(g_object_is_floating(made));
  EXPECT_EQ(reference_count(made), 1U);
  EXPECT_EQ(GST_BIN_NUMCHILDREN(made), 2);
  gst_object_unref(made);
}

// The parser decides whether to create a pipeline around a single remaining element.
TEST(ParseLaunch, ReturnsWhatTheParserReturns) {
  for (const char *description : {"nosuchelement ! fakesink", "fakesrc ! fakesink", "identity"}) {
    GstElement *const expected = gst_parse_launch(description, nullptr);
    GstElement *const made = Media_Helper::gst_parse_launch_or_throw(description);
    EXPECT_EQ(G_OBJECT_TYPE(made), G_OBJECT_TYPE(expected)) << description;
    EXPECT_TRUE(g_object_is_floating(made)) << description;
    EXPECT_EQ(reference_count(made), 1U) << description;
    gst_object_unref(made);
    gst_object_unref(expected);
  }
}

TEST(ParseLaunch, ThrowsIfTheParserReturnsNothing) {
  for (const std::string description : {"", "nosuchelement", "! !", "100% %s"})
    expect_error({TEC::PARSE_LAUNCH_FAILED, {description}},
                 [&description] { Media_Helper::gst_parse_launch_or_throw(description); });
}

TEST(BinGetByName, ReturnsANewReference) {
  const Element bin = make_bin_with("parser");
  GstElement *const found = Media_Helper::gst_bin_get_by_name_or_throw(as_bin(bin), "parser");
  EXPECT_EQ(name_of(found), "parser");
  EXPECT_EQ(reference_count(found), 2U);
  EXPECT_EQ(reference_count(bin.get()), 1U);
  gst_object_unref(found);
}

TEST(BinGetByName, SearchesNestedBins) {
  const Element outer = make_element("pipeline");
  const Element inner = make_bin_with("parser");
  gst_bin_add(as_bin(outer), inner.get());
  const Element found(Media_Helper::gst_bin_get_by_name_or_throw(as_bin(outer), "parser"), false);
  EXPECT_TRUE(is_child_of(found.get(), inner));
  EXPECT_EQ(reference_count(found.get()), 2U);
}

TEST(BinGetByName, ThrowsForNull) {
  expect_error({TEC::BIN_IS_NULL},
               [] { Media_Helper::gst_bin_get_by_name_or_throw(nullptr, "parser"); });
}

TEST(BinGetByName, ThrowsForAnAbsentName) {
  const Element bin = make_bin_with("parser");
  for (const std::string name : {"muxer", "", "Parser", "100% %s"})
    expect_error({TEC::ELEMENT_NOT_IN_BIN, {name}},
                 [&] { Media_Helper::gst_bin_get_by_name_or_throw(as_bin(bin), name); });
  EXPECT_EQ(reference_count(bin.get()), 1U);
}

// The framework rejects arguments that are not bins. The library checks only for null.
TEST(BinGetByName, LeavesTheTypeCheckToTheFramework) {
  const Element element = make_element("identity", "parser");
  const Expected_Log assertion("GST_IS_BIN");
  expect_error({TEC::ELEMENT_NOT_IN_BIN, {"parser"}}, [&element] {
    Media_Helper::gst_bin_get_by_name_or_throw(as_bin(element), "parser");
  });
  EXPECT_EQ(reference_count(element.get()), 1U);
}

}  // namespace
}  // namespace kel::tavren::tests
