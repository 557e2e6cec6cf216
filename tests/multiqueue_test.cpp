// Multiqueue streams: the partner of a pad, and new pairs of pads.

#include <atomic>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "elements.h"
#include "errors.h"
#include "log_watch.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

Pad partner_of(const Pad &pad) {
  return Pad(Media_Helper::get_corresponding_multiqueue_pad(pad.get()), false);
}

// The last request to an element that grants all requests.
struct Request {
  int made = 0;
  std::string name;
  bool named = false;
  const GstCaps *caps = nullptr;
};
Request last_request;

// Grants each request with a pad of the requested name, or "sink_0", and does not create a partner.
GstPad *grant_request(GstElement *element, GstPadTemplate *, const gchar *name,
                      const GstCaps *caps) {
  ++last_request.made;
  last_request.named = name != nullptr;
  last_request.name = name != nullptr ? name : "sink_0";
  last_request.caps = caps;
  GstPad *const pad = gst_pad_new(last_request.name.c_str(), GST_PAD_SINK);
  return gst_element_add_pad(element, pad) ? pad : nullptr;
}

void offer_sink_pads(gpointer element_class, gpointer) {
  const Caps any = make_caps("ANY");
  gst_element_class_add_pad_template(
      GST_ELEMENT_CLASS(element_class),
      gst_pad_template_new("sink_%u", GST_PAD_SINK, GST_PAD_REQUEST, any.get()));
  GST_ELEMENT_CLASS(element_class)->request_new_pad = grant_request;
}

// Creates an element without a factory that grants requests for any sink pad. Tests add further
// pads.
Element make_generous_element(const char *name) {
  static const GType type = make_subclass(GST_TYPE_ELEMENT, "TestGenerousElement", offer_sink_pads);
  return make_of_type(type, name);
}

// --- Partners

class CorrespondingMultiqueuePad : public testing::Test {
protected:
  Pad add_pad(const char *name, GstPadDirection direction) const {
    return tests::add_pad(element_, make_pad(name, direction));
  }

  const Element element_ = make_generous_element("element");
};

TEST_F(CorrespondingMultiqueuePad, ReportsABadPad) {
  for (GstPad *const bad :
       {static_cast<GstPad *>(nullptr), reinterpret_cast<GstPad *>(element_.get())})
    expect_error({TEC::NOT_A_PAD, {"multiqueue_pad in get_corresponding_multiqueue_pad"}},
                 [&] { Media_Helper::get_corresponding_multiqueue_pad(bad); });
  EXPECT_EQ(reference_count(element_.get()), 1u);
}

TEST_F(CorrespondingMultiqueuePad, IsThePadOfTheSameStream) {
  const Element multiqueue = make_element("multiqueue");
  const Pad sink_0 = request_pad(multiqueue.get(), "sink_%u");
  const Pad sink_1 = request_pad(multiqueue.get(), "sink_%u");
  const Pad src_0 = static_pad(multiqueue, "src_0");
  const Pad src_1 = static_pad(multiqueue, "src_1");
  EXPECT_EQ(partner_of(src_0), sink_0);
  EXPECT_EQ(partner_of(src_1), sink_1);
  EXPECT_EQ(partner_of(sink_0), src_0);
  EXPECT_EQ(partner_of(sink_1), src_1);
}

TEST_F(CorrespondingMultiqueuePad, IsReturnedWithOneNewReference) {
  const Element multiqueue = make_element("multiqueue");
  const Pad sink = request_pad(multiqueue.get(), "sink_%u");
  const Pad src = static_pad(multiqueue, "src_0");
  const auto before = reference_counts({multiqueue.get(), sink.get(), src.get()});
  {
    const Pad partner = partner_of(sink);
    EXPECT_EQ(reference_counts({multiqueue.get(), sink.get(), src.get()}),
              (std::vector<guint>{before[0], before[1], before[2] + 1}));
  }
  EXPECT_EQ(reference_counts({multiqueue.get(), sink.get(), src.get()}), before);
}

