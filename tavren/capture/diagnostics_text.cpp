#include <array>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <locale>
#include <sstream>

#include <boost/format.hpp>

#include <tavren/capture/media_helper.h>
#include <tavren/capture/message_text.h>
#include <tavren/capture/text_table.h>

namespace kel::tavren::capture {

namespace {

// A stream that formats numbers independently of the locale, and throws if an allocation fails.
class Classic_Stream : public std::ostringstream {
public:
  Classic_Stream() {
    imbue(std::locale::classic());
    rethrow_failures(*this);
  }
};

// Storage for a level of any integer type: g_object_get() writes as many bytes as the property's
// type has, 4 for a queue.
class Level {
public:
  void *address() noexcept { return words_.data(); }

  guint64 value() const noexcept {
    // A type of 4 bytes fills only the first word, in either byte order.
    const auto [first, second] = words_;
    if (second == 0) return first;
    guint64 value = 0;
    std::memcpy(&value, words_.data(), sizeof value);
    return value;
  }

private:
  alignas(guint64) std::array<guint32, 2> words_{};
};

}  // namespace

// clang-format off

std::string Media_Helper::gst_state_to_string(GstState state) {
  const auto table = make_text_table<GstState>({
      {GST_STATE_VOID_PENDING, "GST_STATE_VOID_PENDING"},
      {GST_STATE_NULL,         "GST_STATE_NULL"},
      {GST_STATE_READY,        "GST_STATE_READY"},
      {GST_STATE_PAUSED,       "GST_STATE_PAUSED"},
      {GST_STATE_PLAYING,      "GST_STATE_PLAYING"},
  });
  return text_or(table, state, "UNKNOWN");
}

std::string Media_Helper::gst_state_change_to_string(GstStateChange change) {
  const auto table = make_text_table<GstStateChange>({
      {GST_STATE_CHANGE_NULL_TO_READY,     "GST_STATE_CHANGE_NULL_TO_READY"},
      {GST_STATE_CHANGE_READY_TO_PAUSED,   "GST_STATE_CHANGE_READY_TO_PAUSED"},
      {GST_STATE_CHANGE_PAUSED_TO_PLAYING, "GST_STATE_CHANGE_PAUSED_TO_PLAYING"},
      {GST_STATE_CHANGE_PLAYING_TO_PAUSED, "GST_STATE_CHANGE_PLAYING_TO_PAUSED"},
      {GST_STATE_CHANGE_PAUSED_TO_READY,   "GST_STATE_CHANGE_PAUSED_TO_READY"},
      {GST_STATE_CHANGE_READY_TO_NULL,     "GST_STATE_CHANGE_READY_TO_NULL"},
  });
  return text_or(table, change, "UNKNOWN");
}

std::string Media_Helper::gst_enum_message(GstStateChangeReturn result) {
  const auto table = make_text_table<GstStateChangeReturn>({
      {GST_STATE_CHANGE_FAILURE,    "GST_STATE_CHANGE_FAILURE: the state change failed"},
      {GST_STATE_CHANGE_SUCCESS,    "GST_STATE_CHANGE_SUCCESS: the state change succeeded"},
      {GST_STATE_CHANGE_ASYNC,      "GST_STATE_CHANGE_ASYNC: the state change will happen asynchronously"},
      {GST_STATE_CHANGE_NO_PREROLL, "GST_STATE_CHANGE_NO_PREROLL: the state change succeeded but the element cannot produce data in GST_STATE_PAUSED"},
  });
  return text_or(table, result, "Unknown GstStateChangeReturn value");
}

std::string Media_Helper::gst_enum_message(GstPadLinkReturn result) {
  const auto table = make_text_table<GstPadLinkReturn>({
      {GST_PAD_LINK_OK,              "GST_PAD_LINK_OK: link succeeded"},
      {GST_PAD_LINK_WRONG_HIERARCHY, "GST_PAD_LINK_WRONG_HIERARCHY: pads have no common grandparent"},
      {GST_PAD_LINK_WAS_LINKED,      "GST_PAD_LINK_WAS_LINKED: pad was already linked"},
      {GST_PAD_LINK_WRONG_DIRECTION, "GST_PAD_LINK_WRONG_DIRECTION: pads have wrong direction"},
      {GST_PAD_LINK_NOFORMAT,        "GST_PAD_LINK_NOFORMAT: pads do not have common format"},
      {GST_PAD_LINK_NOSCHED,         "GST_PAD_LINK_NOSCHED: pads cannot cooperate in scheduling"},
      {GST_PAD_LINK_REFUSED,         "GST_PAD_LINK_REFUSED: refused for some reason"},
  });
  return text_or(table, result, "Unknown GstPadLinkReturn value");
}

// PAUSED has no row, and the text for READY mentions PAUSED. Both are kept because users search
// their logs for these texts.
std::string Media_Helper::gst_enum_message(GstState state) {
  const auto table = make_text_table<GstState>({
      {GST_STATE_VOID_PENDING, "GST_STATE_VOID_PENDING: no pending state"},
      {GST_STATE_NULL,         "GST_STATE_NULL: the NULL state or initial state of an element"},
      {GST_STATE_READY,        "GST_STATE_READY: the element is PAUSED, it is ready to accept and process data"},
      {GST_STATE_PLAYING,      "GST_STATE_PLAYING: the element is PLAYING, the GstClock is running, and the data are flowing"},
  });
  return text_or(table, state, "Unknown GstState value");
}

std::string Media_Helper::gst_enum_message(GstMessageType type) {
  const auto table = make_text_table<GstMessageType>({
      {GST_MESSAGE_UNKNOWN,          "GST_MESSAGE_UNKNOWN"},
      {GST_MESSAGE_EOS,              "GST_MESSAGE_EOS"},
      {GST_MESSAGE_ERROR,            "GST_MESSAGE_ERROR"},
      {GST_MESSAGE_WARNING,          "GST_MESSAGE_WARNING"},
      {GST_MESSAGE_INFO,             "GST_MESSAGE_INFO"},
      {GST_MESSAGE_TAG,              "GST_MESSAGE_TAG"},
      {GST_MESSAGE_BUFFERING,        "GST_MESSAGE_BUFFERING"},
      {GST_MESSAGE_STATE_CHANGED,    "GST_MESSAGE_STATE_CHANGED"},
      {GST_MESSAGE_STATE_DIRTY,      "GST_MESSAGE_STATE_DIRTY"},
      {GST_MESSAGE_STEP_DONE,        "GST_MESSAGE_STEP_DONE"},
      {GST_MESSAGE_CLOCK_PROVIDE,    "GST_MESSAGE_CLOCK_PROVIDE"},
      {GST_MESSAGE_CLOCK_LOST,       "GST_MESSAGE_CLOCK_LOST"},
      {GST_MESSAGE_NEW_CLOCK,        "GST_MESSAGE_NEW_CLOCK"},
      {GST_MESSAGE_STRUCTURE_CHANGE, "GST_MESSAGE_STRUCTURE_CHANGE"},
      {GST_MESSAGE_STREAM_STATUS,    "GST_MESSAGE_STREAM_STATUS"},
      {GST_MESSAGE_APPLICATION,      "GST_MESSAGE_APPLICATION"},
      {GST_MESSAGE_ELEMENT,          "GST_MESSAGE_ELEMENT"},
      {GST_MESSAGE_SEGMENT_START,    "GST_MESSAGE_SEGMENT_START"},
      {GST_MESSAGE_SEGMENT_DONE,     "GST_MESSAGE_SEGMENT_DONE"},
      {GST_MESSAGE_DURATION_CHANGED, "GST_MESSAGE_DURATION_CHANGED"},
      {GST_MESSAGE_LATENCY,          "GST_MESSAGE_LATENCY"},
      {GST_MESSAGE_ASYNC_START,      "GST_MESSAGE_ASYNC_START"},
      {GST_MESSAGE_ASYNC_DONE,       "GST_MESSAGE_ASYNC_DONE"},
      {GST_MESSAGE_REQUEST_STATE,    "GST_MESSAGE_REQUEST_STATE"},
      {GST_MESSAGE_STEP_START,       "GST_MESSAGE_STEP_START"},
      {GST_MESSAGE_QOS,              "GST_MESSAGE_QOS"},
      {GST_MESSAGE_PROGRESS,         "GST_MESSAGE_PROGRESS"},
      {GST_MESSAGE_TOC,              "GST_MESSAGE_TOC"},
      {GST_MESSAGE_RESET_TIME,       "GST_MESSAGE_RESET_TIME"},
      {GST_MESSAGE_STREAM_START,     "GST_MESSAGE_STREAM_START"},
      {GST_MESSAGE_NEED_CONTEXT,     "GST_MESSAGE_NEED_CONTEXT"},
      {GST_MESSAGE_HAVE_CONTEXT,     "GST_MESSAGE_HAVE_CONTEXT"},
      {GST_MESSAGE_EXTENDED,         "GST_MESSAGE_EXTENDED"},
      {GST_MESSAGE_DEVICE_ADDED,     "GST_MESSAGE_DEVICE_ADDED"},
      {GST_MESSAGE_DEVICE_REMOVED,   "GST_MESSAGE_DEVICE_REMOVED"},
      {GST_MESSAGE_ANY,              "GST_MESSAGE_ANY"},
  });
  return text_or(table, type, "Unknown GstMessageType value");
}

// clang-format on

std::string Media_Helper::gst_time_to_string(GstClockTime time) {
  std::uint32_t hours = 99;
  std::uint32_t minutes = 99;
  std::uint32_t seconds = 99;
  std::uint32_t nanoseconds = 999999999;
  if (time < GST_CLOCK_TIME_NONE) {
    hours = static_cast<std::uint32_t>(time / (GST_SECOND * 3600));
    minutes = static_cast<std::uint32_t>(time / (GST_SECOND * 60) % 60);
    seconds = static_cast<std::uint32_t>(time / GST_SECOND % 60);
    nanoseconds = static_cast<std::uint32_t>(time % GST_SECOND);
  }
  boost::format text("%u:%02u:%02u.%09u", std::locale::classic());
  for (const std::uint32_t value : {hours, minutes, seconds, nanoseconds})
    text % boost::io::group(rethrow_failures, value);
  return text.str();
}

std::string Media_Helper::gst_segment_to_string(const GstSegment *segment) {
  if (segment == nullptr) return "NULL segment";
  if (segment->format != GST_FORMAT_TIME)
    return "Segment is not GST_FORMAT_TIME. Cannot print data.";

  Classic_Stream text;
  text << "Segment ::"
       << " Flags = " << static_cast<int>(segment->flags)           //
       << ", Rate = " << segment->rate                              //
       << ", Applied_Rate = " << segment->applied_rate              //
       << ", Base = " << gst_time_to_string(segment->base)          //
       << ", Offset = " << gst_time_to_string(segment->offset)      //
       << ", Start = " << gst_time_to_string(segment->start)        //
       << ", Stop = " << gst_time_to_string(segment->stop)          //
       << ", Time = " << gst_time_to_string(segment->time)          //
       << ", Position = " << gst_time_to_string(segment->position)  //
       << ", Duration = " << gst_time_to_string(segment->duration) << ". ";
  return text.str();
}

std::string Media_Helper::generate_queue_stats_report(GstElement *queue) {
  if (queue == nullptr) return "queue == NULL";
  Level buffers;
  Level bytes;
  Level nanoseconds;
  g_object_get(queue, "current-level-buffers", buffers.address(), "current-level-bytes",
               bytes.address(), "current-level-time", nanoseconds.address(), nullptr);
  const Text name = object_name(queue);
  if (!name) return {};

  Classic_Stream text;
  text << name.get() << " Stats : Num Buffers = " << buffers.value()
       << ", Num Bytes = " << bytes.value()
       << ", Num Seconds = " << nanoseconds.value() / GST_SECOND;
  return text.str();
}

}  // namespace kel::tavren::capture
