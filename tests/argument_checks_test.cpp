// How often operations check their arguments: an operation that uses another one does not check
// them again.

#include <vector>

#include "elements.h"
#include "errors.h"
#include "replaced_function.h"

namespace {

// If set, contains the instances that the library checked for being an element or a bin.
thread_local std::vector<gconstpointer> *checked = nullptr;

}  // namespace

extern "C" gboolean g_type_check_instance_is_a(GTypeInstance *instance, GType type) {
  static const auto check =
      kel::tavren::tests::replaced_function(g_type_check_instance_is_a, __func__);
  if (checked != nullptr && (type == GST_TYPE_ELEMENT || type == GST_TYPE_BIN) &&
      kel::tavren::tests::is_in_library(__builtin_return_address(0)))
    checked->push_back(instance);
  return check(instance, type);
}

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;
using Instances = std::vector<gconstpointer>;

// Returns the instances that a call checks, in order. The call may throw an argument error.
template <typename Call>
Instances checked_by(Call call) {
  Instances instances;
  checked = &instances;
  try {
    call();
  } catch (const Backend_Error<std::runtime_error> &error) {
    EXPECT_EQ(error.code(), 0x15160);
  }
  checked = nullptr;
  return instances;
}

class ArgumentChecks : public testing::Test {
protected:
  const Element source_ = make_element("fakesrc");
  const Element tee_ = make_element("tee");
  const Element sink_ = make_element("fakesink");
  const Pad not_an_element_ = make_pad("src", GST_PAD_SRC);
};

constexpr GstElement *END = nullptr;

TEST_F(ArgumentChecks, LinkManyChecksEachElementOnce) {
  const Element parser = make_element("identity");
  EXPECT_EQ(checked_by([&] {
              Media_Helper::gst_element_link_many_or_throw(source_.get(), parser.get(), sink_.get(),
                                                           END);
            }),
            (Instances{source_.get(), parser.get(), sink_.get()}));
}

TEST_F(ArgumentChecks, LinkManyChecksABadElementOnce) {
  auto *const bad = reinterpret_cast<GstElement *>(not_an_element_.get());
  EXPECT_EQ(checked_by([&] {
              Media_Helper::gst_element_link_many_or_throw(source_.get(), bad, sink_.get(), END);
            }),
            (Instances{source_.get(), bad}));
  EXPECT_EQ(checked_by([&] {
              Media_Helper::gst_element_link_many_or_throw(source_.get(), sink_.get(), bad, END);
            }),
            (Instances{source_.get(), sink_.get(), bad}));
  EXPECT_EQ(checked_by([&] { Media_Helper::gst_element_link_many_or_throw(source_.get(), END); }),
            (Instances{source_.get(), nullptr}));
}

TEST_F(ArgumentChecks, StaticPadLookupChecksItsElementOnce) {
  EXPECT_EQ(checked_by([&] {
              gst_object_unref(
                  Media_Helper::gst_element_get_static_pad_or_throw(sink_.get(), "sink"));
            }),
            Instances{sink_.get()});
}

TEST_F(ArgumentChecks, ProbeChecksItsElementOnce) {
  EXPECT_EQ(checked_by([&] {
              Media_Helper::add_probe_to_sink_pad_or_throw(
                  sink_.get(), GST_PAD_PROBE_TYPE_BLOCK_DOWNSTREAM, nullptr, nullptr, nullptr);
            }),
            Instances{sink_.get()});
}

TEST_F(ArgumentChecks, LinkOfAPadChecksItsElementOnce) {
  const Pad pad = static_pad(source_, "src");
  EXPECT_EQ(checked_by([&] { Media_Helper::link_pad_to_element_or_throw(pad.get(), sink_.get()); }),
            Instances{sink_.get()});
}

TEST_F(ArgumentChecks, SinkPeerChecksEachElementOnce) {
  ASSERT_TRUE(gst_element_link(source_.get(), sink_.get()));
  EXPECT_EQ(checked_by([&] {
              gst_object_unref(Media_Helper::get_element_sink_peer_pad_or_throw(sink_.get()));
            }),
            Instances{sink_.get()});
  EXPECT_EQ(checked_by([&] {
              gst_object_unref(Media_Helper::get_element_sink_peer_or_throw(sink_.get()));
            }),
            (Instances{sink_.get(), source_.get()}));
}

TEST_F(ArgumentChecks, TeeBranchChecksEachElementOnce) {
  EXPECT_EQ(checked_by([&] { Media_Helper::link_tee_to_element(tee_.get(), sink_.get()); }),
            (Instances{tee_.get(), sink_.get()}));
}

// The parent of a pad is an element.
TEST_F(ArgumentChecks, MultiqueuePartnerChecksNoElement) {
  const Element multiqueue = make_element("multiqueue");
  const Pad sink_pad = request_pad(multiqueue.get(), "sink_%u");
  EXPECT_EQ(checked_by([&] {
              gst_object_unref(Media_Helper::get_corresponding_multiqueue_pad(sink_pad.get()));
            }),
            Instances{});
  gst_element_release_request_pad(multiqueue.get(), sink_pad.get());
}

TEST_F(ArgumentChecks, AncestryChecksEachElementOnce) {
  const Element bin = make_bin("bin");
  ASSERT_TRUE(gst_bin_add(GST_BIN(bin.get()), sink_.get()));
  EXPECT_EQ(checked_by([&] { Media_Helper::verify_element_top_parent(sink_.get(), bin.get()); }),
            (Instances{sink_.get(), bin.get()}));
}

// The created element is not an argument. A pipeline is not exactly a bin, so it is not recognised
// without this check.
TEST_F(ArgumentChecks, CreationInABinChecksTheBinOnce) {
  const Element pipeline(GST_ELEMENT_CAST(gst_object_ref_sink(gst_pipeline_new(nullptr))), false);
  EXPECT_EQ(checked_by([&] {
              Media_Helper::create_and_add_element_to_bin("identity", pipeline.get(), "parser");
            }),
            Instances{pipeline.get()});
}

}  // namespace
}  // namespace kel::tavren::tests
