// Texts.

#include "scenario.h"

namespace kel::tavren::tests {

using capture::Media_Helper;

std::vector<Scenario> text_scenarios() {
  return {
      {"gst_state_to_string", "known",
       [] { return alone([] { return Media_Helper::gst_state_to_string(GST_STATE_PLAYING); }); }},
      {"gst_state_to_string", "unknown",
       [] { return alone([] { return Media_Helper::gst_state_to_string(value<GstState>(99)); }); }},
      {"gst_state_change_to_string", "known",
       [] {
         return alone([] {
           return Media_Helper::gst_state_change_to_string(GST_STATE_CHANGE_NULL_TO_READY);
         });
       }},
      {"gst_state_change_to_string", "unknown",
       [] {
         return alone(
             [] { return Media_Helper::gst_state_change_to_string(value<GstStateChange>(0)); });
       }},
      {"gst_enum_message", "a result of a state change",
       [] { return alone([] { return Media_Helper::gst_enum_message(GST_STATE_CHANGE_ASYNC); }); }},
      {"gst_enum_message", "no result of a state change",
       [] {
         return alone(
             [] { return Media_Helper::gst_enum_message(value<GstStateChangeReturn>(99)); });
       }},
      {"gst_enum_message", "a result of a link",
       [] { return alone([] { return Media_Helper::gst_enum_message(GST_PAD_LINK_NOFORMAT); }); }},
      {"gst_enum_message", "no result of a link",
       [] {
         return alone([] { return Media_Helper::gst_enum_message(value<GstPadLinkReturn>(99)); });
       }},
      {"gst_enum_message", "a state",
       [] { return alone([] { return Media_Helper::gst_enum_message(GST_STATE_READY); }); }},
      {"gst_enum_message", "no state",
       [] { return alone([] { return Media_Helper::gst_enum_message(value<GstState>(99)); }); }},
      {"gst_enum_message", "a type of message",
       [] {
         return alone([] { return Media_Helper::gst_enum_message(GST_MESSAGE_DURATION_CHANGED); });
       }},
      {"gst_enum_message", "no type of message",
       [] {
         return alone([] { return Media_Helper::gst_enum_message(value<GstMessageType>(3)); });
       }},
      {"gst_time_to_string", "a time",
       [] { return alone([] { return Media_Helper::gst_time_to_string(3723000000001); }); }},
      {"gst_segment_to_string", "a segment",
       [] {
         return Call{{}, [] {
                       GstSegment segment;
                       gst_segment_init(&segment, GST_FORMAT_TIME);
                       return disturbed(
                           [&] { return Media_Helper::gst_segment_to_string(&segment); });
                     }};
       }},
      {"gst_segment_to_string", "a segment of bytes",
       [] {
         return Call{{}, [] {
                       GstSegment segment;
                       gst_segment_init(&segment, GST_FORMAT_BYTES);
                       return disturbed(
                           [&] { return Media_Helper::gst_segment_to_string(&segment); });
                     }};
       }},
      {"gst_segment_to_string", "no segment",
       [] {
         return Call{
             {},
             [] { return disturbed([] { return Media_Helper::gst_segment_to_string(nullptr); }); }};
       }},
      {"generate_queue_stats_report", "a queue",
       [] {
         const Element queue = make_element("queue", "a_queue_with_a_name");
         return Call{{{"queue", queue}}, [queue] {
                       return disturbed(
                           [&] { return Media_Helper::generate_queue_stats_report(queue.get()); });
                     }};
       }},
      {"generate_queue_stats_report", "no queue",
       [] { return alone([] { return Media_Helper::generate_queue_stats_report(nullptr); }); }},
  };
}

}  // namespace kel::tavren::tests
