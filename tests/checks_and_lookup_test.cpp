#include <array>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "elements.h"
#include "errors.h"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;
using capture::MediaType;

// Any object. Owns the reference from its creation.
class Object {
public:
  explicit Object(gpointer object) : object_(object) {}
  ~Object() { g_object_unref(object_); }
  Object(const Object &) = delete;
  Object &operator=(const Object &) = delete;

  gpointer get() const { return object_; }

private:
  gpointer object_;
};

template <typename Call>
bool passes(Call &&call) {
  try {
    call();
  } catch (const Tavren_Error<std::exception> &) {
    return false;
  }
  return true;
}

struct Check {
  int code;
  void (*call)(gpointer, const std::string &);
};

// clang-format off
const std::array<Check, 4> object_checks = {{
    {TEC::NOT_AN_ELEMENT, [](gpointer object, const std::string &text) { Media_Helper::is_element_or_throw(static_cast<GstElement *>(object), text); }},
    {TEC::NOT_A_PAD,      [](gpointer object, const std::string &text) { Media_Helper::is_pad_or_throw(static_cast<GstPad *>(object), text); }},
    {TEC::NOT_A_BIN,      [](gpointer object, const std::string &text) { Media_Helper::is_bin_or_throw(static_cast<GstBin *>(object), text); }},
    {TEC::NOT_A_BUS,      [](gpointer object, const std::string &text) { Media_Helper::is_bus_or_throw(static_cast<GstBus *>(object), text); }},
}};

struct Subject {
  const char *name;
  gpointer (*make)();
  std::array<bool, 4> passes;  // as an element, a pad, a bin and a bus
};

const Subject subjects[] = {
    {"element",        [] { return gst_object_ref_sink(gst_element_factory_make("identity", nullptr)); },   {true,  false, false, false}},
    {"bin",            [] { return gst_object_ref_sink(gst_bin_new(nullptr)); },                            {true,  false, true,  false}},
    {"pipeline",       [] { return gst_object_ref_sink(gst_pipeline_new(nullptr)); },                       {true,  false, true,  false}},
    {"pad",            [] { return gst_object_ref_sink(gst_pad_new("src", GST_PAD_SRC)); },                 {false, true,  false, false}},
    {"ghost pad",      [] { return gst_object_ref_sink(gst_ghost_pad_new_no_target("src", GST_PAD_SRC)); }, {false, true,  false, false}},
    {"bus",            []() -> gpointer { return gst_bus_new(); },                                          {false, false, false, true}},
    {"another object", []() -> gpointer { return gst_task_pool_new(); },                                    {false, false, false, false}},
    {"foreign object", []() -> gpointer { return g_object_new(G_TYPE_OBJECT, nullptr); },                   {false, false, false, false}},
};
// clang-format on

void expect_failure(const Check &check, gpointer object, const std::string &description) {
  expect_error({check.code, {description}}, [&] { check.call(object, description); });
}

TEST(ObjectChecks, AcceptTheirTypeAndItsSubclasses) {
  for (const Subject &subject : subjects) {
    SCOPED_TRACE(subject.name);
    const Object object(subject.make());
    for (std::size_t i = 0; i < object_checks.size(); ++i) {
      SCOPED_TRACE(object_checks[i].code);
      if (subject.passes[i])
        EXPECT_NO_THROW(object_checks[i].call(object.get(), "argument"));
      else
        expect_failure(object_checks[i], object.get(), "argument");
    }
    EXPECT_EQ(reference_count(object.get()), 1U);
  }
}

TEST(ObjectChecks, RefuseNull) {
  for (const Check &check : object_checks)
    expect_failure(check, nullptr, "element in gst_element_get_bus_or_throw");
}

TEST(ObjectChecks, RefuseAnInstanceWithoutAClass) {
  GTypeInstance instance{nullptr};
  for (const Check &check : object_checks)
    expect_failure(check, &instance, "argument");
}

// GstElement is abstract: no object of the framework has exactly this type.
TEST(ObjectChecks, AcceptAnInstanceOfTheAbstractElementClass) {
  const gpointer element_class = g_type_class_ref(GST_TYPE_ELEMENT);
  GTypeInstance instance{static_cast<GTypeClass *>(element_class)};
  EXPECT_NO_THROW(object_checks[0].call(&instance, "argument"));
  for (std::size_t i = 1; i < object_checks.size(); ++i)
    expect_failure(object_checks[i], &instance, "argument");
  g_type_class_unref(element_class);
}

