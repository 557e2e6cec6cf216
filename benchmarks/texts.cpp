// Texts for logs: enumerations, times, segments, queues.

#include <algorithm>
#include <cstddef>
#include <iterator>

#include <benchmark/benchmark.h>

#include "gstreamermm_calls.h"
#include "library_calls.h"
#include "owned.h"
#include "raw_calls.h"
#include "trial.h"

namespace kel::tavren::benchmarks {

namespace {

using benchmark::DoNotOptimize;

constexpr GstClockTime some_time = 4521 * GST_SECOND + 987654321;

// Typical C code for values that the framework has no text for.
const char *describe(GstState state) {
  switch (state) {
  case GST_STATE_VOID_PENDING:
    return "GST_STATE_VOID_PENDING: no pending state";
  case GST_STATE_NULL:
    return "GST_STATE_NULL: the NULL state or initial state of an element";
  case GST_STATE_READY:
    return "GST_STATE_READY: the element is ready to go to PAUSED";
  case GST_STATE_PAUSED:
    return "GST_STATE_PAUSED: the element is ready to accept and process data";
  case GST_STATE_PLAYING:
    return "GST_STATE_PLAYING: the clock is running, and the data are flowing";
  }
  return "unknown";
}

const char *describe(GstDiscovererResult result) {
  switch (result) {
  case GST_DISCOVERER_OK:
    return "GST_DISCOVERER_OK";
  case GST_DISCOVERER_URI_INVALID:
    return "GST_DISCOVERER_URI_INVALID";
  case GST_DISCOVERER_ERROR:
    return "GST_DISCOVERER_ERROR";
  case GST_DISCOVERER_TIMEOUT:
    return "GST_DISCOVERER_TIMEOUT";
  case GST_DISCOVERER_BUSY:
    return "GST_DISCOVERER_BUSY";
  case GST_DISCOVERER_MISSING_PLUGINS:
    return "GST_DISCOVERER_MISSING_PLUGINS";
  }
  return "unknown";
}

const char *describe(capture::MediaType kind) {
  static constexpr const char *names[] = {"JPEG",         "H264",   "MPEG_AUDIO", "MPEG_VIDEO",
                                          "RTP_METADATA", "RTP",    "VIDEO_RAW",  "AUDIO_RAW",
                                          "MULAW",        "UNKNOWN"};
  return names[std::min(static_cast<std::size_t>(kind), std::size(names) - 1)];
}

template <typename Value>
void add_description(Programme &programme, const char *operation, Value value) {
  programme.add_call(operation, "raw", [value]() mutable {
    DoNotOptimize(value);
    DoNotOptimize(describe(value));
  });
}

// The framework's names are constants. The library returns copies.
void add_enumerations(Programme &programme) {
  programme.add_call("texts/a state", "raw",
                     [] { DoNotOptimize(gst_element_state_get_name(GST_STATE_PLAYING)); });
  programme.add_call("texts/a state", "library",
                     [] { DoNotOptimize(Media_Helper::gst_state_to_string(GST_STATE_PLAYING)); });
  programme.add_call("texts/a state", "gstreamermm",
                     [] { DoNotOptimize(Gst::Enums::get_name(Gst::STATE_PLAYING)); });

  add_description(programme, "texts/a state described", GST_STATE_PLAYING);
  programme.add_call("texts/a state described", "library",
                     [] { DoNotOptimize(Media_Helper::gst_enum_message(GST_STATE_PLAYING)); });

  constexpr GstStateChange change = GST_STATE_CHANGE_READY_TO_PAUSED;
  programme.add_call("texts/a state change", "raw",
                     [] { DoNotOptimize(gst_state_change_get_name(change)); });
  programme.add_call("texts/a state change", "library",
                     [] { DoNotOptimize(Media_Helper::gst_state_change_to_string(change)); });

  constexpr GstStateChangeReturn result = GST_STATE_CHANGE_ASYNC;
  programme.add_call("texts/a state change's result", "raw",
                     [] { DoNotOptimize(gst_element_state_change_return_get_name(result)); });
  programme.add_call("texts/a state change's result", "library",
                     [] { DoNotOptimize(Media_Helper::gst_enum_message(result)); });
  programme.add_call("texts/a state change's result", "gstreamermm",
                     [] { DoNotOptimize(Gst::Enums::get_name(Gst::STATE_CHANGE_ASYNC)); });

  programme.add_call("texts/a link's result", "raw",
                     [] { DoNotOptimize(gst_pad_link_get_name(GST_PAD_LINK_NOFORMAT)); });
  programme.add_call("texts/a link's result", "library",
                     [] { DoNotOptimize(Media_Helper::gst_enum_message(GST_PAD_LINK_NOFORMAT)); });

  programme.add_call("texts/a message type", "raw",
                     [] { DoNotOptimize(gst_message_type_get_name(GST_MESSAGE_STATE_CHANGED)); });
  programme.add_call("texts/a message type", "library", [] {
    DoNotOptimize(Media_Helper::gst_enum_message(GST_MESSAGE_STATE_CHANGED));
  });
  programme.add_call("texts/a message type", "gstreamermm",
                     [] { DoNotOptimize(Gst::Enums::get_name(Gst::MESSAGE_STATE_CHANGED)); });

  add_description(programme, "texts/a discoverer's result", GST_DISCOVERER_TIMEOUT);
  programme.add_call("texts/a discoverer's result", "library", [] {
    DoNotOptimize(Media_Helper::gst_discoverer_result_to_string(GST_DISCOVERER_TIMEOUT));
  });

  add_description(programme, "texts/a kind of media", capture::H264);
  programme.add_call("texts/a kind of media", "library",
                     [] { DoNotOptimize(Media_Helper::get_media_type_string(capture::H264)); });
}

void add_times(Programme &programme) {
  programme.add_call("texts/a time", "raw", [] {
    GstClockTime time = some_time;
    DoNotOptimize(time);
    gchar *text = g_strdup_printf("%" GST_TIME_FORMAT, GST_TIME_ARGS(time));
    DoNotOptimize(text);
    g_free(text);
  });
  programme.add_call("texts/a time", "library",
                     [] { DoNotOptimize(Media_Helper::gst_time_to_string(some_time)); });
}

GstSegment some_segment() {
  GstSegment segment;
  gst_segment_init(&segment, GST_FORMAT_TIME);
  segment.start = some_time;
  segment.stop = 2 * some_time;
  return segment;
}

void add_segments(Programme &programme) {
  const GstSegment segment = some_segment();
  programme.add_call("texts/a segment", "raw", [segment] {
    gchar *text = g_strdup_printf(
        "Segment :: Flags = %d, Rate = %g, Applied_Rate = %g, Base = %" GST_TIME_FORMAT
        ", Offset = %" GST_TIME_FORMAT ", Start = %" GST_TIME_FORMAT ", Stop = %" GST_TIME_FORMAT
        ", Time = %" GST_TIME_FORMAT ", Position = %" GST_TIME_FORMAT
        ", Duration = %" GST_TIME_FORMAT ". ",
        static_cast<int>(segment.flags), segment.rate, segment.applied_rate,
        GST_TIME_ARGS(segment.base), GST_TIME_ARGS(segment.offset), GST_TIME_ARGS(segment.start),
        GST_TIME_ARGS(segment.stop), GST_TIME_ARGS(segment.time), GST_TIME_ARGS(segment.position),
        GST_TIME_ARGS(segment.duration));
    DoNotOptimize(text);
    g_free(text);
  });
  programme.add_call("texts/a segment", "library",
                     [segment] { DoNotOptimize(Media_Helper::gst_segment_to_string(&segment)); });
}

void add_queues(Programme &programme) {
  const Owned_Element queue = owned(gst_element_factory_make("queue", nullptr));
  programme.add_call("texts/a queue", "raw", [queue] {
    guint buffers = 0;
    guint bytes = 0;
    guint64 time = 0;
    g_object_get(queue.get(), "current-level-buffers", &buffers, "current-level-bytes", &bytes,
                 "current-level-time", &time, nullptr);
    gchar *const name = gst_object_get_name(GST_OBJECT_CAST(queue.get()));
    gchar *text = g_strdup_printf(
        "%s Stats : Num Buffers = %u, Num Bytes = %u, Num Seconds = %" G_GUINT64_FORMAT, name,
        buffers, bytes, time / GST_SECOND);
    DoNotOptimize(text);
    g_free(text);
    g_free(name);
  });
  programme.add_call("texts/a queue", "library", [queue] {
    DoNotOptimize(Media_Helper::generate_queue_stats_report(queue.get()));
  });
}

}  // namespace

void add_texts(Programme &programme) {
  add_enumerations(programme);
  add_times(programme);
  add_segments(programme);
  add_queues(programme);
}

}  // namespace kel::tavren::benchmarks
