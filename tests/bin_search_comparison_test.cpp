// The comparisons with which bins are searched.

#include "bin_search.h"
#include "replaced_function.h"

namespace {

// Bits to flip in the element types of all factories on this thread.
thread_local GType type_difference = 0;

}  // namespace

extern "C" GType gst_element_factory_get_element_type(GstElementFactory *factory) {
  static const auto get_type =
      kel::tavren::tests::replaced_function(gst_element_factory_get_element_type, __func__);
  return get_type(factory) ^ type_difference;
}

namespace kel::tavren::tests {
namespace {

// They are called from C code of the framework.
static_assert(noexcept(Media_Helper::caps_compare_func(nullptr, nullptr)));
static_assert(noexcept(Media_Helper::type_compare_func(nullptr, nullptr)));

class BinSearchComparison : public Bin_Search_Test {
protected:
  ~BinSearchComparison() override { type_difference = 0; }

  static int compare_caps(const Element &element, GType type, const char *caps) {
    const Caps wanted_caps = make_caps(caps);
    Media_Helper::FindElementCapsTypeHelper wanted{type, wanted_caps.get()};
    const int result = with_value(element, [&](const GValue *value) {
      return Media_Helper::caps_compare_func(value, &wanted);
    });
    EXPECT_EQ(reference_count(wanted_caps.get()), 1);
    return result;
  }

  static int compare_type(const Element &element, unsigned long long type) {
    return with_value(element, [&](const GValue *value) {
      return Media_Helper::type_compare_func(value, &type);
    });
  }

private:
  template <typename Compare>
  static int with_value(const Element &element, Compare compare) {
    const guint before = reference_count(element.get());
    GValue value = G_VALUE_INIT;
    g_value_init(&value, GST_TYPE_ELEMENT);
    g_value_set_object(&value, element.get());
    const int result = compare(&value);
    g_value_unset(&value);
    EXPECT_EQ(reference_count(element.get()), before);
    return result;
  }
};

TEST_F(BinSearchComparison, OfTypesIsExact) {
  EXPECT_EQ(compare_type(make_element("tee"), tee_type_), 0);
  EXPECT_EQ(compare_type(make_element("tee"), GST_TYPE_ELEMENT), -1);
  EXPECT_EQ(compare_type(make_element("queue"), tee_type_), -1);
  EXPECT_EQ(compare_type(make_of_type(tee_subclass()), tee_type_), -1);
}

// In separate bins, because the types of tees and appsinks may differ in only one bit.
TEST_F(BinSearchComparison, OfTypesComparesEveryBit) {
  const Element tee = add_to_bin(bin_, make_element("tee"));
  const Element other_bin = make_bin("other");
  add_to_bin(other_bin, make_appsink("video/x-raw"));
  for (unsigned bit = 0; bit < 64; ++bit) {
    SCOPED_TRACE(bit);
    type_difference = 1ULL << bit;
    const unsigned long long other = Media_Helper::get_element_type("tee");
    EXPECT_EQ(other, tee_type_ ^ type_difference);
    EXPECT_EQ(compare_type(tee, other), -1);
    EXPECT_EQ(compare_caps(tee, other, "ANY"), -1);
    EXPECT_FALSE(Media_Helper::bin_has_element_type(as_bin(bin_), other));
    EXPECT_FALSE(find_tee(bin_, "ANY"));
    EXPECT_FALSE(find_appsink(other_bin, "ANY"));
    EXPECT_TRUE(Media_Helper::find_all_appsinks(as_bin(other_bin)).empty());
  }
}

TEST_F(BinSearchComparison, OfCapsAlsoComparesTheType) {
  const Element appsink = make_appsink("video/x-raw,format=I420");
  EXPECT_EQ(compare_caps(appsink, GST_TYPE_APP_SINK, "video/x-raw"), 0);
  EXPECT_EQ(compare_caps(appsink, tee_type_, "video/x-raw"), -1);
  EXPECT_EQ(compare_caps(appsink, GST_TYPE_APP_SINK, "video/x-raw,format=NV12"), -1);
  EXPECT_EQ(compare_caps(make_appsink(), GST_TYPE_APP_SINK, "ANY"), -1);
  EXPECT_EQ(compare_caps(make_of_type(appsink_subclass()), GST_TYPE_APP_SINK, "ANY"), -1);
}

TEST_F(BinSearchComparison, OfCapsRequiresASinkPad) {
  const Element source = make_element("fakesrc");
  EXPECT_EQ(compare_caps(source, G_OBJECT_TYPE(source.get()), "ANY"), -1);
  EXPECT_EQ(compare_caps(make_element("tee"), tee_type_, "ANY"), 0);
}

}  // namespace
}  // namespace kel::tavren::tests
