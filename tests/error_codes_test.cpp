// Every code with the operation that throws it and its text. Callers depend on these, so they are
// literals.

#include <array>
#include <cstdint>
#include <ostream>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "depayloader_references.h"
#include "elements.h"
#include "errors.h"
#include "framework_version.h"
#include "grouping_locale.h"
#include "log_watch.h"
#include "replaced_function.h"

namespace {

// The function of the framework that fails on this thread instead of doing its work.
thread_local std::string_view failing;

}  // namespace

using kel::tavren::tests::replaced_function;

// Failures that cannot be provoked in the framework otherwise. These functions replace the
// framework's in the whole program, and forward all other calls.

extern "C" {

gboolean gst_is_initialized() {
  return failing != __func__ && replaced_function(gst_is_initialized, __func__)();
}

GstPad *gst_pad_get_peer(GstPad *pad) {
  return failing == __func__ ? nullptr : replaced_function(gst_pad_get_peer, __func__)(pad);
}

GstPluginFeature *gst_plugin_feature_load(GstPluginFeature *feature) {
  return failing == __func__ ? nullptr
                             : replaced_function(gst_plugin_feature_load, __func__)(feature);
}

GType gst_element_factory_get_element_type(GstElementFactory *factory) {
  return failing == __func__
             ? 0
             : replaced_function(gst_element_factory_get_element_type, __func__)(factory);
}

GstDiscovererInfo *gst_discoverer_discover_uri(GstDiscoverer *discoverer, const gchar *uri,
                                               GError **error) {
  return failing == __func__
             ? nullptr
             : replaced_function(gst_discoverer_discover_uri, __func__)(discoverer, uri, error);
}

}  // extern "C"

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;
using capture::MediaType;

class Failing {
public:
  explicit Failing(const char *function) { failing = function; }
  ~Failing() { failing = {}; }
  Failing(const Failing &) = delete;
  Failing &operator=(const Failing &) = delete;
};

// The functions below cause the errors that need more than one line.

void look_up_kind() {
  Media_Helper::string_from_map_or_throw_<MediaType>(capture::RTP, {{capture::JPEG, "jpeg"}},
                                                     "no such kind: 100%");
}

void look_up_text() {
  Media_Helper::string_from_map_or_throw_<std::string>("b", {{"a", "first"}}, "no such text: 100%");
}

void link_tee_to_source() {
  const Element tee = make_element("tee");
  const Element source = make_element("fakesrc");
  Media_Helper::link_tee_to_element(tee.get(), source.get());
}

// Has "src_%u" pads, but does not create them on request.
void request_src_pad_of_decodebin() {
  const Expected_Log warning("presence == GST_PAD_REQUEST");
  Media_Helper::get_tee_src_pad(make_element("decodebin").get());
}

void request_taken_multiqueue_pad() {
  const Element multiqueue = make_element("multiqueue");
  const Pad taken = request_pad(multiqueue.get(), "sink_0");
  const Expected_Log warning("already has a pad named sink_0");
  Media_Helper::request_new_multiqueue_pads(multiqueue.get(), "sink_0", nullptr);
}

void pair_pad_of_other_name() {
  const Element bin = make_element("bin");
  const Pad pad = make_pad("left", GST_PAD_SRC);
  gst_element_add_pad(bin.get(), pad.get());
  Media_Helper::get_corresponding_multiqueue_pad(pad.get());
}

void link_to_linked_element() {
  const Element source = make_element("fakesrc", "camera");
  const Element other = make_element("fakesrc", "other");
  const Element sink = make_element("fakesink", "file");
  gst_element_link(other.get(), sink.get());
  Media_Helper::link_pad_to_element_or_throw(static_pad(source, "src").get(), sink.get());
}

void add_element_of_taken_name() {
  const Element bin = make_element("bin", "recording");
  gst_bin_add(as_bin(bin), gst_element_factory_make("identity", "parser"));
  Media_Helper::gst_bin_add_or_throw(as_bin(bin), gst_element_factory_make("identity", "parser"));
}