TEST(ObjectChecks, KeepAFloatingReferenceFloating) {
  GstElement *const made = gst_element_factory_make("identity", nullptr);
  Media_Helper::is_element_or_throw(made, "argument");
  EXPECT_TRUE(g_object_is_floating(made));
  EXPECT_EQ(reference_count(made), 1U);
  gst_object_unref(made);
}

TEST(ObjectChecks, PrintTheDescriptionVerbatim) {
  for (const char *description : {"", " ", "100% of %s %1%", "\"camera\" "})
    for (const Check &check : object_checks)
      expect_failure(check, nullptr, description);
}

TEST(ObjectChecks, RunOnManyThreadsAtOnce) {
  const Element element = make_element("identity");
  std::array<int, 4> right{};
  std::vector<std::thread> threads;
  for (int &count : right)
    threads.emplace_back([&element, &count] {
      for (int i = 0; i < 200; ++i)
        count += passes([&] { object_checks[0].call(element.get(), "argument"); }) &&
                 !passes([&] { object_checks[2].call(element.get(), "argument"); });
    });
  for (std::thread &thread : threads)
    thread.join();
  EXPECT_EQ(right, (std::array<int, 4>{200, 200, 200, 200}));
  EXPECT_EQ(reference_count(element.get()), 1U);
}

TEST(CapsCheck, AcceptsAllCaps) {
  for (const char *text : {"video/x-raw", "video/x-raw; audio/x-raw", "ANY", "EMPTY"}) {
    const Caps caps = make_caps(text);
    EXPECT_NO_THROW(Media_Helper::is_caps_or_throw(caps.get(), "argument")) << text;
    EXPECT_EQ(reference_count(caps.get()), 1) << text;
  }
}

TEST(CapsCheck, RefusesNull) {
  expect_error({TEC::NOT_CAPS, {"caps in get_media_type"}},
               [] { Media_Helper::is_caps_or_throw(nullptr, "caps in get_media_type"); });
  expect_error({TEC::NOT_CAPS, {""}}, [] { Media_Helper::is_caps_or_throw(nullptr, ""); });
}

TEST(CapsCheck, RefusesOtherMiniObjects) {
  GstMiniObject *const others[] = {
      GST_MINI_OBJECT_CAST(gst_buffer_new()),
      GST_MINI_OBJECT_CAST(gst_event_new_eos()),
      GST_MINI_OBJECT_CAST(gst_message_new_eos(nullptr)),
      GST_MINI_OBJECT_CAST(gst_sample_new(nullptr, nullptr, nullptr, nullptr)),
  };
  for (GstMiniObject *const other : others) {
    expect_error({TEC::NOT_CAPS, {"argument"}}, [other] {
      Media_Helper::is_caps_or_throw(static_cast<GstCaps *>(static_cast<gpointer>(other)),
                                     "argument");
    });
    EXPECT_EQ(GST_MINI_OBJECT_REFCOUNT_VALUE(other), 1);
    gst_mini_object_unref(other);
  }
}

TEST(ElementTypeCheck, RefusesOnlyZero) {
  expect_error({TEC::INVALID_ELEMENT_TYPE, {"element_type in bin_has_element_type"}}, [] {
    Media_Helper::is_valid_element_type_or_throw(0, "element_type in bin_has_element_type");
  });
  expect_error({TEC::INVALID_ELEMENT_TYPE, {""}},
               [] { Media_Helper::is_valid_element_type_or_throw(0, ""); });
  for (const GType type : {GST_TYPE_BIN, G_TYPE_INT, GType{1}, GType{12345677}, ~GType{0}})
    EXPECT_NO_THROW(Media_Helper::is_valid_element_type_or_throw(type, "argument")) << type;
}

TEST(InitialisationCheck, PassesAfterInitialisation) {
  EXPECT_NO_THROW(Media_Helper::gst_is_initialized_or_throw("call gst_init first"));
}

// Valid arguments, for operations in which only one argument is invalid.
struct Good {
  Element element = make_element("identity");
  Element bin = make_element("bin");
  Element tee = make_element("tee");
  Element sink = make_element("fakesink");
  Caps caps = make_caps("video/x-raw");

  GstBin *as_bin() const { return GST_BIN_CAST(bin.get()); }
};

struct Argument {
  int code;
  const char *name;
  void (*call)(const Good &);
};

// The peer of the sink's pad has no parent.
void ask_for_parent_of_stray_peer(const Good &good) {
  const Pad stray = make_pad("src", GST_PAD_SRC);
  const Pad sink_pad = static_pad(good.sink, "sink");
  ASSERT_EQ(gst_pad_link(stray.get(), sink_pad.get()), GST_PAD_LINK_OK);
  Media_Helper::get_element_sink_peer_or_throw(good.sink.get());
}

