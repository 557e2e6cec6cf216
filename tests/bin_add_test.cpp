// Adding elements to bins.

#include <memory>
#include <string>
#include <vector>

#include "elements.h"
#include "errors.h"
#include "log_watch.h"
#include "replaced_function.h"

namespace {

// If set, collects the elements that the function under test creates.
thread_local std::vector<std::unique_ptr<kel::tavren::tests::Weak_Watch>> *made_elements = nullptr;

}  // namespace

// Wraps the framework's function: an element that is created and destroyed leaves no other trace.
extern "C" GstElement *gst_element_factory_make(const gchar *factory_name, const gchar *name) {
  static const auto make =
      kel::tavren::tests::replaced_function(gst_element_factory_make, __func__);
  GstElement *const element = make(factory_name, name);
  if (made_elements != nullptr && element != nullptr)
    made_elements->push_back(std::make_unique<kel::tavren::tests::Weak_Watch>(element));
  return element;
}

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

int child_count(const Element &bin) {
  return GST_BIN_NUMCHILDREN(bin.get());
}

// Creates a bin with one child, whose name is then taken.
Element make_bin_with(const char *child_name) {
  Element bin = make_element("bin", "recording");
  gst_bin_add(as_bin(bin), gst_element_factory_make("identity", child_name));
  return bin;
}

TEST(BinAdd, TakesTheFloatingReference) {
  const Element bin = make_element("bin");
  GstElement *const element = gst_element_factory_make("identity", "parser");
  Media_Helper::gst_bin_add_or_throw(as_bin(bin), element);
  EXPECT_FALSE(g_object_is_floating(element));
  EXPECT_EQ(reference_count(element), 1U);
  EXPECT_EQ(reference_count(bin.get()), 1U);
  EXPECT_TRUE(is_child_of(element, bin));
}

TEST(BinAdd, LeavesTheReferenceOfAnOwner) {
  const Element bin = make_element("bin");
  const Element element = make_element("identity");
  Media_Helper::gst_bin_add_or_throw(as_bin(bin), element.get());
  EXPECT_EQ(reference_count(element.get()), 2U);
  EXPECT_TRUE(is_child_of(element.get(), bin));
}

void expect_refused(const Element &bin, GstElement *element, const std::string &name) {
  expect_error({TEC::BIN_ADD_FAILED, {name, ""}},
               [&] { Media_Helper::gst_bin_add_or_throw(as_bin(bin), element); });
}

TEST(BinAddOfATakenName, DestroysAFloatingElement) {
  const Element bin = make_bin_with("parser");
  GstElement *const element = gst_element_factory_make("identity", "parser");
  const Weak_Watch watch(element);
  expect_refused(bin, element, "parser");
  EXPECT_TRUE(watch.gone());
  EXPECT_EQ(child_count(bin), 1);
  EXPECT_EQ(reference_count(bin.get()), 1U);
}

TEST(BinAddOfATakenName, ReleasesOneOfSeveralReferencesToAFloatingElement) {
  const Element bin = make_bin_with("parser");
  GstElement *const element = gst_element_factory_make("identity", "parser");
  const Element first(element);
  const Element second(element);
  ASSERT_TRUE(g_object_is_floating(element));
  ASSERT_EQ(reference_count(element), 3U);
  expect_refused(bin, element, "parser");
  EXPECT_EQ(reference_count(element), 2U);
  EXPECT_EQ(GST_OBJECT_PARENT(element), nullptr);
}

TEST(BinAddOfATakenName, ReleasesOneReferenceToAnOwnedElement) {
  const Element bin = make_bin_with("parser");
  const Element kept = make_element("identity", "parser");
  GstElement *const element = GST_ELEMENT_CAST(gst_object_ref(kept.get()));
  expect_refused(bin, element, "parser");
  EXPECT_EQ(reference_count(element), 1U);
  EXPECT_FALSE(g_object_is_floating(element));
  EXPECT_EQ(GST_OBJECT_PARENT(element), nullptr);
}

TEST(BinAddOfATakenName, ReleasesTheOnlyReferenceToAnOwnedElement) {
  const Element bin = make_bin_with("parser");
  GstElement *const element = make_element("identity", "parser").detach();
  const Weak_Watch watch(element);
  expect_refused(bin, element, "parser");
  EXPECT_TRUE(watch.gone());
}

TEST(BinAddOfATakenName, PrintsTheElementAndNotTheBin) {
  const Element bin = make_bin_with("100% %s");
  expect_refused(bin, gst_element_factory_make("fakesink", "100% %s"), "100% %s");
}

