// Tee branches: source pads requested from a tee, and branches linked to them.

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "elements.h"
#include "errors.h"
#include "log_watch.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

Pad peer_of(const Pad &pad) {
  return Pad(gst_pad_get_peer(pad.get()), false);
}

// Releases a requested pad and the reference to it.
void end_branch(const Element &tee, Pad &pad) {
  gst_element_release_request_pad(tee.get(), pad.get());
  pad.reset();
}

// Defines an element with a request template for source pads that grants none.
void offer_source_pads(gpointer element_class, gpointer) {
  const Caps any = make_caps("ANY");
  gst_element_class_add_pad_template(
      GST_ELEMENT_CLASS(element_class),
      gst_pad_template_new("src_%u", GST_PAD_SRC, GST_PAD_REQUEST, any.get()));
  GST_ELEMENT_CLASS(element_class)->request_new_pad =
      [](GstElement *, GstPadTemplate *, const gchar *, const GstCaps *) -> GstPad * {
    return nullptr;
  };
}

Element make_stingy_element() {
  static const GType type = make_subclass(GST_TYPE_ELEMENT, "TestStingyElement", offer_source_pads);
  return make_of_type(type);
}

class GetTeeSrcPad : public testing::Test {
protected:
  const Element tee_ = make_element("tee");
};

TEST_F(GetTeeSrcPad, ReportsABadElement) {
  const Pad sink_pad = static_pad(tee_, "sink");
  for (GstElement *const bad :
       {static_cast<GstElement *>(nullptr), reinterpret_cast<GstElement *>(sink_pad.get())})
    expect_error({TEC::NOT_AN_ELEMENT, {"tee element in get_tee_src_pad"}},
                 [&] { Media_Helper::get_tee_src_pad(bad); });
  EXPECT_EQ(tee_->numsrcpads, 0);
}

TEST_F(GetTeeSrcPad, ReturnsANewPadEachTime) {
  const guint before = reference_count(tee_.get());
  Pad first(Media_Helper::get_tee_src_pad(tee_.get()), false);
  Pad second(Media_Helper::get_tee_src_pad(tee_.get()), false);
  EXPECT_NE(first, second);
  EXPECT_STREQ(GST_OBJECT_NAME(first.get()), "src_0");
  EXPECT_STREQ(GST_OBJECT_NAME(second.get()), "src_1");
  EXPECT_EQ(gst_pad_get_direction(first.get()), GST_PAD_SRC);
  EXPECT_EQ(GST_OBJECT_PARENT(first.get()), GST_OBJECT(tee_.get()));
  EXPECT_EQ(tee_->numsrcpads, 2);
  EXPECT_EQ(reference_count(tee_.get()), before);
  end_branch(tee_, first);
  end_branch(tee_, second);
}

TEST_F(GetTeeSrcPad, ReturnsTheReferenceOfTheRequest) {
  Pad pad(Media_Helper::get_tee_src_pad(tee_.get()), false);
  EXPECT_EQ(reference_count(pad.get()), 2u);  // the tee's and this one
  const Weak_Watch watch(pad.get());
  end_branch(tee_, pad);
  EXPECT_TRUE(watch.gone());
  EXPECT_EQ(tee_->numsrcpads, 0);
}

TEST_F(GetTeeSrcPad, ReportsAnElementWithoutTheTemplate) {
  const Element queue = make_element("queue");
  const guint before = reference_count(queue.get());
  expect_error({TEC::TEE_HAS_NO_SRC_PAD_TEMPLATE},
               [&] { Media_Helper::get_tee_src_pad(queue.get()); });
  EXPECT_EQ(reference_count(queue.get()), before);
  EXPECT_EQ(queue->numpads, 2);
}

TEST_F(GetTeeSrcPad, AcceptsAnyElementWithTheTemplate) {
  const Element selector = make_element("output-selector");
  Pad pad(Media_Helper::get_tee_src_pad(selector.get()), false);
  EXPECT_EQ(GST_OBJECT_PARENT(pad.get()), GST_OBJECT(selector.get()));
  EXPECT_EQ(selector->numsrcpads, 1);
  end_branch(selector, pad);
}

TEST_F(GetTeeSrcPad, ReportsAnElementThatProvidesNoPad) {
  const Element stingy = make_stingy_element();
  expect_error({TEC::TEE_SRC_PAD_REQUEST_FAILED},
               [&] { Media_Helper::get_tee_src_pad(stingy.get()); });
  EXPECT_EQ(reference_count(stingy.get()), 1u);
}

