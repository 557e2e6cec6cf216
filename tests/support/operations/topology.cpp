// Pads, links, branches, peers and ancestors.

#include "operation_families.h"

namespace kel::tavren::tests {
namespace {

void list_pads(const Scene &scene) {
  const Media_Helper::Pad_List pads =
      Media_Helper::get_element_pads(scene.format.get(), gst_element_iterate_pads);
  require(pads.size() == 2, "does not list exactly the two pads");
}

void list_sink_pads(const Scene &scene) {
  const Media_Helper::Pad_List pads = Media_Helper::get_element_sink_pads(scene.streams.get());
  require(pads == Media_Helper::Pad_List{scene.streams_sink}, "not the sink pad");
}

void list_src_pads(const Scene &scene) {
  const Media_Helper::Pad_List pads = Media_Helper::get_element_src_pads(scene.split.get());
  require(pads == Media_Helper::Pad_List{scene.split_src}, "not the source pad");
}

void link_and_unlink(const Scene &scene) {
  GstPad *const pad = scene.streams_src.get();
  require(Media_Helper::link_pad_to_element(pad, scene.buffer.get()), "not linked");
  require(!Media_Helper::link_pad_to_element(pad, scene.buffer.get()), "linked twice");
  require(Media_Helper::unlink_pad_from_element(pad, scene.buffer.get()), "not unlinked");
  require(!Media_Helper::unlink_pad_from_element(pad, scene.buffer.get()), "unlinked twice");
}

void link_element_to_pad(const Scene &scene) {
  GstPad *const pad = scene.streams_sink.get();
  require(Media_Helper::link_element_to_pad(scene.buffer.get(), pad), "not linked");
  require(!Media_Helper::link_element_to_pad(scene.buffer.get(), pad), "linked twice");
  gst_pad_unlink(static_pad(scene.buffer, "src").get(), pad);
}

void link_or_throw(const Scene &scene) {
  Media_Helper::link_pad_to_element_or_throw(scene.streams_src.get(), scene.buffer.get());
  gst_element_unlink(scene.streams.get(), scene.buffer.get());
}

void link_many(const Scene &) {
  const Own<GstElement> source(make_element("fakesrc"));
  const Own<GstElement> middle(make_element("identity"));
  const Own<GstElement> sink(make_element("fakesink"));
  Media_Helper::gst_element_link_many_or_throw(source.get(), middle.get(), sink.get(), nullptr);
}

void link_sources(const Scene &) {
  const Own<GstElement> first(make_element("fakesrc", "first"));
  const Own<GstElement> second(make_element("fakesrc", "second"));
  Media_Helper::gst_element_link_many_or_throw(first.get(), second.get(), nullptr);
}

void get_static_pad(const Scene &scene) {
  require(taken(Media_Helper::gst_element_get_static_pad_or_throw(scene.split.get(), "src_0")) ==
              scene.split_src,
          "another pad");
}

void add_probe(const Scene &) {
  int freed = 0;
  {
    const Own<GstElement> sink(make_element("fakesink"));
    Media_Helper::add_probe_to_sink_pad_or_throw(
        sink.get(), GST_PAD_PROBE_TYPE_BUFFER,
        [](GstPad *, GstPadProbeInfo *, gpointer) { return GST_PAD_PROBE_OK; }, &freed,
        [](gpointer data) { ++*static_cast<int *>(data); });
  }
  require(freed == 1, "the data of the probe is not freed exactly once");
}

// An idle probe runs immediately on an idle pad. If it removes itself, it has no identifier
// afterwards.
void add_probe_that_removes_itself(const Scene &) {
  const Own<GstElement> sink(make_element("fakesink"));
  Media_Helper::add_probe_to_sink_pad_or_throw(
      sink.get(), GST_PAD_PROBE_TYPE_IDLE,
      [](GstPad *, GstPadProbeInfo *, gpointer) { return GST_PAD_PROBE_REMOVE; }, nullptr, nullptr);
}

void request_tee_pad(const Scene &scene) {
  const Own<GstPad> pad(taken(Media_Helper::get_tee_src_pad(scene.split.get())));
  gst_element_release_request_pad(scene.split.get(), pad.get());
}

// Has "src_%u" pads, but does not create them on request.
void request_src_pad_of_decodebin(const Scene &) {
  const Own<GstElement> decodebin(make_element("decodebin"));
  Media_Helper::get_tee_src_pad(decodebin.get());
}

void link_branch(const Scene &scene) {
  Media_Helper::link_tee_to_element(scene.split.get(), scene.buffer.get());
  const Own<GstPad> pad(
      taken(Media_Helper::get_element_sink_peer_pad_or_throw(scene.buffer.get())));
  gst_element_release_request_pad(scene.split.get(), pad.get());
}

void link_source_to_tee(const Scene &scene) {
  Media_Helper::link_tee_to_element(scene.split.get(), scene.camera.get());
}

void request_stream(const Scene &scene, const char *name) {
  const auto [sink_pad, src_pad] =
      Media_Helper::request_new_multiqueue_pads(scene.streams.get(), name, nullptr);
  const Own<GstPad> sink(taken(sink_pad));
  const Own<GstPad> src(taken(src_pad));
  gst_element_release_request_pad(scene.streams.get(), sink_pad);
}

void pair_pads(const Scene &scene) {
  require(taken(Media_Helper::get_corresponding_multiqueue_pad(scene.streams_sink.get())) ==
              scene.streams_src,
          "another source pad");
  require(taken(Media_Helper::get_corresponding_multiqueue_pad(scene.streams_src.get())) ==
              scene.streams_sink,
          "another sink pad");
}

void pair_pad_of_other_name(const Scene &) {
  const Own<GstElement> bin(make_element("bin"));
  const Pad pad = make_pad("left", GST_PAD_SRC);
  gst_element_add_pad(bin.get(), pad.get());
  Media_Helper::get_corresponding_multiqueue_pad(pad.get());
}

void pair_pad_without_parent(const Scene &) {
  const Own<GstPad> pad(make_pad("src_0", GST_PAD_SRC));
  Media_Helper::get_corresponding_multiqueue_pad(pad.get());
}

void get_peers(const Scene &scene) {
  require(taken(Media_Helper::get_element_sink_peer_pad_or_throw(scene.parser.get())) ==
              scene.split_src,
          "another peer pad");
  require(taken(Media_Helper::get_element_sink_peer_or_throw(scene.split.get())) == scene.format,
          "another peer");
}

void get_most_parent(const Scene &scene) {
  require(taken(Media_Helper::get_most_parent(scene.deep.get())) == scene.pipeline,
          "another ancestor");
  require(Media_Helper::get_most_parent(scene.loose.get()) == nullptr, "an ancestor from nowhere");
}

void verify_ancestors(const Scene &scene) {
  Media_Helper::verify_element_top_parent(scene.deep.get(), scene.pipeline.get());
  Media_Helper::verify_element_top_parent(scene.loose.get(), scene.loose.get());
}

}  // namespace

// clang-format off
std::vector<Operation> topology_operations() {
  return {
    {"get_element_pads", Operation::SHARED, {}, list_pads},
    {"get_element_pads of nothing", Operation::SHARED, {TEC::NOT_AN_ELEMENT, {"element in get_element_pads_with_iterator"}}, [](const Scene &) { Media_Helper::get_element_pads(nullptr, gst_element_iterate_pads); }},
    {"get_element_src_pads", Operation::SHARED, {}, list_src_pads},
    {"get_element_sink_pads", Operation::SHARED, {}, list_sink_pads},
    {"link_pad_to_element, unlink_pad_from_element", Operation::OWN, {}, link_and_unlink},
    {"link_element_to_pad", Operation::OWN, {}, link_element_to_pad},
    {"link_pad_to_element_or_throw", Operation::OWN, {}, link_or_throw},
    {"link_pad_to_element_or_throw, linked", Operation::OWN, {TEC::PAD_LINK_FAILED, {"src_0", "streams", "parser", "GST_PAD_LINK_WAS_LINKED: pad was already linked"}}, [](const Scene &scene) { Media_Helper::link_pad_to_element_or_throw(scene.streams_src.get(), scene.parser.get()); }},
    {"link_pad_to_element_or_throw, other bin", Operation::OWN, {TEC::PAD_LINK_FAILED, {"src_0", "streams", "deep", "GST_PAD_LINK_WRONG_HIERARCHY: pads have no common grandparent"}}, [](const Scene &scene) { Media_Helper::link_pad_to_element_or_throw(scene.streams_src.get(), scene.deep.get()); }},
    {"gst_element_link_many_or_throw", Operation::OWN, {}, link_many},
    {"gst_element_link_many_or_throw of sources", Operation::OWN, {TEC::ELEMENT_LINK_FAILED, {"first", "second"}}, link_sources},
    {"gst_element_get_static_pad_or_throw", Operation::SHARED, {}, get_static_pad},
    {"gst_element_get_static_pad_or_throw in vain", Operation::SHARED, {TEC::STATIC_PAD_NOT_FOUND, {"src", "file", ""}}, [](const Scene &scene) { Media_Helper::gst_element_get_static_pad_or_throw(scene.file.get(), "src"); }},
    {"add_probe_to_sink_pad_or_throw", Operation::OWN, {}, add_probe},
    {"add_probe_to_sink_pad_or_throw, gone at once", Operation::OWN, {TEC::PROBE_NOT_ADDED}, add_probe_that_removes_itself},

    {"get_tee_src_pad", Operation::OWN, {}, request_tee_pad},
    {"get_tee_src_pad of a sink", Operation::OWN, {TEC::TEE_HAS_NO_SRC_PAD_TEMPLATE}, [](const Scene &scene) { Media_Helper::get_tee_src_pad(scene.file.get()); }},
    {"get_tee_src_pad of decodebin", Operation::OWN, {TEC::TEE_SRC_PAD_REQUEST_FAILED}, request_src_pad_of_decodebin},
    {"link_tee_to_element", Operation::OWN, {}, link_branch},
    {"link_tee_to_element, no sink pad", Operation::OWN, {TEC::TEE_LINK_FAILED}, link_source_to_tee},
    {"request_new_multiqueue_pads", Operation::OWN, {}, [](const Scene &scene) { request_stream(scene, ""); }},
    {"request_new_multiqueue_pads, named", Operation::OWN, {}, [](const Scene &scene) { request_stream(scene, "sink_7"); }},
    {"request_new_multiqueue_pads, taken name", Operation::OWN, {TEC::MULTIQUEUE_SINK_PAD_REQUEST_FAILED}, [](const Scene &scene) { Media_Helper::request_new_multiqueue_pads(scene.streams.get(), "sink_0", nullptr); }},
    {"request_new_multiqueue_pads of a tee", Operation::OWN, {TEC::MULTIQUEUE_HAS_NO_SINK_PAD_TEMPLATE}, [](const Scene &scene) { Media_Helper::request_new_multiqueue_pads(scene.split.get(), "", nullptr); }},
    {"get_corresponding_multiqueue_pad", Operation::SHARED, {}, pair_pads},
    {"get_corresponding_multiqueue_pad of a tee", Operation::SHARED, {TEC::STATIC_PAD_NOT_FOUND, {"sink_0", "split", ""}}, [](const Scene &scene) { Media_Helper::get_corresponding_multiqueue_pad(scene.split_src.get()); }},
    {"get_corresponding_multiqueue_pad, other name", Operation::OWN, {TEC::NOT_A_MULTIQUEUE_PAD_NAME}, pair_pad_of_other_name},
    {"get_corresponding_multiqueue_pad, no parent", Operation::OWN, {TEC::MULTIQUEUE_PAD_HAS_NO_PARENT}, pair_pad_without_parent},

    {"get_element_sink_peer_or_throw", Operation::SHARED, {}, get_peers},
    {"get_element_sink_peer_pad_or_throw, not linked", Operation::SHARED, {TEC::SINK_PAD_NOT_LINKED}, [](const Scene &scene) { Media_Helper::get_element_sink_peer_pad_or_throw(scene.loose.get()); }},
    {"get_element_sink_peer_or_throw, no sink pad", Operation::SHARED, {TEC::STATIC_PAD_NOT_FOUND, {"sink", "camera", ""}}, [](const Scene &scene) { Media_Helper::get_element_sink_peer_or_throw(scene.camera.get()); }},
    {"get_most_parent", Operation::SHARED, {}, get_most_parent},
    {"get_most_parent of nothing", Operation::SHARED, {TEC::NOT_AN_ELEMENT, {"element in get_most_parent"}}, [](const Scene &) { Media_Helper::get_most_parent(nullptr); }},
    {"verify_element_top_parent", Operation::SHARED, {}, verify_ancestors},
    {"verify_element_top_parent, no parent", Operation::SHARED, {TEC::TOP_PARENT_MISMATCH, {}, 1}, [](const Scene &scene) { Media_Helper::verify_element_top_parent(scene.loose.get(), scene.pipeline.get()); }},
    {"verify_element_top_parent, other parent", Operation::SHARED, {TEC::TOP_PARENT_MISMATCH, {}, 2}, [](const Scene &scene) { Media_Helper::verify_element_top_parent(scene.deep.get(), scene.recording.get()); }},
  };
}
// clang-format on

}  // namespace kel::tavren::tests
