// Static pads by name.

#include <string>
#include <vector>

#include "elements.h"
#include "errors.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

// Unlike standard factories, the element's factory has metadata with the key "name".
void describe_with_a_name(gpointer element_class, gpointer) {
  gst_element_class_set_static_metadata(GST_ELEMENT_CLASS(element_class), "Named", "Test",
                                        "Has a name in its metadata", "Nobody");
  gst_element_class_add_static_metadata(GST_ELEMENT_CLASS(element_class), "name",
                                        "The \"%s\" Name");
}

Element make_element_of_a_named_factory(const char *name) {
  static const bool registered = [] {
    const GType type = make_subclass(GST_TYPE_ELEMENT, "TestNamedElement", describe_with_a_name);
    return gst_element_register(nullptr, "testnamedelement", GST_RANK_NONE, type) != FALSE;
  }();
  EXPECT_TRUE(registered);
  return make_element("testnamedelement", name);
}

TEST(GetStaticPad, ReportsABadElement) {
  const Pad pad = make_pad("src", GST_PAD_SRC);
  for (GstElement *const bad : {as_element(nullptr), as_element(pad)})
    expect_error({TEC::NOT_AN_ELEMENT, {"element in gst_element_get_static_pad_or_throw"}},
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
  expect_error({TEC::STATIC_PAD_NOT_FOUND, {"src", "splitter", ""}},
               [&] { Media_Helper::gst_element_get_static_pad_or_throw(tee.get(), "src"); });
  expect_error({TEC::STATIC_PAD_NOT_FOUND, {"", "splitter", ""}},
               [&] { Media_Helper::gst_element_get_static_pad_or_throw(tee.get(), ""); });
  EXPECT_EQ(reference_counts({tee.get(), gst_element_get_factory(tee.get())}), before);
}

TEST(GetStaticPad, DoesNotTreatANameAsAFormat) {
  const Element tee = make_element("tee", "100%s %1% %");
  expect_error({TEC::STATIC_PAD_NOT_FOUND, {"%d%%2%", "100%s %1% %", ""}},
               [&] { Media_Helper::gst_element_get_static_pad_or_throw(tee.get(), "%d%%2%"); });
}

TEST(GetStaticPad, PrintsTheNameMetadataOfTheFactory) {
  const Element element = make_element_of_a_named_factory("thing");
  expect_error({TEC::STATIC_PAD_NOT_FOUND, {"sink", "thing", "The \"%s\" Name"}},
               [&] { Media_Helper::gst_element_get_static_pad_or_throw(element.get(), "sink"); });
}

TEST(GetStaticPad, PrintsNothingForAnElementWithoutAFactory) {
  const Element element = make_bare_element("homemade");
  expect_error({TEC::STATIC_PAD_NOT_FOUND, {"sink", "homemade", ""}},
               [&] { Media_Helper::gst_element_get_static_pad_or_throw(element.get(), "sink"); });
  EXPECT_EQ(reference_count(element.get()), 1u);
}

}  // namespace
}  // namespace kel::tavren::tests