// The source pads of a decoder have this template, too, but cannot be requested.
TEST_F(GetTeeSrcPad, ReportsAnElementWithSometimesPads) {
  const Element decoder = make_element("decodebin");
  const guint before = reference_count(decoder.get());
  const Expected_Log log("gst_element_request_pad: assertion 'templ->presence");
  expect_error({TEC::TEE_SRC_PAD_REQUEST_FAILED},
               [&] { Media_Helper::get_tee_src_pad(decoder.get()); });
  EXPECT_EQ(reference_count(decoder.get()), before);
  EXPECT_EQ(decoder->numsrcpads, 0);
}

// The requests to an element, and the references to its pad when the pad was released.
struct Request_Record {
  std::vector<std::string> names;
  std::vector<Caps> caps;
  guint references_on_release = 0;
};
Request_Record *request_record = nullptr;

GstPad *record_request(GstElement *element, GstPadTemplate *pad_template, const gchar *name,
                       const GstCaps *caps) {
  request_record->names.emplace_back(name != nullptr ? name : "(null)");
  request_record->caps.emplace_back(const_cast<GstCaps *>(caps));
  GstPad *const pad = gst_pad_new_from_template(pad_template, "src_0");
  gst_element_add_pad(element, pad);
  return pad;
}

void record_release(GstElement *element, GstPad *pad) {
  request_record->references_on_release = reference_count(pad);
  gst_element_remove_pad(element, pad);
}

class TeePadRequest : public testing::Test {
protected:
  TeePadRequest() { request_record = &record_; }
  ~TeePadRequest() override { request_record = nullptr; }

  static Element make_recording_element() {
    static const GType type = make_subclass(
        GST_TYPE_ELEMENT, "TestRecordingElement", [](gpointer element_class, gpointer) {
          offer_source_pads(element_class, nullptr);
          GST_ELEMENT_CLASS(element_class)->request_new_pad = record_request;
          GST_ELEMENT_CLASS(element_class)->release_pad = record_release;
        });
    return make_of_type(type);
  }

  Request_Record record_;
  const Element tee_ = make_recording_element();
};

TEST_F(TeePadRequest, HasNoNameAndNoCaps) {
  Pad pad(Media_Helper::get_tee_src_pad(tee_.get()), false);
  EXPECT_EQ(record_.names, std::vector<std::string>{"(null)"});
  EXPECT_EQ(record_.caps, std::vector<Caps>{nullptr});
  end_branch(tee_, pad);
}

TEST_F(TeePadRequest, IsReleasedBeforeTheReferenceIsDropped) {
  const Element source = make_element("fakesrc");
  expect_error({TEC::TEE_LINK_FAILED},
               [&] { Media_Helper::link_tee_to_element(tee_.get(), source.get()); });
  EXPECT_EQ(record_.names, std::vector<std::string>{"(null)"});
  EXPECT_EQ(record_.caps, std::vector<Caps>{nullptr});
  EXPECT_EQ(record_.references_on_release, 2u);  // the element's and the request's
  EXPECT_EQ(tee_->numsrcpads, 0);
}

// A tee and possible branches in one bin. Records what the tee does with its pads.
class LinkTeeToElement : public testing::Test {
protected:
  LinkTeeToElement() {
    add_to_bin(bin_, tee_);
    add_to_bin(bin_, queue_);
    add_to_bin(bin_, source_);
    g_signal_connect(tee_.get(), "pad-added", G_CALLBACK(remember), &added_);
  }

  ~LinkTeeToElement() override { g_signal_handlers_disconnect_by_data(tee_.get(), &added_); }

  static void remember(GstElement *, GstPad *pad, std::vector<std::unique_ptr<Weak_Watch>> *added) {
    added->push_back(std::make_unique<Weak_Watch>(pad));
  }

  std::vector<guint> counts() const {
    return reference_counts({bin_.get(), tee_.get(), queue_.get(), source_.get(),
                             static_pad(tee_, "sink").get(), static_pad(queue_, "sink").get(),
                             static_pad(source_, "src").get()});
  }

  // Tries to link, which must fail without any change.
  void expect_no_link_to(const Element &element) {
    const int branches = tee_->numsrcpads;
    const auto counts_before = counts();
    const guint count_before = reference_count(element.get());
    expect_error({TEC::TEE_LINK_FAILED},
                 [&] { Media_Helper::link_tee_to_element(tee_.get(), element.get()); });
    EXPECT_EQ(tee_->numsrcpads, branches);
    ASSERT_FALSE(added_.empty());
    EXPECT_TRUE(added_.back()->gone());
    EXPECT_EQ(counts(), counts_before);
    EXPECT_EQ(reference_count(element.get()), count_before);
  }

