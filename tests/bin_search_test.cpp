// Searches of bins for elements by type and caps.

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include <dlfcn.h>
#include <gst/app/gstappsink.h>

#include "errors.h"
#include "log_watch.h"
#include "references.h"

namespace {

// If true, this thread finds no factories.
thread_local bool factories_are_missing = false;

// If set, iterations over bins on this thread call it after the first element, with the bin.
thread_local void (*change_during_walk)(GstBin *) = nullptr;

// If set, the references of this pad are counted whenever caps are compared on this thread.
thread_local GstPad *watched_pad = nullptr;
thread_local guint references_while_comparing = 0;

// Bits to flip in the element types of all factories on this thread.
thread_local GType type_difference = 0;

template <typename Function>
Function *framework(const char *name) {
  return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

// Shows every element of an iteration, and changes the bin once.
int show_and_change(gconstpointer, gconstpointer data) {
  const auto *const bin = static_cast<const GValue *>(data);
  if (void (*const change)(GstBin *) = change_during_walk; change != nullptr) {
    change_during_walk = nullptr;
    change(GST_BIN(g_value_get_object(bin)));
  }
  return 0;
}

}  // namespace

extern "C" GstElementFactory *gst_element_factory_find(const gchar *name) {
  static const auto find =
      framework<decltype(gst_element_factory_find)>("gst_element_factory_find");
  return factories_are_missing ? nullptr : find(name);
}

extern "C" GType gst_element_factory_get_element_type(GstElementFactory *factory) {
  static const auto get_type = framework<decltype(gst_element_factory_get_element_type)>(
      "gst_element_factory_get_element_type");
  return get_type(factory) ^ type_difference;
}

extern "C" gboolean gst_caps_is_subset(const GstCaps *subset, const GstCaps *superset) {
  static const auto is_subset = framework<decltype(gst_caps_is_subset)>("gst_caps_is_subset");
  if (watched_pad != nullptr) references_while_comparing = G_OBJECT(watched_pad)->ref_count;
  return is_subset(subset, superset);
}

extern "C" GstIterator *gst_bin_iterate_recurse(GstBin *bin) {
  static const auto iterate =
      framework<decltype(gst_bin_iterate_recurse)>("gst_bin_iterate_recurse");
  GstIterator *const iterator = iterate(bin);
  if (change_during_walk == nullptr) return iterator;
  GValue changed = G_VALUE_INIT;
  g_value_init(&changed, GST_TYPE_BIN);
  g_value_set_object(&changed, bin);
  GstIterator *const changing = gst_iterator_filter(iterator, show_and_change, &changed);
  g_value_unset(&changed);
  return changing;
}

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;
using Elements = std::vector<Element>;

Element add_to_bin(const Element &bin, const Element &element) {
  EXPECT_TRUE(gst_bin_add(GST_BIN(bin.get()), element.get()));
  return element;
}

// Returns a new type that inherits everything from another.
GType make_subclass(GType parent, const char *name) {
  GTypeQuery sizes;
  g_type_query(parent, &sizes);
  return g_type_register_static_simple(parent, name, sizes.class_size, nullptr, sizes.instance_size,
                                       nullptr, GTypeFlags{});
}

GType appsink_subclass() {
  static const GType type = make_subclass(GST_TYPE_APP_SINK, "TestAppSink");
  return type;
}

GType tee_subclass() {
  static const GType type = make_subclass(Media_Helper::get_element_type("tee"), "TestTee");
  return type;
}

Element make_of_type(GType type) {
  return Element(
      GST_ELEMENT_CAST(gst_object_ref_sink(static_cast<GstElement *>(g_object_new(type, nullptr)))),
      false);
}

void set_caps(const Element &element, const char *caps) {
  g_object_set(element.get(), "caps", make_caps(caps).get(), nullptr);
}

Element make_appsink(const char *caps = nullptr) {
  Element appsink = make_element("appsink");
  if (caps != nullptr) set_caps(appsink, caps);
  return appsink;
}

GstBin *as_bin(const Element &element) {
  return GST_BIN(element.get());
}

Element find(const Element &bin, GType type, const char *caps) {
  return Element(
      Media_Helper::find_element_with_caps_and_type(as_bin(bin), type, make_caps(caps).get()),
      false);
}

Element find_tee(const Element &bin, const char *caps) {
  return Element(Media_Helper::find_tee_with_caps(as_bin(bin), make_caps(caps).get()), false);
}

Element find_appsink(const Element &bin, const char *caps) {
  return Element(Media_Helper::find_appsink_with_caps(as_bin(bin), make_caps(caps).get()), false);
}

class BinSearch : public testing::Test {
protected:
  ~BinSearch() override {
    factories_are_missing = false;
    change_during_walk = nullptr;
    watched_pad = nullptr;
    type_difference = 0;
  }

