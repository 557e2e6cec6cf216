// Names and explanations of the framework's enumerators.

#include <cstddef>
#include <initializer_list>
#include <string>

#include <gtest/gtest.h>
#include <tavren/capture/media_helper.h>

namespace kel::tavren::tests {
namespace {

using capture::Media_Helper;

struct Row {
  gint64 value;
  const char *text;
};

// clang-format off
const Row states[] = {
    {0, "GST_STATE_VOID_PENDING"},
    {1, "GST_STATE_NULL"},
    {2, "GST_STATE_READY"},
    {3, "GST_STATE_PAUSED"},
    {4, "GST_STATE_PLAYING"},
};

const Row state_changes[] = {
    {10, "GST_STATE_CHANGE_NULL_TO_READY"},
    {19, "GST_STATE_CHANGE_READY_TO_PAUSED"},
    {28, "GST_STATE_CHANGE_PAUSED_TO_PLAYING"},
    {35, "GST_STATE_CHANGE_PLAYING_TO_PAUSED"},
    {26, "GST_STATE_CHANGE_PAUSED_TO_READY"},
    {17, "GST_STATE_CHANGE_READY_TO_NULL"},
};

const Row state_change_results[] = {
    {0, "GST_STATE_CHANGE_FAILURE: the state change failed"},
    {1, "GST_STATE_CHANGE_SUCCESS: the state change succeeded"},
    {2, "GST_STATE_CHANGE_ASYNC: the state change will happen asynchronously"},
    {3, "GST_STATE_CHANGE_NO_PREROLL: the state change succeeded but the element cannot produce data in GST_STATE_PAUSED"},
};

const Row pad_link_results[] = {
    {0,  "GST_PAD_LINK_OK: link succeeded"},
    {-1, "GST_PAD_LINK_WRONG_HIERARCHY: pads have no common grandparent"},
    {-2, "GST_PAD_LINK_WAS_LINKED: pad was already linked"},
    {-3, "GST_PAD_LINK_WRONG_DIRECTION: pads have wrong direction"},
    {-4, "GST_PAD_LINK_NOFORMAT: pads do not have common format"},
    {-5, "GST_PAD_LINK_NOSCHED: pads cannot cooperate in scheduling"},
    {-6, "GST_PAD_LINK_REFUSED: refused for some reason"},
};

const Row state_messages[] = {
    {0, "GST_STATE_VOID_PENDING: no pending state"},
    {1, "GST_STATE_NULL: the NULL state or initial state of an element"},
    {2, "GST_STATE_READY: the element is PAUSED, it is ready to accept and process data"},
    {4, "GST_STATE_PLAYING: the element is PLAYING, the GstClock is running, and the data are flowing"},
};

const Row message_types[] = {
    {0,          "GST_MESSAGE_UNKNOWN"},
    {0x1,        "GST_MESSAGE_EOS"},
    {0x2,        "GST_MESSAGE_ERROR"},
    {0x4,        "GST_MESSAGE_WARNING"},
    {0x8,        "GST_MESSAGE_INFO"},
    {0x10,       "GST_MESSAGE_TAG"},
    {0x20,       "GST_MESSAGE_BUFFERING"},
    {0x40,       "GST_MESSAGE_STATE_CHANGED"},
    {0x80,       "GST_MESSAGE_STATE_DIRTY"},
    {0x100,      "GST_MESSAGE_STEP_DONE"},
    {0x200,      "GST_MESSAGE_CLOCK_PROVIDE"},
    {0x400,      "GST_MESSAGE_CLOCK_LOST"},
    {0x800,      "GST_MESSAGE_NEW_CLOCK"},
    {0x1000,     "GST_MESSAGE_STRUCTURE_CHANGE"},
    {0x2000,     "GST_MESSAGE_STREAM_STATUS"},
    {0x4000,     "GST_MESSAGE_APPLICATION"},
    {0x8000,     "GST_MESSAGE_ELEMENT"},
    {0x10000,    "GST_MESSAGE_SEGMENT_START"},
    {0x20000,    "GST_MESSAGE_SEGMENT_DONE"},
    {0x40000,    "GST_MESSAGE_DURATION_CHANGED"},
    {0x80000,    "GST_MESSAGE_LATENCY"},
    {0x100000,   "GST_MESSAGE_ASYNC_START"},
    {0x200000,   "GST_MESSAGE_ASYNC_DONE"},
    {0x400000,   "GST_MESSAGE_REQUEST_STATE"},
    {0x800000,   "GST_MESSAGE_STEP_START"},
    {0x1000000,  "GST_MESSAGE_QOS"},
    {0x2000000,  "GST_MESSAGE_PROGRESS"},
    {0x4000000,  "GST_MESSAGE_TOC"},
    {0x8000000,  "GST_MESSAGE_RESET_TIME"},
    {0x10000000, "GST_MESSAGE_STREAM_START"},
    {0x20000000, "GST_MESSAGE_NEED_CONTEXT"},
    {0x40000000, "GST_MESSAGE_HAVE_CONTEXT"},
    {0x80000000, "GST_MESSAGE_EXTENDED"},
    {0x80000001, "GST_MESSAGE_DEVICE_ADDED"},
    {0x80000002, "GST_MESSAGE_DEVICE_REMOVED"},
    {0xFFFFFFFF, "GST_MESSAGE_ANY"},
};

// clang-format on

// Calls an overload or a function for one enumeration with numbers.
template <typename Enumeration>
class Texts {
public:
  using Function = std::string (*)(Enumeration);