// The names of the arguments in each operation.
// clang-format off
const Argument arguments[] = {
    {TEC::NOT_AN_ELEMENT, "element", [](const Good &) { Media_Helper::gst_element_set_state_or_throw(nullptr, GST_STATE_READY, "context"); }},
    {TEC::NOT_AN_ELEMENT, "element", [](const Good &) { Media_Helper::g_signal_connect_or_throw(nullptr, "pad-added", [] {}, nullptr); }},
    {TEC::NOT_AN_ELEMENT, "element in gst_element_get_bus_or_throw", [](const Good &) { Media_Helper::gst_element_get_bus_or_throw(nullptr); }},
    {TEC::NOT_AN_ELEMENT, "element in call to gst_bin_add_or_throw", [](const Good &good) { Media_Helper::gst_bin_add_or_throw(good.as_bin(), nullptr); }},
    {TEC::NOT_A_BIN, "bin in gst_bin_add_or_throw", [](const Good &good) { Media_Helper::gst_bin_add_or_throw(nullptr, good.element.get()); }},
    {TEC::NOT_A_BIN, "bin in create_and_add_element_to_bin", [](const Good &) { Media_Helper::create_and_add_element_to_bin("identity", nullptr, "parser"); }},
    {TEC::NOT_A_BIN, "bin in create_and_add_element_to_bin", [](const Good &) { Media_Helper::create_and_add_element_to_pipeline("identity", nullptr, "parser"); }},
    {TEC::NOT_AN_ELEMENT, "element in gst_element_sync_state_with_parent_or_throw", [](const Good &) { Media_Helper::gst_element_sync_state_with_parent_or_throw(nullptr); }},
    {TEC::NOT_AN_ELEMENT, "element in gst_element_get_parent_or_throw", [](const Good &) { Media_Helper::gst_element_get_parent_or_throw(nullptr); }},
    {TEC::NOT_A_BUS, "bus in gst_bus_create_watch_or_throw", [](const Good &) { Media_Helper::gst_bus_create_watch_or_throw(nullptr); }},
    {TEC::NOT_AN_ELEMENT, "element in gst_element_get_static_pad_or_throw", [](const Good &) { Media_Helper::gst_element_get_static_pad_or_throw(nullptr, "sink"); }},
    {TEC::NOT_AN_ELEMENT, "element in add_probe_to_sink_pad_or_throw", [](const Good &) { Media_Helper::add_probe_to_sink_pad_or_throw(nullptr, GST_PAD_PROBE_TYPE_BUFFER, nullptr, nullptr, nullptr); }},
    {TEC::NOT_AN_ELEMENT, "element 1 in gst_element_link_many_or_throw", [](const Good &good) { Media_Helper::gst_element_link_many_or_throw(nullptr, good.sink.get(), nullptr); }},
    {TEC::NOT_AN_ELEMENT, "element 2 in gst_element_link_many_or_throw", [](const Good &good) { Media_Helper::gst_element_link_many_or_throw(good.element.get(), nullptr); }},
    {TEC::NOT_AN_ELEMENT, "element 3 in gst_element_link_many_or_throw", [](const Good &good) { Media_Helper::gst_element_link_many_or_throw(good.tee.get(), good.element.get(), good.sink->sinkpads->data, nullptr); }},
    {TEC::NOT_A_PAD, "src_pad in link_pad_to_element", [](const Good &good) { Media_Helper::link_pad_to_element_or_throw(nullptr, good.sink.get()); }},
    {TEC::NOT_AN_ELEMENT, "sink element specified for linking to src_pad in link_pad_to_element_or_throw", [](const Good &) { Media_Helper::link_pad_to_element_or_throw(nullptr, nullptr); }},
    {TEC::NOT_AN_ELEMENT, "element in get_element_pads_with_iterator", [](const Good &) { Media_Helper::get_element_pads(nullptr, gst_element_iterate_pads); }},
    {TEC::NOT_AN_ELEMENT, "tee element in get_tee_src_pad", [](const Good &) { Media_Helper::get_tee_src_pad(nullptr); }},
    {TEC::NOT_AN_ELEMENT, "tee in link_tee_to_element", [](const Good &good) { Media_Helper::link_tee_to_element(nullptr, good.sink.get()); }},
    {TEC::NOT_AN_ELEMENT, "element in link_tee_to_element", [](const Good &good) { Media_Helper::link_tee_to_element(good.tee.get(), nullptr); }},
    {TEC::NOT_A_PAD, "multiqueue_pad in get_corresponding_multiqueue_pad", [](const Good &) { Media_Helper::get_corresponding_multiqueue_pad(nullptr); }},
    {TEC::NOT_AN_ELEMENT, "multiqueue element in request_new_multiqueue_pads", [](const Good &good) { Media_Helper::request_new_multiqueue_pads(nullptr, "", good.caps.get()); }},
    {TEC::NOT_AN_ELEMENT, "element in get_element_sink_peer_pad_or_throw", [](const Good &) { Media_Helper::get_element_sink_peer_pad_or_throw(nullptr); }},
    {TEC::NOT_AN_ELEMENT, "pad parent element in get_element_sink_peer_or_throw", ask_for_parent_of_stray_peer},
    {TEC::NOT_AN_ELEMENT, "element in get_most_parent", [](const Good &) { Media_Helper::get_most_parent(nullptr); }},
    {TEC::NOT_AN_ELEMENT, "element in verify_element_top_parent", [](const Good &good) { Media_Helper::verify_element_top_parent(nullptr, good.bin.get()); }},
    {TEC::NOT_AN_ELEMENT, "expected_top_parent in verify_element_top_parent", [](const Good &good) { Media_Helper::verify_element_top_parent(good.element.get(), nullptr); }},
    {TEC::NOT_CAPS, "caps in get_media_type", [](const Good &) { Media_Helper::get_media_type(nullptr); }},
    {TEC::NOT_CAPS, "caps in get_framerate_from_caps", [](const Good &) { Media_Helper::get_framerate_from_caps(nullptr); }},
    {TEC::NOT_CAPS, "caps in get_resolution_from_caps", [](const Good &) { Media_Helper::get_resolution_from_caps(nullptr); }},
    {TEC::NOT_CAPS, "caps in get_encoding_name_from_caps", [](const Good &) { Media_Helper::get_encoding_name_from_caps(nullptr); }},
    {TEC::NOT_A_BIN, "bin", [](const Good &good) { Media_Helper::find_element_with_caps_and_type(nullptr, GST_TYPE_BIN, good.caps.get()); }},
    {TEC::NOT_CAPS, "caps in find_element_with_caps_and_type", [](const Good &good) { Media_Helper::find_element_with_caps_and_type(good.as_bin(), GST_TYPE_BIN, nullptr); }},
    {TEC::INVALID_ELEMENT_TYPE, "element_type in find_element_with_caps_and_type", [](const Good &good) { Media_Helper::find_element_with_caps_and_type(good.as_bin(), 0, good.caps.get()); }},
    {TEC::NOT_A_BIN, "bin in bin_has_element_type", [](const Good &) { Media_Helper::bin_has_element_type(nullptr, GST_TYPE_BIN); }},
    {TEC::INVALID_ELEMENT_TYPE, "element_type in bin_has_element_type", [](const Good &good) { Media_Helper::bin_has_element_type(good.as_bin(), 0); }},
    {TEC::NOT_A_BIN, "bin in find_all_appsinks", [](const Good &) { Media_Helper::find_all_appsinks(nullptr); }},
};
// clang-format on