// Neither the name nor the direction is checked without a parent.
TEST_F(CorrespondingMultiqueuePad, RequiresAParent) {
  for (const Pad &pad : {make_pad("sink_0", GST_PAD_SINK), make_pad("nonsense", GST_PAD_SRC),
                         make_pad("src", GST_PAD_SRC), make_pad("src_0", GST_PAD_UNKNOWN)}) {
    expect_error({TEC::MULTIQUEUE_PAD_HAS_NO_PARENT}, [&] { partner_of(pad); });
    EXPECT_EQ(reference_count(pad.get()), 1u);
  }
}

// The parent of a ghost pad's internal pad is the ghost pad.
TEST_F(CorrespondingMultiqueuePad, RequiresAParentThatIsAnElement) {
  const Pad ghost = own(gst_ghost_pad_new_no_target("g", GST_PAD_SINK));
  const Pad internal(GST_PAD_CAST(gst_proxy_pad_get_internal(GST_PROXY_PAD(ghost.get()))), false);
  const auto before = reference_counts({ghost.get(), internal.get()});
  expect_error({TEC::MULTIQUEUE_PAD_HAS_NO_PARENT}, [&] { partner_of(internal); });
  EXPECT_EQ(reference_counts({ghost.get(), internal.get()}), before);
}

struct Named_Pad {
  const char *name;
  GstPadDirection direction;
};

void PrintTo(const Named_Pad &pad, std::ostream *out) {
  *out << "direction " << pad.direction << ", name " << pad.name;
}

class MisnamedMultiqueuePad : public CorrespondingMultiqueuePad,
                              public testing::WithParamInterface<Named_Pad> {};

TEST_P(MisnamedMultiqueuePad, HasNoCorrespondingPad) {
  const Pad pad = make_pad(GetParam().name, GetParam().direction);
  // An element rejects a pad without a direction, but can be set as the parent of one.
  ASSERT_TRUE(gst_object_set_parent(GST_OBJECT(pad.get()), GST_OBJECT(element_.get())));
  const auto before = reference_counts({element_.get(), pad.get()});
  expect_error({TEC::NOT_A_MULTIQUEUE_PAD_NAME}, [&] { partner_of(pad); });
  EXPECT_EQ(reference_counts({element_.get(), pad.get()}), before);
  gst_object_unparent(GST_OBJECT(pad.get()));
}

INSTANTIATE_TEST_SUITE_P(
    Names, MisnamedMultiqueuePad,
    testing::Values(Named_Pad{"src_0", GST_PAD_SINK}, Named_Pad{"sink_0", GST_PAD_SRC},
                    Named_Pad{"src_0", GST_PAD_UNKNOWN}, Named_Pad{"sink_0", GST_PAD_UNKNOWN},
                    Named_Pad{"video_0", GST_PAD_SRC}, Named_Pad{"Src_0", GST_PAD_SRC},
                    Named_Pad{"sr", GST_PAD_SRC}, Named_Pad{"sin_0", GST_PAD_SINK},
                    Named_Pad{"xsink_0", GST_PAD_SINK}, Named_Pad{"", GST_PAD_SINK}));

struct Pair_Of_Names {
  Named_Pad pad;
  const char *partner;
};

void PrintTo(const Pair_Of_Names &names, std::ostream *out) {
  *out << names.pad.name << " and " << names.partner;
}

class NamedMultiqueuePad : public CorrespondingMultiqueuePad,
                           public testing::WithParamInterface<Pair_Of_Names> {};

TEST_P(NamedMultiqueuePad, IsFoundByItsName) {
  const Pad pad = add_pad(GetParam().pad.name, GetParam().pad.direction);
  const Pad partner = add_pad(GetParam().partner, GST_PAD_SRC);
  EXPECT_EQ(partner_of(pad), partner);
}

