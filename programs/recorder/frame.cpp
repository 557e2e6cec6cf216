#include "frame.h"

#include <algorithm>

#include "camera/frame_duration.h"

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

}  // namespace

std::optional<Frame> Frame_Times::make_frame(GstSample *sample) {
  GstBuffer *const buffer = gst_sample_get_buffer(sample);
  const GstSegment *const segment = gst_sample_get_segment(sample);
  Frame frame;
  frame.sample = sample;
  frame.arrival = g_get_real_time();
  frame.is_key = !GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_DELTA_UNIT);
  frame.duration = frame_duration(sample);

  auto pts = running_time(segment, GST_BUFFER_PTS(buffer));
  // A depayloader that finds several frames in a packet timestamps only the first one.
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
