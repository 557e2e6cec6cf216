#include "stream_clock.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <optional>

#include <gst/rtp/gstrtpbuffer.h>
#include <tavren/capture/media_helper.h>

namespace kel::tavren::programs {

using capture::Media_Helper;

namespace {

constexpr gint64 ns_per_us = 1000;
// How far a step may differ from the time that has passed before it counts as a jump. Frames that
// are shown in another order than they are sent step back by less.
constexpr gint64 tolerance = GST_SECOND;
constexpr gint64 shortest_step = GST_MSECOND;
constexpr gint64 window_length = 4 * G_TIME_SPAN_SECOND;  // us
constexpr gint64 noticeable = 20 * GST_MSECOND;
constexpr gint64 steps_per_correction = 200;

gint64 now_in_ns(gint64 us) noexcept {
  return us * ns_per_us;
}

// The clock of the stream that a depayloader receives now.
struct Current_Clock {
  guint32 ssrc = 0;
  std::optional<Stream_Clock> clock;
};

// Restarts the clock for a stream with another SSRC, if the pad's caps name the rate.
void follow_ssrc(Current_Clock &current, guint32 ssrc, GstPad *pad) noexcept {
  if (current.clock && current.ssrc == ssrc) return;
  const boost::intrusive_ptr<GstCaps> caps(gst_pad_get_current_caps(pad), false);
  int rate = 0;
  if (!caps || !gst_structure_get_int(gst_caps_get_structure(caps.get(), 0), "clock-rate", &rate) ||
      rate <= 0)
    return;
  current.ssrc = ssrc;
  current.clock.emplace(static_cast<guint>(rate));
}

// Takes a packet and returns it, or a copy that can be written to, with its time.
GstBuffer *with_time(GstBuffer *packet, GstPad *pad, Current_Clock &current) noexcept {
  GstRTPBuffer rtp = GST_RTP_BUFFER_INIT;
  if (!gst_rtp_buffer_map(packet, GST_MAP_READ, &rtp)) return packet;
  const guint32 timestamp = gst_rtp_buffer_get_timestamp(&rtp);
  const guint32 ssrc = gst_rtp_buffer_get_ssrc(&rtp);
  gst_rtp_buffer_unmap(&rtp);

  follow_ssrc(current, ssrc, pad);
  const GstClockTime arrival = GST_BUFFER_DTS_OR_PTS(packet);
  if (!current.clock || !GST_CLOCK_TIME_IS_VALID(arrival)) return packet;
  packet = gst_buffer_make_writable(packet);
  GST_BUFFER_PTS(packet) = current.clock->time_of(timestamp, arrival, g_get_monotonic_time());
  GST_BUFFER_DTS(packet) = GST_CLOCK_TIME_NONE;
  return packet;
}

struct Probe_Context {
  GstPad *pad;
  Current_Clock *current;
};

gboolean set_time_in_list(GstBuffer **packet, guint, gpointer context) noexcept {
  auto &probe = *static_cast<Probe_Context *>(context);
  *packet = with_time(*packet, probe.pad, *probe.current);
  return TRUE;
}

GstPadProbeReturn set_times(GstPad *pad, GstPadProbeInfo *info, gpointer data) noexcept {
  auto &current = *static_cast<Current_Clock *>(data);
  if ((info->type & GST_PAD_PROBE_TYPE_BUFFER_LIST) != 0) {
    Probe_Context context{pad, &current};
    GstBufferList *const list =
        gst_buffer_list_make_writable(gst_pad_probe_info_get_buffer_list(info));
    gst_buffer_list_foreach(list, set_time_in_list, &context);
    info->data = list;
  } else {
    info->data = with_time(gst_pad_probe_info_get_buffer(info), pad, current);
  }
  return GST_PAD_PROBE_OK;
}

}  // namespace

GstClockTime Stream_Clock::time_of(guint32 timestamp, GstClockTime expected, gint64 now) noexcept {
  if (!started_) {
    started_ = true;
    time_ = static_cast<gint64>(expected);
  } else if (timestamp == timestamp_) {
    return static_cast<GstClockTime>(time_);
  } else {
    const gint64 step = step_to(timestamp, now_in_ns(now - arrival_));
    time_ = std::max<gint64>(0, time_ + step + correction(step));
  }
  observe(static_cast<gint64>(expected) - time_, now);
  timestamp_ = timestamp;
  arrival_ = now;
  return static_cast<GstClockTime>(time_);
}

// A difference counts if it has had the same sign for a whole window: late packets differ too.
void Stream_Clock::observe(gint64 difference, gint64 now) noexcept {
  if (window_began_ == 0) {
    smallest_ = largest_ = difference;
    window_began_ = now;
  }
  smallest_ = std::min(smallest_, difference);
  largest_ = std::max(largest_, difference);
  if (now - window_began_ < window_length) return;
  window_began_ = 0;
  const gint64 lasting = smallest_ > 0 ? smallest_ : std::min<gint64>(largest_, 0);
  remaining_ = std::abs(lasting) > noticeable ? lasting : 0;
}

// The part of the difference that a step wears off.
gint64 Stream_Clock::correction(gint64 step) noexcept {
  const gint64 most = std::abs(step) / steps_per_correction;
  const gint64 part = std::clamp(remaining_, -most, most);
  remaining_ -= part;
  return part;
}

// The step in ns from the last timestamp to this one; elapsed is the time between their arrivals.
gint64 Stream_Clock::step_to(guint32 timestamp, gint64 elapsed) noexcept {
  const auto ticks = static_cast<gint32>(timestamp - timestamp_);  // modulo 2^32
  const gint64 step = ticks * gint64{GST_SECOND} / rate_;
  if (step > -tolerance && step < elapsed + tolerance) {
    if (step > 0 && step < tolerance) usual_step_ = step;
    return step;
  }
  const gint64 usual = std::max(usual_step_, shortest_step);
  return elapsed > usual + tolerance / 2 ? elapsed : usual;
}

void add_stream_clock(GstElement *depayloader) {
  auto current = std::make_unique<Current_Clock>();
  const auto mask =
      static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_BUFFER_LIST);
  Media_Helper::add_probe_to_sink_pad_or_throw(
      depayloader, mask, set_times, current.get(),
      [](gpointer data) { delete static_cast<Current_Clock *>(data); });
  current.release();
}

}  // namespace kel::tavren::programs