// An idle probe runs immediately on an idle pad. If it removes itself, it has no identifier
// afterwards.
void add_probe_that_removes_itself() {
  Media_Helper::add_probe_to_sink_pad_or_throw(
      make_element("fakesink").get(), GST_PAD_PROBE_TYPE_IDLE,
      [](GstPad *, GstPadProbeInfo *, gpointer) { return GST_PAD_PROBE_REMOVE; }, nullptr, nullptr);
}

void watch_bus_twice() {
  const boost::intrusive_ptr<GstBus> bus(gst_bus_new(), false);
  const boost::intrusive_ptr<GSource> watch(gst_bus_create_watch(bus.get()), false);
  Media_Helper::gst_bus_create_watch_or_throw(bus.get());
}

void link_source_to_source() {
  const Element first = make_element("fakesrc", "first");
  const Element second = make_element("fakesrc", "second");
  Media_Helper::gst_element_link_many_or_throw(first.get(), second.get(), nullptr);
}

void get_type_without_plugin() {
  const Failing load("gst_plugin_feature_load");
  Media_Helper::get_element_type("identity");
}

void get_type_without_type() {
  const Failing type("gst_element_factory_get_element_type");
  Media_Helper::get_element_type("identity");
}

// The peer disappears between two queries for it.
void get_peer_that_leaves() {
  const Element source = make_element("fakesrc");
  const Element sink = make_element("fakesink");
  gst_element_link(source.get(), sink.get());
  const Failing peer("gst_pad_get_peer");
  Media_Helper::get_element_sink_peer_pad_or_throw(sink.get());
}

void verify_parentless_element() {
  const Element pipeline = make_element("pipeline");
  Media_Helper::verify_element_top_parent(make_element("identity").get(), pipeline.get());
}

void verify_element_of_other_pipeline() {
  const Element pipeline = make_element("pipeline");
  const Element other = make_element("pipeline");
  const Element element = make_element("identity");
  gst_bin_add(as_bin(pipeline), element.get());
  Media_Helper::verify_element_top_parent(element.get(), other.get());
}

void discover_without_timeout() {
  const Expected_Log warning("GST_CLOCK_TIME_IS_VALID");
  Media_Helper::get_media_info("file:///nowhere", GST_CLOCK_TIME_NONE);
}

void select_proxies_of_raw_video() {
  const Depayloader_References references;
  Media_Helper::select_proxy_elements(make_caps("video/x-raw").get());
}

void discover_without_answer() {
  const Failing discovery("gst_discoverer_discover_uri");
  Media_Helper::get_media_info("file:///nowhere", GST_SECOND);
}

void connect_to_misspelt_signal() {
  const Expected_Log warning("is invalid for instance");
  Media_Helper::g_signal_connect_or_throw(
      make_element("identity", "parser").get(), "pad-adeddd", [] {}, nullptr);
}

void start_source_without_file() {
  const Element source = make_element("filesrc", "src0");
  struct Stop {
    GstElement *element;
    ~Stop() { gst_element_set_state(element, GST_STATE_NULL); }
  } const stop{source.get()};
  Media_Helper::gst_element_set_state_or_throw(source.get(), GST_STATE_PLAYING, "starting capture");
}

void check_uninitialised() {
  const Failing initialised("gst_is_initialized");
  Media_Helper::gst_is_initialized_or_throw("call gst_init first: 100%");
}

enum class Kind { BACKEND, LOGIC };

struct Row {
  int code;
  const char *operation;
  const char *text;
  void (*site)();
  Kind kind = Kind::BACKEND;
};

