// Searches of bins for elements by type and caps.

#include <vector>

#include "bin_search.h"
#include "replaced_function.h"

namespace {

// If set, the references of this pad are counted whenever caps are compared on this thread.
thread_local GstPad *watched_pad = nullptr;
thread_local guint references_while_comparing = 0;

}  // namespace

extern "C" gboolean gst_caps_is_subset(const GstCaps *subset, const GstCaps *superset) {
  static const auto is_subset = kel::tavren::tests::replaced_function(gst_caps_is_subset, __func__);
  if (watched_pad != nullptr) references_while_comparing = G_OBJECT(watched_pad)->ref_count;
  return is_subset(subset, superset);
}

namespace kel::tavren::tests {
namespace {

class BinSearch : public Bin_Search_Test {
protected:
  ~BinSearch() override { watched_pad = nullptr; }
};

TEST_F(BinSearch, FindsAnAppsinkWhoseCapsAreASubset) {
  const Element appsink =
      add_to_bin(bin_, make_appsink("video/x-raw,format=I420,width=640,height=480"));
  EXPECT_EQ(find_appsink(bin_, "video/x-raw"), appsink);
  EXPECT_EQ(find_appsink(bin_, "video/x-raw,format={I420,NV12}"), appsink);
  EXPECT_EQ(find_appsink(bin_, "ANY"), appsink);
  EXPECT_EQ(find_appsink(bin_, "audio/x-raw; video/x-raw"), appsink);
  EXPECT_FALSE(find_appsink(bin_, "video/x-raw,format=NV12"));
  EXPECT_FALSE(find_appsink(bin_, "audio/x-raw"));
  EXPECT_FALSE(find_appsink(bin_, "EMPTY"));
}

TEST_F(BinSearch, IgnoresAnAppsinkWithWiderCaps) {
  const Element appsink = add_to_bin(bin_, make_appsink("video/x-raw"));
  EXPECT_FALSE(find_appsink(bin_, "video/x-raw,format=I420"));
  EXPECT_EQ(find_appsink(bin_, "video/x-raw"), appsink);
}

TEST_F(BinSearch, IgnoresAnAppsinkWithoutCaps) {
  add_to_bin(bin_, make_appsink());
  EXPECT_FALSE(find_appsink(bin_, "ANY"));
  EXPECT_FALSE(find_appsink(bin_, "video/x-raw"));
}

// A tee in a pipeline videotestsrc ! capsfilter ! tee ! appsink, initially stopped.
class RunningTee : public Bin_Search_Test {
protected:
  RunningTee() {
    for (const Element &element : {source_, filter_, tee_, appsink_})
      add_to_bin(pipeline_, element);
    EXPECT_TRUE(gst_element_link_many(source_.get(), filter_.get(), tee_.get(), appsink_.get(),
                                      static_cast<GstElement *>(nullptr)));
    set_caps(filter_, "video/x-raw,format=I420,width=[16,64],height=32");
  }

  ~RunningTee() override { gst_element_set_state(pipeline_.get(), GST_STATE_NULL); }

  // Runs the pipeline until the appsink has its first picture.
  void negotiate() const {
    gst_element_set_state(pipeline_.get(), GST_STATE_PAUSED);
    ASSERT_EQ(gst_element_get_state(pipeline_.get(), nullptr, nullptr, 10 * GST_SECOND),
              GST_STATE_CHANGE_SUCCESS);
    ASSERT_TRUE(gst_pad_has_current_caps(static_pad(tee_, "sink").get()));
  }

