// Arguments of the searches of bins.

#include <vector>

#include "bin_search.h"
#include "errors.h"
#include "replaced_function.h"

namespace {

// If true, this thread finds no factories.
thread_local bool factories_are_missing = false;

}  // namespace

extern "C" GstElementFactory *gst_element_factory_find(const gchar *name) {
  static const auto find =
      kel::tavren::tests::replaced_function(gst_element_factory_find, __func__);
  return factories_are_missing ? nullptr : find(name);
}

namespace kel::tavren::tests {
namespace {

class BinSearchArguments : public Bin_Search_Test {
protected:
  ~BinSearchArguments() override { factories_are_missing = false; }

  // Null, and an element that is not a bin.
  const Element not_a_bin_ = make_element("identity");
  const std::vector<GstBin *> bad_bins_{nullptr, reinterpret_cast<GstBin *>(not_a_bin_.get())};

  // Null, and a mini-object that is not caps.
  const boost::intrusive_ptr<GstSample> not_caps_{
      gst_sample_new(nullptr, nullptr, nullptr, nullptr), false};
  const std::vector<GstCaps *> bad_caps_{nullptr, reinterpret_cast<GstCaps *>(not_caps_.get())};

  const Caps caps_ = make_caps("video/x-raw");
};

TEST_F(BinSearchArguments, AreCheckedByFindElementWithCapsAndType) {
  const auto search = [](GstBin *bin, unsigned long long type, GstCaps *caps) {
    Media_Helper::find_element_with_caps_and_type(bin, type, caps);
  };
  for (GstBin *const bad : bad_bins_)
    expect_error({TEC::NOT_A_BIN, {"bin"}}, [&] { search(bad, tee_type_, caps_.get()); });
  expect_error({TEC::INVALID_ELEMENT_TYPE, {"element_type in find_element_with_caps_and_type"}},
               [&] { search(as_bin(bin_), 0, caps_.get()); });
  for (GstCaps *const bad : bad_caps_)
    expect_error({TEC::NOT_CAPS, {"caps in find_element_with_caps_and_type"}},
                 [&] { search(as_bin(bin_), tee_type_, bad); });
  // In the order of the arguments.
  expect_error({TEC::NOT_A_BIN, {"bin"}}, [&] { search(nullptr, 0, nullptr); });
  expect_error({TEC::INVALID_ELEMENT_TYPE, {"element_type in find_element_with_caps_and_type"}},
               [&] { search(as_bin(bin_), 0, nullptr); });
  EXPECT_EQ(reference_count(bin_.get()), 1u);
  EXPECT_EQ(reference_count(caps_.get()), 1);
}

TEST_F(BinSearchArguments, AreCheckedByFindTeeAndFindAppsink) {
  for (const auto search :
       {Media_Helper::find_tee_with_caps, Media_Helper::find_appsink_with_caps}) {
    for (GstBin *const bad : bad_bins_) {
      expect_error({TEC::NOT_A_BIN, {"bin"}}, [&] { search(bad, caps_.get()); });
      expect_error({TEC::NOT_A_BIN, {"bin"}}, [&] { search(bad, nullptr); });
    }
    for (GstCaps *const bad : bad_caps_)
      expect_error({TEC::NOT_CAPS, {"caps in find_element_with_caps_and_type"}},
                   [&] { search(as_bin(bin_), bad); });
  }
}

TEST_F(BinSearchArguments, AreCheckedByFindAllAppsinks) {
  for (GstBin *const bad : bad_bins_)
    expect_error({TEC::NOT_A_BIN, {"bin in find_all_appsinks"}},
                 [&] { Media_Helper::find_all_appsinks(bad); });
}

TEST_F(BinSearchArguments, AreCheckedByBinHasElementType) {
  for (GstBin *const bad : bad_bins_) {
    expect_error({TEC::NOT_A_BIN, {"bin in bin_has_element_type"}},
                 [&] { Media_Helper::bin_has_element_type(bad, tee_type_); });
    expect_error({TEC::NOT_A_BIN, {"bin in bin_has_element_type"}},
                 [&] { Media_Helper::bin_has_element_type(bad, 0); });
  }
  expect_error({TEC::INVALID_ELEMENT_TYPE, {"element_type in bin_has_element_type"}},
               [&] { Media_Helper::bin_has_element_type(as_bin(bin_), 0); });
}

TEST_F(BinSearchArguments, AreCheckedAfterTheFactory) {
  factories_are_missing = true;
  expect_error({TEC::FACTORY_NOT_FOUND, {"tee"}},
               [] { Media_Helper::find_tee_with_caps(nullptr, nullptr); });
  expect_error({TEC::FACTORY_NOT_FOUND, {"appsink"}},
               [] { Media_Helper::find_appsink_with_caps(nullptr, nullptr); });
}

TEST_F(BinSearchArguments, AreCheckedBeforeTheFactoryByFindAllAppsinks) {
  factories_are_missing = true;
  expect_error({TEC::NOT_A_BIN, {"bin in find_all_appsinks"}},
               [] { Media_Helper::find_all_appsinks(nullptr); });
  expect_error({TEC::FACTORY_NOT_FOUND, {"appsink"}},
               [&] { Media_Helper::find_all_appsinks(as_bin(bin_)); });
  EXPECT_EQ(reference_count(bin_.get()), 1u);
}

}  // namespace
}  // namespace kel::tavren::tests