TEST_P(NamedMultiqueuePad, IsReportedByNameIfItIsMissing) {
  const Pad pad = add_pad(GetParam().pad.name, GetParam().pad.direction);
  const auto before = reference_counts({element_.get(), pad.get()});
  expect_error({TEC::STATIC_PAD_NOT_FOUND, {GetParam().partner, "element", ""}},
               [&] { partner_of(pad); });
  EXPECT_EQ(reference_counts({element_.get(), pad.get()}), before);
}

// The prefix and the separator are removed by length only. The rest is text.
INSTANTIATE_TEST_SUITE_P(Names, NamedMultiqueuePad,
                         testing::Values(Pair_Of_Names{{"src_12", GST_PAD_SRC}, "sink_12"},
                                         Pair_Of_Names{{"sink_3", GST_PAD_SINK}, "src_3"},
                                         Pair_Of_Names{{"srcA7", GST_PAD_SRC}, "sink_7"},
                                         Pair_Of_Names{{"sinkB8", GST_PAD_SINK}, "src_8"},
                                         Pair_Of_Names{{"src_007", GST_PAD_SRC}, "sink_007"},
                                         Pair_Of_Names{{"sink_left eye", GST_PAD_SINK},
                                                       "src_left eye"},
                                         Pair_Of_Names{{"src_", GST_PAD_SRC}, "sink_"},
                                         Pair_Of_Names{{"sink_", GST_PAD_SINK}, "src_"},
                                         Pair_Of_Names{{"srcX", GST_PAD_SRC}, "sink_"},
                                         Pair_Of_Names{{"sink%s", GST_PAD_SINK}, "src_s"}));

TEST_F(CorrespondingMultiqueuePad, IsMissingOnAnElementWithoutPairsOfPads) {
  const Element funnel = make_element("funnel", "funnel");
  const Pad sink = request_pad(funnel.get(), "sink_5");
  const auto before = reference_counts({funnel.get(), sink.get()});
  expect_error({TEC::STATIC_PAD_NOT_FOUND, {"src_5", "funnel", ""}}, [&] { partner_of(sink); });
  EXPECT_EQ(reference_counts({funnel.get(), sink.get()}), before);
}

// A queue's pads have no suffix to copy. The standard library's text operations detect this, not a
// check.
TEST_F(CorrespondingMultiqueuePad, IsOutOfRangeForANameWithoutASuffix) {
  const Element queue = make_element("queue");
  const Pad sink = static_pad(queue, "sink");
  const Pad src = static_pad(queue, "src");
  const auto before = reference_counts({queue.get(), sink.get(), src.get()});
  EXPECT_THROW(partner_of(src), std::out_of_range);
  EXPECT_THROW(partner_of(sink), std::out_of_range);
  EXPECT_EQ(reference_counts({queue.get(), sink.get(), src.get()}), before);
}

// --- New streams

struct Stream {
  Pad sink;
  Pad src;
};

Stream request_stream(const Element &multiqueue, const std::string &name, const GstCaps *caps) {
  const std::pair<GstPad *, GstPad *> pads =
      Media_Helper::request_new_multiqueue_pads(multiqueue.get(), name, caps);
  return {Pad(pads.first, false), Pad(pads.second, false)};
}

void end_stream(const Element &multiqueue, const Stream &stream) {
  gst_element_release_request_pad(multiqueue.get(), stream.sink.get());
}

class RequestNewMultiqueuePads : public testing::Test {
protected:
  const Element multiqueue_ = make_element("multiqueue");
};

TEST_F(RequestNewMultiqueuePads, ReportsABadElement) {
  const Pad pad = make_pad("sink_0", GST_PAD_SINK);
  for (GstElement *const bad :
       {static_cast<GstElement *>(nullptr), reinterpret_cast<GstElement *>(pad.get())})
    expect_error({TEC::NOT_AN_ELEMENT, {"multiqueue element in request_new_multiqueue_pads"}},
                 [&] { Media_Helper::request_new_multiqueue_pads(bad, "", nullptr); });
}