  const Element bin_ = make_bin("bin");
  const GType tee_type_ = Media_Helper::get_element_type("tee");
};

// --- Arguments

class BinSearchArguments : public BinSearch {
protected:
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
    expect_error(0x15180, "bin is not a GstBin *.", [&] { search(bad, tee_type_, caps_.get()); });
  expect_error(0x15200, "element_type in find_element_with_caps_and_type is not a valid GType.",
               [&] { search(as_bin(bin_), 0, caps_.get()); });
  for (GstCaps *const bad : bad_caps_)
    expect_error(0x15210, "caps in find_element_with_caps_and_type is not a GstCaps *.",
                 [&] { search(as_bin(bin_), tee_type_, bad); });
  // In the order of the arguments.
  expect_error(0x15180, "bin is not a GstBin *.", [&] { search(nullptr, 0, nullptr); });
  expect_error(0x15200, "element_type in find_element_with_caps_and_type is not a valid GType.",
               [&] { search(as_bin(bin_), 0, nullptr); });
  EXPECT_EQ(reference_count(bin_.get()), 1u);
  EXPECT_EQ(reference_count(caps_.get()), 1);
}

TEST_F(BinSearchArguments, AreCheckedByFindTeeAndFindAppsink) {
  for (const auto search :
       {Media_Helper::find_tee_with_caps, Media_Helper::find_appsink_with_caps}) {
    for (GstBin *const bad : bad_bins_) {
      expect_error(0x15180, "bin is not a GstBin *.", [&] { search(bad, caps_.get()); });
      expect_error(0x15180, "bin is not a GstBin *.", [&] { search(bad, nullptr); });
    }
    for (GstCaps *const bad : bad_caps_)
      expect_error(0x15210, "caps in find_element_with_caps_and_type is not a GstCaps *.",
                   [&] { search(as_bin(bin_), bad); });
  }
}

TEST_F(BinSearchArguments, AreCheckedByFindAllAppsinks) {
  for (GstBin *const bad : bad_bins_)
    expect_error(0x15180, "bin in find_all_appsinks is not a GstBin *.",
                 [&] { Media_Helper::find_all_appsinks(bad); });
}

TEST_F(BinSearchArguments, AreCheckedByBinHasElementType) {
  for (GstBin *const bad : bad_bins_) {
    expect_error(0x15180, "bin in bin_has_element_type is not a GstBin *.",
                 [&] { Media_Helper::bin_has_element_type(bad, tee_type_); });
    expect_error(0x15180, "bin in bin_has_element_type is not a GstBin *.",
                 [&] { Media_Helper::bin_has_element_type(bad, 0); });
  }
  expect_error(0x15200, "element_type in bin_has_element_type is not a valid GType.",
               [&] { Media_Helper::bin_has_element_type(as_bin(bin_), 0); });
}

TEST_F(BinSearchArguments, AreCheckedAfterTheFactory) {
  factories_are_missing = true;
  expect_error(0x151D0, "Could not find factory for \"tee\" in gst_element_factory_find_or_throw",
               [] { Media_Helper::find_tee_with_caps(nullptr, nullptr); });
  expect_error(0x151D0,
               "Could not find factory for \"appsink\" in gst_element_factory_find_or_throw",
               [] { Media_Helper::find_appsink_with_caps(nullptr, nullptr); });
}

TEST_F(BinSearchArguments, AreCheckedBeforeTheFactoryByFindAllAppsinks) {
  factories_are_missing = true;
  expect_error(0x15180, "bin in find_all_appsinks is not a GstBin *.",
               [] { Media_Helper::find_all_appsinks(nullptr); });
  expect_error(0x151D0,
               "Could not find factory for \"appsink\" in gst_element_factory_find_or_throw",
               [&] { Media_Helper::find_all_appsinks(as_bin(bin_)); });
  EXPECT_EQ(reference_count(bin_.get()), 1u);
}

// --- Caps

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
class RunningTee : public BinSearch {
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