// Returns a bin type of an application, without a factory.
GType unregistered_type() {
  static const GType type = make_subclass(GST_TYPE_BIN, "TestUnregisteredBin");
  return type;
}

TEST(BinAddOfATakenName, PrintsEmptyParenthesesForAnElementWithoutAFactory) {
  const Element bin = make_bin_with("parser");
  GstElement *const element =
      GST_ELEMENT_CAST(g_object_new(unregistered_type(), "name", "parser", nullptr));
  ASSERT_EQ(gst_element_get_factory(element), nullptr);
  const Weak_Watch watch(element);
  expect_refused(bin, element, "parser");
  EXPECT_TRUE(watch.gone());
}

TEST(BinAdd, DoesNotReleaseAnElementOfAnotherBin) {
  const Element other = make_element("bin");
  const Element bin = make_element("bin");
  GstElement *const element = gst_element_factory_make("identity", "parser");
  gst_bin_add(as_bin(other), element);
  expect_refused(bin, element, "parser");
  EXPECT_EQ(reference_count(element), 1U);
  EXPECT_EQ(reference_count(other.get()), 1U);
  EXPECT_TRUE(is_child_of(element, other));
  EXPECT_EQ(child_count(bin), 0);
}

TEST(BinAdd, DoesNotReleaseAnElementAlreadyInTheBin) {
  const Element bin = make_element("bin");
  const Element element = make_element("identity", "parser");
  gst_bin_add(as_bin(bin), element.get());
  expect_refused(bin, element.get(), "parser");
  EXPECT_EQ(reference_count(element.get()), 2U);
  EXPECT_TRUE(is_child_of(element.get(), bin));
  EXPECT_EQ(child_count(bin), 1);
}

// The bin has no parent, so the rule for a taken name applies to it, too.
TEST(BinAdd, ReleasesOneReferenceToABinAddedToItself) {
  const Expected_Log assertion("GST_ELEMENT_CAST (bin) != element");
  const Element owned = make_element("bin", "recording");
  gst_object_ref(owned.get());
  expect_refused(owned, owned.get(), "recording");
  EXPECT_EQ(reference_count(owned.get()), 1U);

  GstElement *const floating = gst_element_factory_make("bin", "streaming");
  const Element holder(floating);
  ASSERT_TRUE(g_object_is_floating(floating));
  expect_refused(holder, floating, "streaming");
  EXPECT_EQ(reference_count(floating), 1U);
}

TEST(BinAdd, DoesNotReleaseABinWithAParentAddedToItself) {
  const Expected_Log assertion("GST_ELEMENT_CAST (bin) != element");
  const Element pipeline = make_element("pipeline");
  const Element bin = make_element("bin", "recording");
  gst_bin_add(as_bin(pipeline), bin.get());
  expect_refused(bin, bin.get(), "recording");
  EXPECT_EQ(reference_count(bin.get()), 2U);
  EXPECT_TRUE(is_child_of(bin.get(), pipeline));
}

TEST(BinAdd, KeepsTheFloatingReferenceIfTheBinIsInvalid) {
  const Element no_bin = make_element("identity");
  GstElement *const element = gst_element_factory_make("identity", "parser");
  for (GstBin *const bin : {static_cast<GstBin *>(nullptr), as_bin(no_bin)})
    expect_error({TEC::NOT_A_BIN, {"bin in gst_bin_add_or_throw"}},
                 [&] { Media_Helper::gst_bin_add_or_throw(bin, element); });
  EXPECT_TRUE(g_object_is_floating(element));
  EXPECT_EQ(reference_count(element), 1U);
  EXPECT_EQ(reference_count(no_bin.get()), 1U);
  gst_object_unref(element);
}

TEST(BinAdd, RefusesAnObjectThatIsNotAnElement) {
  const Element bin = make_element("bin");
  GstPad *const pad = gst_pad_new("src", GST_PAD_SRC);
  for (const gpointer wrong : {static_cast<gpointer>(nullptr), static_cast<gpointer>(pad)})
    expect_error({TEC::NOT_AN_ELEMENT, {"element in call to gst_bin_add_or_throw"}}, [&] {
      Media_Helper::gst_bin_add_or_throw(as_bin(bin), static_cast<GstElement *>(wrong));
    });
  EXPECT_TRUE(g_object_is_floating(pad));
  EXPECT_EQ(reference_count(pad), 1U);
  EXPECT_EQ(reference_count(bin.get()), 1U);
  gst_object_unref(pad);
}