  const Element bin_ = make_bin("bin");
  const Element tee_ = make_element("tee");
  const Element queue_ = make_element("queue");
  const Element source_ = make_element("fakesrc");
  std::vector<std::unique_ptr<Weak_Watch>> added_;
};

TEST_F(LinkTeeToElement, ReportsABadTeeFirst) {
  const Pad pad = static_pad(tee_, "sink");
  for (GstElement *const bad :
       {static_cast<GstElement *>(nullptr), reinterpret_cast<GstElement *>(pad.get())}) {
    expect_error({TEC::NOT_AN_ELEMENT, {"tee in link_tee_to_element"}},
                 [&] { Media_Helper::link_tee_to_element(bad, queue_.get()); });
    expect_error({TEC::NOT_AN_ELEMENT, {"tee in link_tee_to_element"}},
                 [&] { Media_Helper::link_tee_to_element(bad, nullptr); });
  }
  EXPECT_FALSE(gst_pad_is_linked(static_pad(queue_, "sink").get()));
}

TEST_F(LinkTeeToElement, ReportsABadElement) {
  const Pad pad = static_pad(tee_, "sink");
  for (GstElement *const bad :
       {static_cast<GstElement *>(nullptr), reinterpret_cast<GstElement *>(pad.get())})
    expect_error({TEC::NOT_AN_ELEMENT, {"element in link_tee_to_element"}},
                 [&] { Media_Helper::link_tee_to_element(tee_.get(), bad); });
  EXPECT_TRUE(added_.empty());
}

TEST_F(LinkTeeToElement, ChecksBothArgumentsBeforeTheTemplate) {
  expect_error({TEC::NOT_AN_ELEMENT, {"element in link_tee_to_element"}},
               [&] { Media_Helper::link_tee_to_element(queue_.get(), nullptr); });
}

TEST_F(LinkTeeToElement, ReportsATeeWithoutTheTemplate) {
  const auto before = counts();
  expect_error({TEC::TEE_HAS_NO_SRC_PAD_TEMPLATE},
               [&] { Media_Helper::link_tee_to_element(source_.get(), queue_.get()); });
  EXPECT_FALSE(gst_pad_is_linked(static_pad(queue_, "sink").get()));
  EXPECT_EQ(counts(), before);
}

TEST_F(LinkTeeToElement, ReportsATeeThatProvidesNoPad) {
  const Element stingy = make_stingy_element();
  const auto before = counts();
  expect_error({TEC::TEE_SRC_PAD_REQUEST_FAILED},
               [&] { Media_Helper::link_tee_to_element(stingy.get(), queue_.get()); });
  EXPECT_EQ(reference_count(stingy.get()), 1u);
  EXPECT_EQ(counts(), before);
}

TEST_F(LinkTeeToElement, LinksANewPadAndKeepsNoReferenceToIt) {
  const auto before = counts();
  Media_Helper::link_tee_to_element(tee_.get(), queue_.get());
  ASSERT_EQ(added_.size(), 1u);
  ASSERT_FALSE(added_[0]->gone());
  Pad branch = static_pad(tee_, "src_0");
  EXPECT_EQ(reference_count(branch.get()), 2u);  // the tee's and this one
  EXPECT_EQ(peer_of(branch), static_pad(queue_, "sink"));
  EXPECT_EQ(peer_of(static_pad(queue_, "sink")), branch);
  EXPECT_EQ(counts(), before);

  end_branch(tee_, branch);
  EXPECT_TRUE(added_[0]->gone());
}

TEST_F(LinkTeeToElement, LinksSeveralBranches) {
  const Element other = make_element("queue");
  add_to_bin(bin_, other);
  Media_Helper::link_tee_to_element(tee_.get(), queue_.get());
  Media_Helper::link_tee_to_element(tee_.get(), other.get());
  EXPECT_EQ(tee_->numsrcpads, 2);
  EXPECT_EQ(peer_of(static_pad(queue_, "sink")), static_pad(tee_, "src_0"));
  EXPECT_EQ(peer_of(static_pad(other, "sink")), static_pad(tee_, "src_1"));
}

TEST_F(LinkTeeToElement, ReleasesThePadForAnElementWithoutASinkPad) {
  expect_no_link_to(source_);
}