  const Element pipeline_{GST_ELEMENT_CAST(gst_object_ref_sink(gst_pipeline_new("pipeline"))),
                          false};
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

// Creates an element without pads. Tests add the pads that they need.
Element make_bare_element() {
  static const GType type = make_subclass(GST_TYPE_ELEMENT, "TestBareElement");
  return make_of_type(type);
}

Pad add_pad(const Element &element, const char *name, GstPadDirection direction) {
  Pad pad = make_pad(name, direction);
  EXPECT_TRUE(gst_element_add_pad(element.get(), pad.get()));
  return pad;
}

gboolean answer_empty_caps(GstPad *pad, GstObject *parent, GstQuery *query) {
  if (GST_QUERY_TYPE(query) != GST_QUERY_CAPS) return gst_pad_query_default(pad, parent, query);
  gst_query_set_caps_result(query, make_caps("EMPTY").get());
  return TRUE;
}

TEST_F(BinSearch, AcceptsAPeerThatCanSendNothing) {
  const Element source = add_to_bin(bin_, make_bare_element());
  const Pad src_pad = add_pad(source, "src", GST_PAD_SRC);
  gst_pad_set_query_function(src_pad.get(), answer_empty_caps);
  const Element tee = add_to_bin(bin_, make_element("tee"));
  ASSERT_EQ(
      gst_pad_link_full(src_pad.get(), static_pad(tee, "sink").get(), GST_PAD_LINK_CHECK_NOTHING),
      GST_PAD_LINK_OK);
  EXPECT_EQ(find_tee(bin_, "video/x-raw"), tee);
}

TEST_F(BinSearch, ComparesTheCapsOfASourcePadNamedSink) {
  const Element element = add_to_bin(bin_, make_bare_element());
  const Pad pad = add_pad(element, "sink", GST_PAD_SRC);
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

// --- Types and places

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

// Returns the appsinks of a bin in the framework's iteration order.
Elements walk(const Element &bin) {
  Elements elements;
  GstIterator *const iterator = gst_bin_iterate_recurse(as_bin(bin));
  const GstIteratorForeachFunction append = [](const GValue *item, gpointer list) {
    GstElement *const element = GST_ELEMENT(g_value_get_object(item));
    if (GST_IS_APP_SINK(element)) static_cast<Elements *>(list)->emplace_back(element);
  };
  gst_iterator_foreach(iterator, append, &elements);
  gst_iterator_free(iterator);
  return elements;
}

// Appsinks with two kinds of media, on three levels.
class ManyAppsinks : public BinSearch {
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

// --- Comparisons

// They are called from C code of the framework.
static_assert(noexcept(Media_Helper::caps_compare_func(nullptr, nullptr)));
static_assert(noexcept(Media_Helper::type_compare_func(nullptr, nullptr)));

class BinSearchComparison : public BinSearch {
protected:
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

// --- Bins that change meanwhile

void add_appsink(GstBin *bin) {
  ASSERT_TRUE(gst_bin_add(bin, make_appsink("audio/x-raw").get()));
}

void remove_appsinks(GstBin *bin) {
  for (const Element &appsink : walk(Element(GST_ELEMENT(bin))))
    ASSERT_TRUE(gst_bin_remove(bin, appsink.get()));
}

class ChangingBin : public BinSearch {
protected:
  ChangingBin() {
    for (int i = 0; i < 3; ++i)
      add_to_bin(bin_, make_appsink("video/x-raw"));
  }
};

TEST_F(ChangingBin, IsSearchedAgainAfterAnElementIsAdded) {
  change_during_walk = add_appsink;
  const Element found = find_appsink(bin_, "audio/x-raw");
  EXPECT_EQ(change_during_walk, nullptr);
  ASSERT_TRUE(found);
  EXPECT_EQ(GST_OBJECT_PARENT(found.get()), GST_OBJECT(bin_.get()));
  EXPECT_EQ(reference_count(found.get()), 2u);
  EXPECT_EQ(reference_count(bin_.get()), 1u);
}

TEST_F(ChangingBin, IsCheckedForATypeAgainAfterAnElementIsAdded) {
  change_during_walk = [](GstBin *bin) { gst_bin_add(bin, make_element("tee").get()); };
  EXPECT_TRUE(Media_Helper::bin_has_element_type(as_bin(bin_), tee_type_));
  EXPECT_EQ(change_during_walk, nullptr);
  EXPECT_EQ(reference_count(bin_.get()), 1u);
}

TEST_F(ChangingBin, IsSearchedAgainAfterElementsAreRemoved) {
  change_during_walk = remove_appsinks;
  EXPECT_FALSE(find_appsink(bin_, "audio/x-raw"));
  EXPECT_EQ(change_during_walk, nullptr);
  EXPECT_EQ(GST_BIN_NUMCHILDREN(bin_.get()), 0);
  EXPECT_EQ(reference_count(bin_.get()), 1u);
}

TEST_F(ChangingBin, IsListedOnlyUpToTheAdditionOfAnElement) {
  const Elements before = walk(bin_);
  const std::vector<guint> counts = reference_counts({before[0].get(), before[1].get()});
  change_during_walk = add_appsink;
  EXPECT_EQ(Media_Helper::find_all_appsinks(as_bin(bin_)), Elements{before[0]});
  EXPECT_EQ(change_during_walk, nullptr);
  EXPECT_EQ(GST_BIN_NUMCHILDREN(bin_.get()), 4);
  EXPECT_EQ(reference_counts({before[0].get(), before[1].get()}), counts);
}

TEST_F(ChangingBin, IsListedOnlyUpToTheRemovalOfElements) {
  change_during_walk = remove_appsinks;
  const Elements found = Media_Helper::find_all_appsinks(as_bin(bin_));
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(reference_count(found[0].get()), 1u);
  EXPECT_EQ(GST_BIN_NUMCHILDREN(bin_.get()), 0);
}

// The peer of a tee may be any element, even one that changes the bin during a caps query.
int caps_questions = 0;

gboolean change_bin_and_answer(GstPad *pad, GstObject *parent, GstQuery *query) {
  if (GST_QUERY_TYPE(query) == GST_QUERY_CAPS && ++caps_questions == 1) {
    const Element bin(GST_ELEMENT(gst_object_get_parent(parent)), false);
    add_appsink(as_bin(bin));
  }
  return gst_pad_query_default(pad, parent, query);
}

TEST_F(ChangingBin, MayBeChangedByAnElementThatIsQueried) {
  const Element source = add_to_bin(bin_, make_element("videotestsrc"));
  const Element tee = add_to_bin(bin_, make_element("tee"));
  ASSERT_TRUE(gst_element_link(source.get(), tee.get()));
  gst_pad_set_query_function(static_pad(source, "src").get(), change_bin_and_answer);
  caps_questions = 0;
  EXPECT_FALSE(find_tee(bin_, "audio/x-raw"));
  EXPECT_EQ(caps_questions, 2);
  EXPECT_EQ(walk(bin_).size(), 4u);
}

TEST_F(ChangingBin, IsSearchedWhileAnotherThreadChangesIt) {
  const Element tee = add_to_bin(bin_, make_element("tee"));
  const Elements kept = walk(bin_);
  std::atomic<bool> done{false};
  std::thread changer([&] {
    while (!done) {
      const Element appsink = add_to_bin(bin_, make_appsink("audio/x-raw"));
      std::this_thread::sleep_for(std::chrono::microseconds(50));
      gst_bin_remove(as_bin(bin_), appsink.get());
      std::this_thread::sleep_for(std::chrono::microseconds(50));
    }
  });
  for (int i = 0; i < 1000; ++i) {
    EXPECT_EQ(find_tee(bin_, "ANY"), tee);
    EXPECT_TRUE(find_appsink(bin_, "video/x-raw"));
    EXPECT_TRUE(Media_Helper::bin_has_element_type(as_bin(bin_), tee_type_));
    EXPECT_FALSE(Media_Helper::bin_has_element_type(as_bin(bin_), GST_TYPE_BIN));
    EXPECT_LE(Media_Helper::find_all_appsinks(as_bin(bin_)).size(), kept.size() + 1);
  }
  done = true;
  changer.join();
  EXPECT_EQ(walk(bin_), kept);
  for (const Element &appsink : kept)
    EXPECT_EQ(reference_count(appsink.get()), 2u);  // the bin's and the list's
  EXPECT_EQ(reference_count(bin_.get()), 1u);
}

}  // namespace
}  // namespace kel::tavren::tests