// One row per line: the code, the operation, the whole text, the function that makes the operation
// fail.
// clang-format off
const Row rows[] = {
    {0x15000, "string_from_map_or_throw_, media kind", "no such kind: 100%", look_up_kind},
    {0x15000, "string_from_map_or_throw_, text", "no such text: 100%", look_up_text},
    {0x15010, "select_proxy_elements", "Failed to select proxy elements: Unsupported caps.", select_proxies_of_raw_video},
    {0x15020, "link_tee_to_element", "Failed to link tee to element", link_tee_to_source},
    {0x15030, "get_tee_src_pad", "NULL src pad template", [] { Media_Helper::get_tee_src_pad(make_element("fakesink").get()); }},
    {0x15040, "get_tee_src_pad", "Failed to get src pad from tee", request_src_pad_of_decodebin},
    {0x15050, "request_new_multiqueue_pads", "Error getting pad_template", [] { Media_Helper::request_new_multiqueue_pads(make_element("tee").get(), "", nullptr); }},
    {0x15055, "request_new_multiqueue_pads", "Error getting requested sink pad", request_taken_multiqueue_pad},
    {0x15070, "get_corresponding_multiqueue_pad", "Could not get parent element from pad.", [] { Media_Helper::get_corresponding_multiqueue_pad(make_pad("src_0", GST_PAD_SRC).get()); }},
    {0x15080, "get_corresponding_multiqueue_pad", "Pad has wrong naming scheme. Doesn't appear to be a multiqueue pad.", pair_pad_of_other_name},
    {0x150B0, "link_pad_to_element_or_throw", "Failed to link \"src\" pad from element \"camera\" with \"sink\" pad from element \"file\" (GST_PAD_LINK_WAS_LINKED: pad was already linked).", link_to_linked_element},
    {0x150C0, "gst_element_factory_make_or_throw", "Could not create nosuchfactory parser", [] { Media_Helper::gst_element_factory_make_or_throw("nosuchfactory", "parser"); }},
    {0x150E0, "gst_bin_add_or_throw", "Failed to add element parser () to bin.", add_element_of_taken_name},
    {0x150F0, "gst_element_sync_state_with_parent_or_throw", "Failed to sync element parser () with parent.", [] { Media_Helper::gst_element_sync_state_with_parent_or_throw(make_element("identity", "parser").get()); }},
    {0x15100, "gst_element_get_static_pad_or_throw", "Failed to get static pad \"src\" for element file ().", [] { Media_Helper::gst_element_get_static_pad_or_throw(make_element("fakesink", "file").get(), "src"); }},
    {0x15110, "gst_element_get_parent_or_throw", "Failed to get parent for element recording ().", [] { Media_Helper::gst_element_get_parent_or_throw(make_element("pipeline", "recording").get()); }},
    {0x15120, "gst_parse_launch_or_throw", "Could not create pipeline : ", [] { Media_Helper::gst_parse_launch_or_throw(""); }},
    {0x15130, "gst_bin_get_by_name_or_throw", "bin == NULL", [] { Media_Helper::gst_bin_get_by_name_or_throw(nullptr, "parser"); }},
    {0x15140, "gst_bin_get_by_name_or_throw", "Could not retrieve element 'parser' from bin", [] { Media_Helper::gst_bin_get_by_name_or_throw(as_bin(make_element("bin")), "parser"); }},
    {0x15150, "add_probe_to_sink_pad_or_throw", "Failed to add timeout probe", add_probe_that_removes_itself},
    {0x15160, "is_element_or_throw", "camera is not a GstElement *.", [] { Media_Helper::is_element_or_throw(nullptr, "camera"); }},
    {0x15170, "is_pad_or_throw", "camera is not a GstPad *.", [] { Media_Helper::is_pad_or_throw(nullptr, "camera"); }},
    {0x15180, "is_bin_or_throw", "camera is not a GstBin *.", [] { Media_Helper::is_bin_or_throw(nullptr, "camera"); }},
    {0x15190, "is_bus_or_throw", "camera is not a GstBus *.", [] { Media_Helper::is_bus_or_throw(nullptr, "camera"); }},
    {0x151A0, "gst_element_get_bus_or_throw", "Could not retrieve pipeline bus for element \"parser\".", [] { Media_Helper::gst_element_get_bus_or_throw(make_element("identity", "parser").get()); }},
    {0x151B0, "gst_bus_create_watch_or_throw", "Could not create bus watch in gst_bus_create_watch_or_throw", watch_bus_twice},
    {0x151C0, "gst_element_link_many_or_throw", "Failed to link element \"first\" and element \"second\".", link_source_to_source},
    {0x151D0, "gst_element_factory_find_or_throw", "Could not find factory for \"nosuchfactory\" in gst_element_factory_find_or_throw", [] { Media_Helper::gst_element_factory_find_or_throw("nosuchfactory"); }},
    {0x151E0, "get_element_type", "Could not load factory for element \"identity\" in get_element_type.", get_type_without_plugin},
    {0x151F0, "get_element_type", "Unable to get type information for factory for element \"identity\" in get_element_type.", get_type_without_type},
    {0x15200, "is_valid_element_type_or_throw", "camera is not a valid GType.", [] { Media_Helper::is_valid_element_type_or_throw(0, "camera"); }},
    {0x15210, "is_caps_or_throw", "camera is not a GstCaps *.", [] { Media_Helper::is_caps_or_throw(nullptr, "camera"); }},
    {0x15220, "get_element_sink_peer_pad_or_throw", "Sink pad is not linked in get_element_sink_peer_pad_or_throw", [] { Media_Helper::get_element_sink_peer_pad_or_throw(make_element("fakesink").get()); }},
    {0x15230, "get_element_sink_peer_pad_or_throw", "Unable to get peer pad in et_element_sink_peer_pad_or_throw", get_peer_that_leaves},
    {0x15240, "verify_element_top_parent, no parent", "Topmost parent mismatch of the first kind in verify_element_top_parent", verify_parentless_element},
    {0x15240, "verify_element_top_parent, other parent", "Topmost parent mismatch of the second kind in verify_element_top_parent", verify_element_of_other_pipeline},
    {0x15250, "calculate_resolution", "Invalid resolution provided in calculate_resolution", [] { Media_Helper::calculate_resolution({640, 0}, {640, 480}); }, Kind::LOGIC},
    {0x15260, "get_framerate_from_caps", "Unable to get framerate from caps in get_framerate_from_caps", [] { Media_Helper::get_framerate_from_caps(make_caps("video/x-raw").get()); }},
    {0x15270, "get_framerate_from_caps", "Retrieved invalid numerator or denomenator in get_framerate_from_caps", [] { Media_Helper::get_framerate_from_caps(make_caps("video/x-raw, framerate=0/1").get()); }},
    {0x15280, "get_resolution_from_caps", "Unable to get width and/or height in get_resolution_from_caps", [] { Media_Helper::get_resolution_from_caps(make_caps("video/x-raw, width=640").get()); }},
    {0x15290, "get_resolution_from_caps", "Retrieved invalid width and/or height in get_resolution_from_caps", [] { Media_Helper::get_resolution_from_caps(make_caps("video/x-raw, width=640, height=0").get()); }},
    {0x152A0, "get_media_info", "Error creating discoverer in get_media_info", discover_without_timeout},
    {0x152B0, "get_media_info", "Error discovering media in get_media_info", discover_without_answer},
    {0x152C0, "get_media_info", "Discoverer returned error: GST_DISCOVERER_ERROR", [] { Media_Helper::get_media_info("file:///nowhere", 10 * GST_SECOND); }},
    {0x152D0, "g_signal_connect_or_throw", "Failed to connect to signal \"pad-adeddd\" on element \"parser\".", connect_to_misspelt_signal},
    {0x152E0, "gst_element_set_state_or_throw", "Failed to set state GST_STATE_PLAYING on element src0 (), starting capture", start_source_without_file},
    {0x152F0, "gst_is_initialized_or_throw", "call gst_init first: 100%", check_uninitialised},
};
// clang-format on