TEST_F(LinkTeeToElement, ReleasesThePadForALinkedSinkPad) {
  Media_Helper::link_tee_to_element(tee_.get(), queue_.get());
  expect_no_link_to(queue_);
  EXPECT_EQ(peer_of(static_pad(queue_, "sink")), static_pad(tee_, "src_0"));
  EXPECT_FALSE(added_[0]->gone());
}

TEST_F(LinkTeeToElement, ReleasesThePadForAnElementOfAnotherBin) {
  const Element other_bin = make_bin("other");
  const Element element = make_element("queue");
  add_to_bin(other_bin, element);
  expect_no_link_to(element);
  EXPECT_FALSE(gst_pad_is_linked(static_pad(element, "sink").get()));
}

TEST_F(LinkTeeToElement, ReleasesThePadForIncompatibleFormats) {
  const Element video = make_element("videotestsrc");
  const Element audio = make_element("audioconvert");
  add_to_bin(bin_, video);
  add_to_bin(bin_, audio);
  ASSERT_TRUE(gst_element_link(video.get(), tee_.get()));
  expect_no_link_to(audio);
  EXPECT_FALSE(gst_pad_is_linked(static_pad(audio, "sink").get()));
}

TEST_F(LinkTeeToElement, CanBeCalledAgainAfterAFailure) {
  expect_no_link_to(source_);
  Media_Helper::link_tee_to_element(tee_.get(), queue_.get());
  EXPECT_EQ(tee_->numsrcpads, 1);
  EXPECT_TRUE(gst_pad_is_linked(static_pad(queue_, "sink").get()));
}

TEST_F(LinkTeeToElement, ReleasesThePadWhileTheTeePlays) {
  const Element pipeline = make_pipeline();
  const Element sink = make_element("fakesink");
  add_to_bin(pipeline, bin_);
  add_to_bin(bin_, sink);
  ASSERT_TRUE(gst_element_link_many(source_.get(), tee_.get(), queue_.get(), sink.get(),
                                    static_cast<GstElement *>(nullptr)));
  g_object_set(source_.get(), "is-live", TRUE, "do-timestamp", TRUE, "format", GST_FORMAT_TIME,
               "datarate", 1000000, nullptr);
  gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
  ASSERT_NE(gst_element_get_state(pipeline.get(), nullptr, nullptr, 10 * GST_SECOND),
            GST_STATE_CHANGE_FAILURE);
  ASSERT_EQ(GST_STATE(tee_.get()), GST_STATE_PLAYING);

  const Element video = make_element("videotestsrc");  // has no "sink" pad
  expect_error({TEC::TEE_LINK_FAILED},
               [&] { Media_Helper::link_tee_to_element(tee_.get(), video.get()); });
  expect_error({TEC::TEE_LINK_FAILED},
               [&] { Media_Helper::link_tee_to_element(tee_.get(), queue_.get()); });
  EXPECT_EQ(tee_->numsrcpads, 1);
  gst_element_set_state(pipeline.get(), GST_STATE_NULL);
  ASSERT_EQ(added_.size(), 3u);
  EXPECT_TRUE(added_[1]->gone());
  EXPECT_TRUE(added_[2]->gone());
}

GstPadProbeReturn count_buffer(GstPad *, GstPadProbeInfo *, gpointer count) {
  ++*static_cast<std::atomic<int> *>(count);
  return GST_PAD_PROBE_OK;
}

TEST_F(LinkTeeToElement, PassesTheWholeStreamToEachBranch) {
  const Element pipeline = make_pipeline();
  const Element source = make_element("fakesrc");
  const Element tee = make_element("tee");
  g_object_set(source.get(), "num-buffers", 7, nullptr);
  add_to_bin(pipeline, source);
  add_to_bin(pipeline, tee);
  ASSERT_TRUE(gst_element_link(source.get(), tee.get()));

  std::atomic<int> buffers[2] = {};
  for (std::atomic<int> &count : buffers) {
    const Element queue = make_element("queue");
    const Element sink = make_element("fakesink");
    add_to_bin(pipeline, queue);
    add_to_bin(pipeline, sink);
    ASSERT_TRUE(gst_element_link(queue.get(), sink.get()));
    Media_Helper::link_tee_to_element(tee.get(), queue.get());
    gst_pad_add_probe(static_pad(sink, "sink").get(), GST_PAD_PROBE_TYPE_BUFFER, count_buffer,
                      &count, nullptr);
  }

  ASSERT_EQ(play_to_end(pipeline), GST_MESSAGE_EOS);
  EXPECT_EQ(buffers[0], 7);
  EXPECT_EQ(buffers[1], 7);
}

}  // namespace
}  // namespace kel::tavren::tests