TEST_F(RequestNewMultiqueuePads, LetsTheFrameworkNumberTheStreams) {
  const Stream first = request_stream(multiqueue_, "", nullptr);
  const Stream second = request_stream(multiqueue_, "", nullptr);
  EXPECT_EQ(name_of(first.sink.get()), "sink_0");
  EXPECT_EQ(name_of(first.src.get()), "src_0");
  EXPECT_EQ(name_of(second.sink.get()), "sink_1");
  EXPECT_EQ(name_of(second.src.get()), "src_1");
  EXPECT_EQ(gst_pad_get_direction(first.sink.get()), GST_PAD_SINK);
  EXPECT_EQ(gst_pad_get_direction(first.src.get()), GST_PAD_SRC);
  EXPECT_EQ(first.sink, static_pad(multiqueue_, "sink_0"));
  EXPECT_EQ(first.src, static_pad(multiqueue_, "src_0"));
}

TEST_F(RequestNewMultiqueuePads, NamesTheStream) {
  const Stream stream = request_stream(multiqueue_, "sink_7", nullptr);
  EXPECT_EQ(name_of(stream.sink.get()), "sink_7");
  EXPECT_EQ(name_of(stream.src.get()), "src_7");
}

TEST_F(RequestNewMultiqueuePads, ReturnsOneReferenceToEachPad) {
  const guint before = reference_count(multiqueue_.get());
  Stream stream = request_stream(multiqueue_, "", nullptr);
  EXPECT_EQ(reference_count(multiqueue_.get()), before);
  EXPECT_EQ(reference_count(stream.src.get()), 2u);  // the multiqueue's and this one
  const Weak_Watch sink_watch(stream.sink.get());
  const Weak_Watch src_watch(stream.src.get());
  end_stream(multiqueue_, stream);
  EXPECT_EQ(reference_count(stream.sink.get()), 1u);
  EXPECT_EQ(reference_count(stream.src.get()), 1u);
  stream = {};
  EXPECT_TRUE(sink_watch.gone());
  EXPECT_TRUE(src_watch.gone());
  EXPECT_EQ(multiqueue_->numpads, 0);
}

TEST_F(RequestNewMultiqueuePads, ReportsAnElementWithoutTheTemplate) {
  const Element tee = make_element("tee");
  const guint before = reference_count(tee.get());
  expect_error({TEC::MULTIQUEUE_HAS_NO_SINK_PAD_TEMPLATE},
               [&] { Media_Helper::request_new_multiqueue_pads(tee.get(), "", nullptr); });
  EXPECT_EQ(tee->numpads, 1);
  EXPECT_EQ(reference_count(tee.get()), before);
}

TEST_F(RequestNewMultiqueuePads, ReportsATakenName) {
  const Stream stream = request_stream(multiqueue_, "sink_2", nullptr);
  const std::vector<gpointer> objects{multiqueue_.get(), stream.sink.get(), stream.src.get()};
  const auto before = reference_counts(objects);
  const Expected_Log log("sink_2");
  expect_error({TEC::MULTIQUEUE_SINK_PAD_REQUEST_FAILED}, [&] {
    Media_Helper::request_new_multiqueue_pads(multiqueue_.get(), "sink_2", nullptr);
  });
  EXPECT_EQ(multiqueue_->numpads, 2);
  EXPECT_EQ(reference_counts(objects), before);
}