std::ostream &operator<<(std::ostream &out, const Row &row) {
  return out << std::hex << "0x" << row.code << ", " << row.operation;
}

// Calls a function that must throw a logic error. expect_error() checks for backend errors.
void expect_logic_error(int code, const std::string &text, void (*call)()) {
  try {
    call();
  } catch (const Tavren_Error<std::logic_error> &error) {
    EXPECT_EQ(static_cast<int>(error.code()), code);
    EXPECT_EQ(std::string(error.what()), text);
    return;
  }
  ADD_FAILURE() << "threw nothing; expected: " << text;
}

void expect_row(const Row &row) {
  if (row.kind == Kind::LOGIC)
    expect_logic_error(row.code, row.text, row.site);
  else
    expect_error(row.code, row.text, row.site);
}

class ErrorCodes : public testing::TestWithParam<Row> {};

TEST_P(ErrorCodes, AreThrownWithTheirMessage) {
  if (!framework_can_cause(GetParam().code))
    GTEST_SKIP() << "GStreamer 1.18 does not cause this error";
  expect_row(GetParam());
}

// The name contains the index of the row, which distinguishes two rows with the same operation.
INSTANTIATE_TEST_SUITE_P(All, ErrorCodes, testing::ValuesIn(rows), [](const auto &test) {
  std::string name;
  for (const char c : std::string(test.param.operation))
    name += g_ascii_isalnum(c) ? c : '_';
  return name + "_" + std::to_string(test.index);
});