  explicit Texts(Function function) : function_(function) {}

  template <std::size_t Size>
  void expect_table(const Row (&rows)[Size]) const {
    for (const Row &row : rows)
      EXPECT_EQ(function_(static_cast<Enumeration>(row.value)), row.text) << row.value;
  }

  void expect_fallback(const char *text, std::initializer_list<gint64> values) const {
    for (const gint64 value : values)
      EXPECT_EQ(function_(static_cast<Enumeration>(value)), text) << value;
  }

private:
  Function function_;
};

TEST(StateText, IsTheNameOfTheState) {
  const Texts<GstState> texts(Media_Helper::gst_state_to_string);
  texts.expect_table(states);
  texts.expect_fallback("UNKNOWN", {5, 6, 7, -1});
}

TEST(StateText, IsTheMessageOfTheState) {
  const Texts<GstState> texts(Media_Helper::gst_enum_message);
  texts.expect_table(state_messages);
  // GST_STATE_PAUSED, 3, has no explanation.
  texts.expect_fallback("Unknown GstState value", {3, 5, 6, 7, -1});
}

TEST(StateChangeText, IsTheNameOfAChangeBetweenAdjacentStates) {
  const Texts<GstStateChange> texts(Media_Helper::gst_state_change_to_string);
  texts.expect_table(state_changes);
  texts.expect_fallback("UNKNOWN", {9, 18, 27, 36});
  // Changes by more than one state, and numbers that are not state changes.
  texts.expect_fallback("UNKNOWN", {0, 1, 8, 11, 12, 16, 20, 24, 25, 29, 32, 33, 34, 37, 63, -1});
}

TEST(StateChangeResultText, IsTheMessageOfTheResult) {
  const Texts<GstStateChangeReturn> texts(Media_Helper::gst_enum_message);
  texts.expect_table(state_change_results);
  texts.expect_fallback("Unknown GstStateChangeReturn value", {4, 5, -1});
}

TEST(PadLinkResultText, IsTheMessageOfTheResult) {
  const Texts<GstPadLinkReturn> texts(Media_Helper::gst_enum_message);
  texts.expect_table(pad_link_results);
  texts.expect_fallback("Unknown GstPadLinkReturn value", {1, -7, -8, 6});
}

TEST(MessageTypeText, IsTheNameOfTheType) {
  const Texts<GstMessageType> texts(Media_Helper::gst_enum_message);
  ASSERT_EQ(std::size(message_types), 36U);
  texts.expect_table(message_types);
  // Combinations of types, and extended types without a name here.
  texts.expect_fallback("Unknown GstMessageType value", {0x3, 0x6, 0x7FFFFFFF, 0xFFFFFFFE});
  texts.expect_fallback("Unknown GstMessageType value",
                        {0x80000003, 0x80000004, 0x80000005, 0x80000006, 0x80000007, 0x80000008});
}

// The values match those of the framework.
TEST(EnumerationTexts, MatchTheValuesOfTheFramework) {
  EXPECT_EQ(Media_Helper::gst_state_to_string(GST_STATE_PAUSED), "GST_STATE_PAUSED");
  EXPECT_EQ(Media_Helper::gst_enum_message(GST_STATE_PAUSED), "Unknown GstState value");
  EXPECT_EQ(Media_Helper::gst_enum_message(GST_STATE_READY),
            "GST_STATE_READY: the element is PAUSED, it is ready to accept and process data");
  EXPECT_EQ(Media_Helper::gst_state_change_to_string(GST_STATE_CHANGE_PLAYING_TO_PAUSED),
            "GST_STATE_CHANGE_PLAYING_TO_PAUSED");
  EXPECT_EQ(Media_Helper::gst_state_change_to_string(GST_STATE_CHANGE_NULL_TO_NULL), "UNKNOWN");
  EXPECT_EQ(Media_Helper::gst_enum_message(GST_STATE_CHANGE_ASYNC),
            "GST_STATE_CHANGE_ASYNC: the state change will happen asynchronously");
  EXPECT_EQ(Media_Helper::gst_enum_message(GST_PAD_LINK_REFUSED),
            "GST_PAD_LINK_REFUSED: refused for some reason");
  EXPECT_EQ(Media_Helper::gst_enum_message(
                static_cast<GstMessageType>(GST_MESSAGE_ERROR | GST_MESSAGE_WARNING)),
            "Unknown GstMessageType value");
  EXPECT_EQ(Media_Helper::gst_enum_message(GST_MESSAGE_DEVICE_REMOVED),
            "GST_MESSAGE_DEVICE_REMOVED");
  EXPECT_EQ(Media_Helper::gst_enum_message(GST_MESSAGE_ANY), "GST_MESSAGE_ANY");
  EXPECT_EQ(Media_Helper::gst_enum_message(GST_MESSAGE_REDIRECT), "Unknown GstMessageType value");
}

}  // namespace
}  // namespace kel::tavren::tests
