// Texts.

#include "operation_families.h"

namespace kel::tavren::tests {
namespace {

GstSegment time_segment() {
  GstSegment segment;
  gst_segment_init(&segment, GST_FORMAT_TIME);
  return segment;
}

void name_enumerators(const Scene &) {
  require(Media_Helper::gst_state_to_string(GST_STATE_PAUSED) == "GST_STATE_PAUSED", "state");
  require(Media_Helper::gst_state_change_to_string(GST_STATE_CHANGE_NULL_TO_READY) ==
              "GST_STATE_CHANGE_NULL_TO_READY",
          "state change");
  require(Media_Helper::gst_enum_message(GST_STATE_CHANGE_SUCCESS) ==
              "GST_STATE_CHANGE_SUCCESS: the state change succeeded",
          "result of a state change");
  require(Media_Helper::gst_enum_message(GST_PAD_LINK_OK) == "GST_PAD_LINK_OK: link succeeded",
          "result of a link");
  require(Media_Helper::gst_enum_message(GST_STATE_PAUSED) == "Unknown GstState value",
          "meaning of a state");
  require(Media_Helper::gst_enum_message(GST_MESSAGE_EOS) == "GST_MESSAGE_EOS", "message");
  require(Media_Helper::gst_discoverer_result_to_string(GST_DISCOVERER_BUSY) ==
              "GST_DISCOVERER_BUSY",
          "result of a discovery");
}

void write_times(const Scene &) {
  require(Media_Helper::gst_time_to_string(3723000000001) == "1:02:03.000000001", "time");
  const GstSegment segment = time_segment();
  require(Media_Helper::gst_segment_to_string(&segment) ==
              "Segment :: Flags = 0, Rate = 1, Applied_Rate = 1, Base = 0:00:00.000000000, "
              "Offset = 0:00:00.000000000, Start = 0:00:00.000000000, Stop = 99:99:99.999999999, "
              "Time = 0:00:00.000000000, Position = 0:00:00.000000000, "
              "Duration = 99:99:99.999999999. ",
          "segment");
  require(Media_Helper::gst_segment_to_string(nullptr) == "NULL segment", "no segment");
}

void report_queue(const Scene &scene) {
  require(Media_Helper::generate_queue_stats_report(scene.buffer.get()) ==
              "buffer Stats : Num Buffers = 0, Num Bytes = 0, Num Seconds = 0",
          "queue");
  require(Media_Helper::generate_queue_stats_report(nullptr) == "queue == NULL", "no queue");
}

}  // namespace

// clang-format off
std::vector<Operation> diagnostics_text_operations() {
  return {
    {"names of enumerators", Operation::SHARED, {}, name_enumerators},
    {"gst_time_to_string, gst_segment_to_string", Operation::SHARED, {}, write_times},
    {"generate_queue_stats_report", Operation::SHARED, {}, report_queue},
  };
}
// clang-format on

}  // namespace kel::tavren::tests
