// Bins with many appsinks: the list of all, and the search for one.

#include <vector>

#include "bin_search.h"

namespace kel::tavren::tests {
namespace {

// Appsinks with two kinds of media, on three levels.
class ManyAppsinks : public Bin_Search_Test {
protected:
  ManyAppsinks() {
    for (const Element &bin : {bin_, outer_, inner_})
      for (const char *const caps : {"video/x-raw", "audio/x-raw", "video/x-raw"})
        add_to_bin(bin, make_appsink(caps));
    add_to_bin(bin_, outer_);
    add_to_bin(outer_, inner_);
  }

  const Element outer_ = make_bin("outer");
  const Element inner_ = make_bin("inner");
};

TEST_F(ManyAppsinks, AreListedInIterationOrder) {
  const Elements expected = walk(bin_);
  ASSERT_EQ(expected.size(), 9u);
  EXPECT_EQ(Media_Helper::find_all_appsinks(as_bin(bin_)), expected);
}

TEST_F(ManyAppsinks, AreListedWithOneReferenceEach) {
  const Elements appsinks = walk(bin_);
  std::vector<gpointer> objects{bin_.get(), outer_.get(), inner_.get()};
  for (const Element &appsink : appsinks)
    objects.push_back(appsink.get());
  const auto before = reference_counts(objects);
  {
    const Elements found = Media_Helper::find_all_appsinks(as_bin(bin_));
    ASSERT_EQ(found.size(), appsinks.size());
    auto held = before;
    for (std::size_t i = 3; i < held.size(); ++i)
      ++held[i];
    EXPECT_EQ(reference_counts(objects), held);
  }
  EXPECT_EQ(reference_counts(objects), before);
}

TEST_F(ManyAppsinks, OutliveTheirBinInTheList) {
  Elements found;
  {
    const Element bin = make_bin("short-lived");
    add_to_bin(bin, make_appsink());
    found = Media_Helper::find_all_appsinks(as_bin(bin));
  }
  ASSERT_EQ(found.size(), 1u);
  const Weak_Watch watch(found[0].get());
  EXPECT_EQ(reference_count(found[0].get()), 1u);
  EXPECT_EQ(GST_OBJECT_PARENT(found[0].get()), nullptr);
  found.clear();
  EXPECT_TRUE(watch.gone());
}

TEST_F(ManyAppsinks, AreSearchedInIterationOrder) {
  for (const char *const wanted : {"audio/x-raw", "video/x-raw"}) {
    Element expected;
    for (const Element &appsink : walk(bin_)) {
      const Caps caps(gst_app_sink_get_caps(GST_APP_SINK(appsink.get())), false);
      if (!expected && gst_caps_is_subset(caps.get(), make_caps(wanted).get())) expected = appsink;
    }
    ASSERT_TRUE(expected);
    EXPECT_EQ(find_appsink(bin_, wanted), expected);
  }
}

TEST_F(ManyAppsinks, AreReturnedWithOneNewReference) {
  const Elements appsinks = walk(bin_);
  std::vector<gpointer> objects{bin_.get(), outer_.get(), inner_.get()};
  std::vector<Caps> caps;
  for (const Element &appsink : appsinks) {
    objects.push_back(appsink.get());
    caps.emplace_back(gst_app_sink_get_caps(GST_APP_SINK(appsink.get())), false);
  }
  const auto caps_counts = [&caps] {
    std::vector<gint> counts;
    for (const Caps &each : caps)
      counts.push_back(reference_count(each.get()));
    return counts;
  };
  const auto before = reference_counts(objects);
  const auto caps_before = caps_counts();
  const Caps wanted = make_caps("audio/x-raw");
  {
    const Element found(Media_Helper::find_appsink_with_caps(as_bin(bin_), wanted.get()), false);
    ASSERT_TRUE(found);
    auto held = before;
    for (std::size_t i = 0; i < objects.size(); ++i)
      if (objects[i] == found.get()) ++held[i];
    EXPECT_EQ(reference_counts(objects), held);
    EXPECT_EQ(caps_counts(), caps_before);
  }
  EXPECT_FALSE(find_appsink(bin_, "text/x-raw"));
  EXPECT_TRUE(Media_Helper::bin_has_element_type(as_bin(bin_), GST_TYPE_APP_SINK));
  EXPECT_EQ(reference_counts(objects), before);
  EXPECT_EQ(caps_counts(), caps_before);
  EXPECT_EQ(reference_count(wanted.get()), 1);
}

}  // namespace
}  // namespace kel::tavren::tests