// The compiler requires a case for each code.
int pinned(TEC::Tavren_Error_Code code) {
  // clang-format off
  switch (code) {
  case TEC::KEY_NOT_FOUND:
    return 0x15000;
  case TEC::NO_PROXY_ELEMENTS_FOR_CAPS:
    return 0x15010;
  case TEC::TEE_LINK_FAILED:
    return 0x15020;
  case TEC::TEE_HAS_NO_SRC_PAD_TEMPLATE:
    return 0x15030;
  case TEC::TEE_SRC_PAD_REQUEST_FAILED:
    return 0x15040;
  case TEC::MULTIQUEUE_HAS_NO_SINK_PAD_TEMPLATE:
    return 0x15050;
  case TEC::MULTIQUEUE_SINK_PAD_REQUEST_FAILED:
    return 0x15055;
  case TEC::MULTIQUEUE_PAD_HAS_NO_PARENT:
    return 0x15070;
  case TEC::NOT_A_MULTIQUEUE_PAD_NAME:
    return 0x15080;
  case TEC::PAD_LINK_FAILED:
    return 0x150B0;
  case TEC::ELEMENT_CREATION_FAILED:
    return 0x150C0;
  case TEC::BIN_ADD_FAILED:
    return 0x150E0;
  case TEC::STATE_SYNC_WITH_PARENT_FAILED:
    return 0x150F0;
  case TEC::STATIC_PAD_NOT_FOUND:
    return 0x15100;
  case TEC::ELEMENT_HAS_NO_PARENT:
    return 0x15110;
  case TEC::PARSE_LAUNCH_FAILED:
    return 0x15120;
  case TEC::BIN_IS_NULL:
    return 0x15130;
  case TEC::ELEMENT_NOT_IN_BIN:
    return 0x15140;
  case TEC::PROBE_NOT_ADDED:
    return 0x15150;
  case TEC::NOT_AN_ELEMENT:
    return 0x15160;
  case TEC::NOT_A_PAD:
    return 0x15170;
  case TEC::NOT_A_BIN:
    return 0x15180;
  case TEC::NOT_A_BUS:
    return 0x15190;
  case TEC::ELEMENT_HAS_NO_BUS:
    return 0x151A0;
  case TEC::BUS_WATCH_CREATION_FAILED:
    return 0x151B0;
  case TEC::ELEMENT_LINK_FAILED:
    return 0x151C0;
  case TEC::FACTORY_NOT_FOUND:
    return 0x151D0;
  case TEC::FACTORY_NOT_LOADED:
    return 0x151E0;
  case TEC::FACTORY_HAS_NO_ELEMENT_TYPE:
    return 0x151F0;
  case TEC::INVALID_ELEMENT_TYPE:
    return 0x15200;
  case TEC::NOT_CAPS:
    return 0x15210;
  case TEC::SINK_PAD_NOT_LINKED:
    return 0x15220;
  case TEC::SINK_PAD_HAS_NO_PEER:
    return 0x15230;
  case TEC::TOP_PARENT_MISMATCH:
    return 0x15240;
  case TEC::INVALID_RESOLUTION:
    return 0x15250;
  case TEC::CAPS_WITHOUT_FRAMERATE:
    return 0x15260;
  case TEC::INVALID_FRAMERATE:
    return 0x15270;
  case TEC::CAPS_WITHOUT_RESOLUTION:
    return 0x15280;
  case TEC::INVALID_CAPS_RESOLUTION:
    return 0x15290;
  case TEC::DISCOVERER_CREATION_FAILED:
    return 0x152A0;
  case TEC::DISCOVERY_FAILED:
    return 0x152B0;
  case TEC::DISCOVERER_RETURNED_ERROR:
    return 0x152C0;
  case TEC::SIGNAL_CONNECTION_FAILED:
    return 0x152D0;
  case TEC::STATE_CHANGE_FAILED:
    return 0x152E0;
  case TEC::FRAMEWORK_NOT_INITIALIZED:
    return 0x152F0;
  }
  // clang-format on
  return 0;
}