TEST_F(RequestNewMultiqueuePads, PassesNameAndCapsOnUnchanged) {
  const Element element = make_generous_element("element");
  const Caps caps = make_caps("video/x-raw, width=(int)[ 1, 640 ]");
  ASSERT_TRUE(gst_element_add_pad(element.get(), gst_pad_new("src_0", GST_PAD_SRC)));
  ASSERT_TRUE(gst_element_add_pad(element.get(), gst_pad_new("src_4", GST_PAD_SRC)));
  last_request = {};

  const Stream unnamed = request_stream(element, "", caps.get());
  EXPECT_EQ(last_request.made, 1);
  EXPECT_FALSE(last_request.named);
  EXPECT_EQ(last_request.caps, caps.get());
  EXPECT_EQ(unnamed.sink, static_pad(element, "sink_0"));
  EXPECT_EQ(unnamed.src, static_pad(element, "src_0"));

  const Stream named = request_stream(element, "sink_4", nullptr);
  EXPECT_EQ(last_request.made, 2);
  EXPECT_TRUE(last_request.named);
  EXPECT_EQ(last_request.name, "sink_4");
  EXPECT_EQ(last_request.caps, nullptr);
  EXPECT_EQ(named.src, static_pad(element, "src_4"));
  EXPECT_EQ(reference_count(caps.get()), 1);
}

// An element that grants a pad without a partner. The caller must release the granted pad, which
// remains on the element with the reference of the request.
class RequestNewMultiqueuePadsWithoutASourcePad : public testing::Test {
protected:
  void expect_pad_left() const {
    ASSERT_EQ(funnel_->numsinkpads, 1);
    const Pad left(GST_PAD(funnel_->sinkpads->data));
    EXPECT_EQ(reference_count(left.get()), 3u);  // the element's, the request's and this one
    const Pad of_request(left.get(), false);
    gst_element_release_request_pad(funnel_.get(), left.get());
  }

  const Element funnel_ = make_element("funnel", "funnel");
};

TEST_F(RequestNewMultiqueuePadsWithoutASourcePad, LeavesTheSinkPad) {
  const guint before = reference_count(funnel_.get());
  expect_error({TEC::STATIC_PAD_NOT_FOUND, {"src_5", "funnel", ""}}, [&] {
    Media_Helper::request_new_multiqueue_pads(funnel_.get(), "sink_5", nullptr);
  });
  EXPECT_EQ(reference_count(funnel_.get()), before);
  expect_pad_left();
}

// A funnel numbers its pads differently.
TEST_F(RequestNewMultiqueuePadsWithoutASourcePad, LeavesTheSinkPadIfItsNameDoesNotFit) {
  const guint before = reference_count(funnel_.get());
  expect_error({TEC::NOT_A_MULTIQUEUE_PAD_NAME},
               [&] { Media_Helper::request_new_multiqueue_pads(funnel_.get(), "", nullptr); });
  EXPECT_EQ(reference_count(funnel_.get()), before);
  expect_pad_left();
}

void count_buffer(GstElement *, GstBuffer *, GstPad *, std::atomic<int> *count) {
  ++*count;
}

TEST_F(RequestNewMultiqueuePads, PassesAWholeStreamThrough) {
  const Element pipeline = make_pipeline();
  const Element source = make_element("fakesrc");
  const Element multiqueue = make_element("multiqueue");
  const Element sink = make_element("fakesink");
  g_object_set(source.get(), "num-buffers", 4, nullptr);
  g_object_set(sink.get(), "signal-handoffs", TRUE, nullptr);
  for (const Element &element : {source, multiqueue, sink})
    add_to_bin(pipeline, element);
  const Stream stream = request_stream(multiqueue, "", nullptr);
  ASSERT_TRUE(Media_Helper::link_element_to_pad(source.get(), stream.sink.get()));
  ASSERT_TRUE(Media_Helper::link_pad_to_element(stream.src.get(), sink.get()));

  std::atomic<int> buffers{0};
  g_signal_connect(sink.get(), "handoff", G_CALLBACK(count_buffer), &buffers);
  ASSERT_EQ(play_to_end(pipeline), GST_MESSAGE_EOS);
  EXPECT_EQ(buffers, 4);
}

}  // namespace
}  // namespace kel::tavren::tests