  const Element pipeline_ = make_pipeline("pipeline");
  const Element source_ = make_element("videotestsrc");
  const Element filter_ = make_element("capsfilter");
  const Element tee_ = make_element("tee");
  const Element appsink_ = make_appsink();
};

constexpr const char *WIDE = "video/x-raw,format=I420,width=[16,64]";
constexpr const char *NARROW = "video/x-raw,format=I420,width=[16,63]";

TEST_F(RunningTee, IsFoundByThePossibleCapsOfItsPeerBeforeNegotiation) {
  EXPECT_EQ(find_tee(pipeline_, WIDE), tee_);
  EXPECT_EQ(find(pipeline_, tee_type_, WIDE), tee_);
  EXPECT_FALSE(find_tee(pipeline_, NARROW));
  EXPECT_FALSE(find_tee(pipeline_, "audio/x-raw"));
}

TEST_F(RunningTee, IsFoundByItsCurrentCapsAfterNegotiation) {
  negotiate();
  EXPECT_EQ(find_tee(pipeline_, WIDE), tee_);
  const Pad pad = static_pad(tee_, "sink");
  const Caps current(gst_pad_get_current_caps(pad.get()), false);
  const auto find_current = [&] {
    return Element(Media_Helper::find_tee_with_caps(as_bin(pipeline_), current.get()), false);
  };
  const auto peer_can_send_only = [&](const Caps &caps) {
    const Caps possible(gst_pad_peer_query_caps(pad.get(), nullptr), false);
    return gst_caps_is_subset(possible.get(), caps.get()) != FALSE;
  };
  ASSERT_FALSE(peer_can_send_only(current));
  EXPECT_EQ(find_current(), tee_);

  set_caps(filter_, "video/x-raw,format=NV12");
  ASSERT_TRUE(peer_can_send_only(make_caps("video/x-raw,format=NV12")));
  EXPECT_EQ(find_current(), tee_);
  EXPECT_FALSE(find_tee(pipeline_, "video/x-raw,format=NV12"));
}

TEST_F(RunningTee, IsFoundWithoutLeakingAReference) {
  const Caps wanted = make_caps(WIDE);
  for (const bool negotiated : {false, true}) {
    if (negotiated) negotiate();
    const Pad pad = static_pad(tee_, "sink");
    const std::vector<gpointer> objects{pipeline_.get(), filter_.get(), appsink_.get(), pad.get()};
    const auto before = reference_counts(objects);
    const guint tee_before = reference_count(tee_.get());
    const Caps current(gst_pad_get_current_caps(pad.get()), false);
    const gint current_before = negotiated ? reference_count(current.get()) : 0;
    {
      const Element found(Media_Helper::find_tee_with_caps(GST_BIN(pipeline_.get()), wanted.get()),
                          false);
      ASSERT_EQ(found, tee_);
      EXPECT_EQ(reference_count(tee_.get()), tee_before + 1);
    }
    EXPECT_EQ(reference_count(tee_.get()), tee_before);
    EXPECT_EQ(reference_counts(objects), before);
    EXPECT_EQ(reference_count(wanted.get()), 1);
    EXPECT_EQ(negotiated ? reference_count(current.get()) : 0, current_before);
  }
}

TEST_F(RunningTee, FeedsAnAppsinkThatIsFoundOnlyByItsCapsProperty) {
  negotiate();
  ASSERT_TRUE(gst_pad_has_current_caps(static_pad(appsink_, "sink").get()));
  EXPECT_FALSE(find_appsink(pipeline_, "ANY"));

  set_caps(appsink_, "video/x-raw");
  EXPECT_EQ(find_appsink(pipeline_, "video/x-raw"), appsink_);
  EXPECT_FALSE(find_appsink(pipeline_, WIDE));  // although its input would match
}

TEST_F(BinSearch, TreatsTheCapsOfAnUnlinkedTeeAsAny) {
  const Element tee = add_to_bin(bin_, make_element("tee"));
  EXPECT_FALSE(find_tee(bin_, "video/x-raw"));
  EXPECT_EQ(find_tee(bin_, "ANY"), tee);
}

TEST_F(BinSearch, AcceptsEmptyCapsAsASubsetOfAllCaps) {
  const Element appsink = add_to_bin(bin_, make_appsink("EMPTY"));
  for (const char *const wanted : {"video/x-raw", "ANY", "EMPTY"})
    EXPECT_EQ(find_appsink(bin_, wanted), appsink) << wanted;
}

gboolean answer_empty_caps(GstPad *pad, GstObject *parent, GstQuery *query) {
  if (GST_QUERY_TYPE(query) != GST_QUERY_CAPS) return gst_pad_query_default(pad, parent, query);
  gst_query_set_caps_result(query, make_caps("EMPTY").get());
  return TRUE;
}

TEST_F(BinSearch, AcceptsAPeerThatCanSendNothing) {
  const Element source = add_to_bin(bin_, make_bare_element());
  const Pad src_pad = add_pad(source, make_pad("src", GST_PAD_SRC));
  gst_pad_set_query_function(src_pad.get(), answer_empty_caps);
  const Element tee = add_to_bin(bin_, make_element("tee"));
  ASSERT_EQ(
      gst_pad_link_full(src_pad.get(), static_pad(tee, "sink").get(), GST_PAD_LINK_CHECK_NOTHING),
      GST_PAD_LINK_OK);
  EXPECT_EQ(find_tee(bin_, "video/x-raw"), tee);
}

TEST_F(BinSearch, ComparesTheCapsOfASourcePadNamedSink) {
  const Element element = add_to_bin(bin_, make_bare_element());
  const Pad pad = add_pad(element, make_pad("sink", GST_PAD_SRC));
  const GType type = G_OBJECT_TYPE(element.get());
  EXPECT_EQ(find(bin_, type, "ANY"), element);
  EXPECT_FALSE(find(bin_, type, "video/x-raw"));

  const Element filter = add_to_bin(bin_, make_element("capsfilter"));
  set_caps(filter, "video/x-raw,width=16");
  ASSERT_EQ(gst_pad_link(pad.get(), static_pad(filter, "sink").get()), GST_PAD_LINK_OK);
  EXPECT_EQ(find(bin_, type, "video/x-raw"), element);
  EXPECT_FALSE(find(bin_, type, "video/x-raw,width=32"));
}

TEST_F(BinSearch, ReleasesThePadBeforeItComparesCaps) {
  const Element tee = add_to_bin(bin_, make_element("tee"));
  const Pad pad = static_pad(tee, "sink");
  const guint before = reference_count(pad.get());
  watched_pad = pad.get();
  EXPECT_EQ(find_tee(bin_, "ANY"), tee);
  EXPECT_EQ(references_while_comparing, before);
}

TEST_F(BinSearch, IgnoresASourceElement) {
  const Element source = add_to_bin(bin_, make_element("videotestsrc"));
  EXPECT_TRUE(Media_Helper::bin_has_element_type(as_bin(bin_), G_OBJECT_TYPE(source.get())));
  EXPECT_FALSE(find(bin_, G_OBJECT_TYPE(source.get()), "ANY"));
}

TEST_F(BinSearch, FindsNothingInAnEmptyBin) {
  EXPECT_FALSE(find_tee(bin_, "ANY"));
  EXPECT_FALSE(find_appsink(bin_, "ANY"));
  EXPECT_TRUE(Media_Helper::find_all_appsinks(as_bin(bin_)).empty());
  EXPECT_FALSE(Media_Helper::bin_has_element_type(as_bin(bin_), tee_type_));
  EXPECT_EQ(reference_count(bin_.get()), 1u);
}

TEST_F(BinSearch, FindsNothingForAnUnregisteredType) {
  add_to_bin(bin_, make_element("tee"));
  EXPECT_FALSE(Media_Helper::bin_has_element_type(as_bin(bin_), 4));
  EXPECT_FALSE(find(bin_, 4, "ANY"));
}

TEST_F(BinSearch, RequiresTheExactType) {
  const Element tee = add_to_bin(bin_, make_of_type(tee_subclass()));
  const Element appsink = add_to_bin(bin_, make_of_type(appsink_subclass()));
  set_caps(appsink, "video/x-raw");
  EXPECT_FALSE(find_tee(bin_, "ANY"));
  EXPECT_FALSE(find_appsink(bin_, "ANY"));
  EXPECT_TRUE(Media_Helper::find_all_appsinks(as_bin(bin_)).empty());
  EXPECT_FALSE(Media_Helper::bin_has_element_type(as_bin(bin_), tee_type_));
  EXPECT_FALSE(Media_Helper::bin_has_element_type(as_bin(bin_), GST_TYPE_APP_SINK));
  EXPECT_FALSE(Media_Helper::bin_has_element_type(as_bin(bin_), GST_TYPE_ELEMENT));

  EXPECT_TRUE(Media_Helper::bin_has_element_type(as_bin(bin_), tee_subclass()));
  EXPECT_TRUE(Media_Helper::bin_has_element_type(as_bin(bin_), appsink_subclass()));
  EXPECT_EQ(find(bin_, tee_subclass(), "ANY"), tee);
}

TEST_F(BinSearch, UsesTheCapsPropertyOfAnAppsinkSubclass) {
  const Element appsink = add_to_bin(bin_, make_of_type(appsink_subclass()));
  EXPECT_FALSE(find(bin_, appsink_subclass(), "ANY"));
  set_caps(appsink, "video/x-raw");
  EXPECT_EQ(find(bin_, appsink_subclass(), "video/x-raw"), appsink);
}

TEST_F(BinSearch, SearchesNestedBins) {
  const Element outer = add_to_bin(bin_, make_bin("outer"));
  const Element inner = add_to_bin(outer, make_bin("inner"));
  const Element tee = add_to_bin(inner, make_element("tee"));
  const Element appsink = add_to_bin(inner, make_appsink("video/x-raw"));
  EXPECT_EQ(find_tee(bin_, "ANY"), tee);
  EXPECT_EQ(find_appsink(bin_, "video/x-raw"), appsink);
  EXPECT_EQ(Media_Helper::find_all_appsinks(as_bin(bin_)), Elements{appsink});
  EXPECT_TRUE(Media_Helper::bin_has_element_type(as_bin(bin_), tee_type_));
}

TEST_F(BinSearch, ExcludesTheBinItself) {
  EXPECT_FALSE(Media_Helper::bin_has_element_type(as_bin(bin_), GST_TYPE_BIN));
  add_to_bin(bin_, make_element("tee"));
  EXPECT_FALSE(Media_Helper::bin_has_element_type(as_bin(bin_), GST_TYPE_BIN));
  add_to_bin(bin_, make_bin("nested"));
  EXPECT_TRUE(Media_Helper::bin_has_element_type(as_bin(bin_), GST_TYPE_BIN));
  EXPECT_FALSE(Media_Helper::bin_has_element_type(as_bin(bin_), GST_TYPE_PIPELINE));
}

}  // namespace
}  // namespace kel::tavren::tests