TEST(BadArguments, AreReportedWithTheNameOfTheOperation) {
  for (const Argument &argument : arguments) {
    SCOPED_TRACE(argument.name);
    const Good good;
    expect_error({argument.code, {argument.name}}, [&] { argument.call(good); });
    EXPECT_EQ(reference_count(good.element.get()), 1U);
    EXPECT_EQ(reference_count(good.bin.get()), 1U);
    EXPECT_EQ(reference_count(good.tee.get()), 1U);
    EXPECT_EQ(reference_count(good.sink.get()), 1U);
    EXPECT_EQ(reference_count(good.caps.get()), 1);
  }
}

std::string look_up(MediaType key, const std::map<MediaType, std::string> &map,
                    const std::string &message) {
  return Media_Helper::string_from_map_or_throw_(key, map, message);
}

std::string look_up(const std::string &key, const std::map<std::string, std::string> &map,
                    const std::string &message) {
  return Media_Helper::string_from_map_or_throw_(key, map, message);
}

TEST(KeyedLookup, FindsMediaTypes) {
  const std::map<MediaType, std::string> map = {
      {capture::JPEG, "jpegdec"}, {capture::RTP, ""}, {capture::UNKNOWN, "identity"}};
  EXPECT_EQ(look_up(capture::JPEG, map, "absent"), "jpegdec");
  EXPECT_EQ(look_up(capture::RTP, map, "absent"), "");
  EXPECT_EQ(look_up(capture::UNKNOWN, map, "absent"), "identity");
}