TEST(BinAdd, ChecksTheBinFirst) {
  expect_error({TEC::NOT_A_BIN, {"bin in gst_bin_add_or_throw"}},
               [] { Media_Helper::gst_bin_add_or_throw(nullptr, nullptr); });
}

// The same operation under two names.
class CreateAndAdd
    : public testing::TestWithParam<decltype(&Media_Helper::create_and_add_element_to_bin)> {
protected:
  CreateAndAdd() { made_elements = &made_; }
  ~CreateAndAdd() override { made_elements = nullptr; }

  GstElement *create(const std::string &factory, GstElement *bin, const std::string &name) {
    made_.clear();
    return GetParam()(factory, bin, name);
  }

  bool nothing_made() const { return made_.empty(); }
  bool all_gone() const { return made_.size() == 1 && made_.front()->gone(); }

private:
  std::vector<std::unique_ptr<Weak_Watch>> made_;
};

TEST_P(CreateAndAdd, ReturnsABorrowedElementOfTheBin) {
  const Element bin = make_element("bin");
  GstElement *const element = create("identity", bin.get(), "parser");
  EXPECT_EQ(name_of(element), "parser");
  EXPECT_STREQ(G_OBJECT_TYPE_NAME(element), "GstIdentity");
  EXPECT_FALSE(g_object_is_floating(element));
  EXPECT_EQ(reference_count(element), 1U);
  EXPECT_EQ(reference_count(bin.get()), 1U);
  EXPECT_TRUE(is_child_of(element, bin));
}

TEST_P(CreateAndAdd, AcceptsAPipeline) {
  const Element pipeline = make_element("pipeline");
  GstElement *const element = create("identity", pipeline.get(), "parser");
  EXPECT_TRUE(is_child_of(element, pipeline));
}

TEST_P(CreateAndAdd, LetsTheFrameworkChooseNames) {
  const Element bin = make_element("bin");
  const std::string first = name_of(create("fakesink", bin.get(), ""));
  const std::string second = name_of(create("fakesink", bin.get(), ""));
  EXPECT_EQ(first.substr(0, 8), "fakesink");
  EXPECT_NE(first, second);
  EXPECT_EQ(child_count(bin), 2);
}

TEST_P(CreateAndAdd, ThrowsForNull) {
  expect_error({TEC::NOT_A_BIN, {"bin in create_and_add_element_to_bin"}},
               [this] { create("identity", nullptr, "parser"); });
  EXPECT_TRUE(nothing_made());
}

TEST_P(CreateAndAdd, ThrowsForAnObjectThatIsNotABin) {
  const Element no_bin = make_element("identity");
  const Expected_Log warning("invalid cast from 'GstIdentity' to 'GstBin'");
  expect_error({TEC::NOT_A_BIN, {"bin in create_and_add_element_to_bin"}},
               [&] { create("identity", no_bin.get(), "parser"); });
  EXPECT_TRUE(nothing_made());
  EXPECT_EQ(reference_count(no_bin.get()), 1U);
}

TEST_P(CreateAndAdd, ThrowsForAnUnknownFactory) {
  const Element bin = make_element("bin");
  expect_error({TEC::ELEMENT_CREATION_FAILED, {"nosuchfactory", "parser"}},
               [&] { create("nosuchfactory", bin.get(), "parser"); });
  expect_error({TEC::ELEMENT_CREATION_FAILED, {"nosuchfactory", ""}},
               [&] { create("nosuchfactory", bin.get(), ""); });
  EXPECT_TRUE(nothing_made());
  EXPECT_EQ(child_count(bin), 0);
  EXPECT_EQ(reference_count(bin.get()), 1U);
}

TEST_P(CreateAndAdd, DestroysAnElementThatTheBinRefuses) {
  const Element bin = make_bin_with("parser");
  expect_error({TEC::BIN_ADD_FAILED, {"parser", ""}},
               [&] { create("fakesink", bin.get(), "parser"); });
  EXPECT_TRUE(all_gone());
  EXPECT_EQ(child_count(bin), 1);
  EXPECT_EQ(reference_count(bin.get()), 1U);
}

INSTANTIATE_TEST_SUITE_P(Names, CreateAndAdd,
                         testing::Values(&Media_Helper::create_and_add_element_to_bin,
                                         &Media_Helper::create_and_add_element_to_pipeline),
                         [](const auto &test) {
                           return std::string(test.index == 0 ? "ToBin" : "ToPipeline");
                         });

}  // namespace
}  // namespace kel::tavren::tests
