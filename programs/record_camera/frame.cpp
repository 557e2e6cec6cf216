#include "frame.h"

#include <algorithm>

namespace kel::tavren::programs {

namespace {

constexpr gint64 shortest_step = GST_MSECOND;  // the resolution of Matroska files

std::optional<gint64> running_time(const GstSegment *segment, GstClockTime time) {
  if (!GST_CLOCK_TIME_IS_VALID(time)) return std::nullopt;
  guint64 running = 0;
  const int sign = gst_segment_to_running_time_full(segment, GST_FORMAT_TIME, time, &running);
  if (sign == 0) return std::nullopt;
  return sign * static_cast<gint64>(running);
}

// The duration of an AAC frame in ns; 0 for other media. Some depayloaders leave it out, and the
// AVI muxer adds durations up.
GstClockTime aac_frame_duration(const GstCaps *caps) {
  constexpr guint64 samples_per_frame = 1024;
  const GstStructure *const structure = gst_caps_get_structure(caps, 0);
  int version = 0;
  int rate = 0;
  if (!gst_structure_has_name(structure, "audio/mpeg") ||
      !gst_structure_get(structure, "mpegversion", G_TYPE_INT, &version, "rate", G_TYPE_INT, &rate,
                         nullptr) ||
      version == 1 || rate <= 0)
    return 0;
  return gst_util_uint64_scale(samples_per_frame, GST_SECOND, static_cast<guint64>(rate));
}

}  // namespace

std::optional<Frame> Frame_Times::make_frame(GstSample *sample) {
  GstBuffer *const buffer = gst_sample_get_buffer(sample);
  const GstSegment *const segment = gst_sample_get_segment(sample);
  Frame frame;
  frame.sample = sample;
  frame.arrival = g_get_real_time();
  frame.is_key = !GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_DELTA_UNIT);
  frame.duration = GST_BUFFER_DURATION_IS_VALID(buffer) ? GST_BUFFER_DURATION(buffer)
                                                        : aac_frame_duration(frame.caps());

  auto pts = running_time(segment, GST_BUFFER_PTS(buffer));
  // A depayloader that finds several frames in a packet gives only the first one a time.
  if (!pts && last_pts_)
    pts = *last_pts_ + static_cast<gint64>(last_duration_ != 0 ? last_duration_ : interval_);
  if (!pts) return std::nullopt;
  gint64 dts = running_time(segment, GST_BUFFER_DTS(buffer)).value_or(*pts);
  if (last_dts_) {
    if (dts > *last_dts_ && dts - *last_dts_ < gint64{GST_SECOND})
      interval_ = static_cast<GstClockTime>(dts - *last_dts_);
    dts = std::max(dts, *last_dts_ + shortest_step);
  }
  frame.dts = dts;
  frame.pts = std::max(*pts, dts);

  last_pts_ = frame.pts;
  last_dts_ = frame.dts;
  last_duration_ = frame.duration;
  return frame;
}

}  // namespace kel::tavren::programs