TEST(KeyedLookup, FindsTexts) {
  const std::map<std::string, std::string> map = {
      {"", "nothing"}, {".mkv", "matroskamux"}, {"a", ""}};
  EXPECT_EQ(look_up("", map, "absent"), "nothing");
  EXPECT_EQ(look_up(".mkv", map, "absent"), "matroskamux");
  EXPECT_EQ(look_up("a", map, "absent"), "");
}

TEST(KeyedLookup, ThrowsTheMessageForAnAbsentMediaType) {
  const std::map<MediaType, std::string> map = {{capture::JPEG, "jpegdec"},
                                                {capture::MULAW, "mulawdec"}};
  for (const MediaType key :
       {capture::H264, capture::UNKNOWN, static_cast<MediaType>(10), static_cast<MediaType>(-1)})
    expect_error({TEC::KEY_NOT_FOUND, {"no decoder: 100% %s"}},
                 [&] { look_up(key, map, "no decoder: 100% %s"); });
}

TEST(KeyedLookup, ComparesTextsByteByByte) {
  using namespace std::string_literals;
  const std::map<std::string, std::string> map = {{".mkv", "matroskamux"}, {"a\0b"s, "two"}};
  EXPECT_EQ(look_up("a\0b"s, map, "absent"), "two");
  for (const std::string &key :
       {".MKV"s, ".Mkv"s, "mkv"s, ".mk"s, ".mkvv"s, ".mkv "s, ""s, "a"s, "a\0c"s})
    expect_error({TEC::KEY_NOT_FOUND, {"absent"}}, [&] { look_up(key, map, "absent"); });
}

TEST(KeyedLookup, AcceptsAnEmptyMessage) {
  expect_error({TEC::KEY_NOT_FOUND, {""}}, [] { look_up("a", {{"b", "text"}}, ""); });
  expect_error({TEC::KEY_NOT_FOUND, {""}}, [] {
    look_up(capture::RTP, {{capture::JPEG, "text"}}, "");
  });
}

TEST(KeyedLookup, FindsNothingInAnEmptyMap) {
  expect_error({TEC::KEY_NOT_FOUND, {"empty"}},
               [] { look_up("", std::map<std::string, std::string>(), "empty"); });
  expect_error({TEC::KEY_NOT_FOUND, {"empty"}},
               [] { look_up(capture::JPEG, std::map<MediaType, std::string>(), "empty"); });
}

TEST(KeyedLookup, ReturnsACopy) {
  const std::map<std::string, std::string> map = {{"a", "text"}};
  std::string found = look_up("a", map, "absent");
  found += " changed";
  EXPECT_EQ(map.at("a"), "text");
}

TEST(KeyedLookup, LeavesTheMapUnchanged) {
  const std::map<std::string, std::string> before = {{"a", "first"}, {"b", ""}};
  const std::map<std::string, std::string> map = before;
  look_up("a", map, "absent");
  expect_error({TEC::KEY_NOT_FOUND, {"absent"}}, [&map] { look_up("c", map, "absent"); });
  EXPECT_EQ(map, before);
}

TEST(KeyedLookup, ReportsKeysThatASelectionDoesNotSupport) {
  const std::string no_parser = "Unknown video format : could not create video parser";
  expect_error({TEC::KEY_NOT_FOUND, {"Unknown file extension : could not create muxer"}},
               [] { Media_Helper::select_muxer("record.ts"); });
  expect_error({TEC::KEY_NOT_FOUND, {"Unknown file extension : could not create demuxer"}},
               [] { Media_Helper::select_demuxer("record.mp4"); });
  expect_error({TEC::KEY_NOT_FOUND, {no_parser}},
               [] { Media_Helper::select_parser(capture::RTP); });
  expect_error({TEC::KEY_NOT_FOUND, {no_parser}},
               [] { Media_Helper::select_decoder(capture::RTP); });
  expect_error({TEC::KEY_NOT_FOUND, {no_parser}},
               [] { Media_Helper::select_video_rate(capture::RTP); });
  expect_error({TEC::KEY_NOT_FOUND, {"Unsupported format : could not select payloader"}},
               [] { Media_Helper::select_payloader(capture::RTP); });
}

}  // namespace
}  // namespace kel::tavren::tests