// Returns the numbers of all enumerators. Tries numbers in their range and far beyond it.
std::set<int> enumerated() {
  std::set<int> numbers;
  for (int number = 0; number < 0x20000; ++number)
    if (const int found = pinned(static_cast<TEC::Tavren_Error_Code>(number)); found != 0) {
      EXPECT_EQ(found, number);
      numbers.insert(found);
    }
  return numbers;
}

TEST(ErrorCodeNumbers, AreFixed) {
  EXPECT_EQ(enumerated().size(), 45U);
}

TEST(ErrorCodeNumbers, AreAllThrownInATest) {
  std::set<int> seen;
  for (const Row &row : rows)
    try {
      if (framework_can_cause(row.code)) row.site();
    } catch (const Tavren_Error<std::exception> &error) {
      seen.insert(error.code());
    }
  std::set<int> possible;
  for (const int code : enumerated())
    if (framework_can_cause(code)) possible.insert(code);
  EXPECT_EQ(seen, possible);
}

static_assert(std::is_same_v<std::underlying_type_t<TEC::Tavren_Error_Code>, std::int32_t>);

static_assert(capture::JPEG == 0 && capture::H264 == 1 && capture::MPEG_AUDIO == 2 &&
              capture::MPEG_VIDEO == 3 && capture::RTP_METADATA == 4 && capture::RTP == 5 &&
              capture::VIDEO_RAW == 6 && capture::AUDIO_RAW == 7 && capture::MULAW == 8 &&
              capture::UNKNOWN == 9);

TEST(ErrorTexts, DoNotDependOnTheGlobalLocale) {
  const Grouping_Locale locale;
  for (const Row &row : rows) {
    SCOPED_TRACE(row);
    if (framework_can_cause(row.code)) expect_row(row);
  }
}

template <std::size_t... Index>
void link_chain(const std::vector<GstElement *> &elements, std::index_sequence<Index...>) {
  Media_Helper::gst_element_link_many_or_throw(elements[0], elements[1], elements[Index + 2]...,
                                               nullptr);
}

// The only number that the library formats in the text of a check.
TEST(ErrorTexts, PrintNumbersWithoutGrouping) {
  std::vector<Element> owners;
  std::vector<GstElement *> elements;
  for (int i = 0; i < 11; ++i)
    elements.push_back(owners.emplace_back(make_element("identity")).get());
  const Pad pad = make_pad("src", GST_PAD_SRC);
  elements.push_back(GST_ELEMENT_CAST(static_cast<gpointer>(pad.get())));

  const Grouping_Locale locale("\1");
  expect_error(0x15160, "element 12 in gst_element_link_many_or_throw is not a GstElement *.",
               [&elements] { link_chain(elements, std::make_index_sequence<10>()); });
}

}  // namespace
}  // namespace kel::tavren::tests
