#include "stream_clock.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include <gst/rtp/gstrtpbuffer.h>
#include <tavren/capture/media_helper.h>

namespace kel::tavren::programs {

using capture::Media_Helper;

namespace {

constexpr gint64 ns_per_us = 1000;
// A step that differs from the elapsed time by more than this is a discontinuity.
constexpr gint64 tolerance = GST_SECOND;
// Frames that are sent out of display order go back by fewer steps than this.
constexpr gint64 steps_back = 4;
constexpr gint64 shortest_step = GST_MSECOND;
constexpr gint64 window_length = 4 * G_TIME_SPAN_SECOND;  // us
constexpr gint64 noticeable = 20 * GST_MSECOND;
constexpr gint64 steps_per_correction = 200;

gint64 now_in_ns(gint64 us) noexcept {
  return us * ns_per_us;
}

// Returns the rate of the RTP timestamps on a pad in Hz, or 0 if it is unknown.
guint rate_on(GstPad *pad) noexcept {
  const boost::intrusive_ptr<GstCaps> caps(gst_pad_get_current_caps(pad), false);
  int rate = 0;
  if (caps) gst_structure_get_int(gst_caps_get_structure(caps.get(), 0), "clock-rate", &rate);
  return rate > 0 ? static_cast<guint>(rate) : 0;
}

// Returns the time that the jitter buffer gave to a packet. Over TCP, the jitter buffer does not
// follow the arrival of the packets, so its times may fall far behind. The first packet may be late
// because the elements for its stream had to be created.
GstClockTime expected_time(GstBuffer *packet, GstPad *pad, bool is_first) noexcept {
  const GstClockTime stamp = GST_BUFFER_DTS_OR_PTS(packet);
  if (is_first && GST_CLOCK_TIME_IS_VALID(stamp)) return stamp;
  const GstClockTime now = gst_element_get_current_running_time(GST_PAD_PARENT(pad));
  if (!GST_CLOCK_TIME_IS_VALID(stamp)) return now;
  return GST_CLOCK_TIME_IS_VALID(now) && now > stamp + tolerance ? now : stamp;
}

// Takes ownership of a packet. Returns it, or a writable copy, with its time set.
GstBuffer *with_time(GstBuffer *packet, GstPad *pad, Shared_Stream_Clock &clock) noexcept {
  GstRTPBuffer rtp = GST_RTP_BUFFER_INIT;
  if (!gst_rtp_buffer_map(packet, GST_MAP_READ, &rtp)) return packet;
  const guint32 timestamp = gst_rtp_buffer_get_timestamp(&rtp);
  const guint32 ssrc = gst_rtp_buffer_get_ssrc(&rtp);
  gst_rtp_buffer_unmap(&rtp);

  const guint rate = rate_on(pad);
  const GstClockTime expected = expected_time(packet, pad, !clock.has_started());
  if (rate == 0 || !GST_CLOCK_TIME_IS_VALID(expected)) return packet;
  packet = gst_buffer_make_writable(packet);
  GST_BUFFER_PTS(packet) = clock.time_of(ssrc, rate, timestamp, expected);
  GST_BUFFER_DTS(packet) = GST_CLOCK_TIME_NONE;
  return packet;
}

struct Probe_Context {
  GstPad *pad;
  Shared_Stream_Clock *clock;
};

gboolean set_time_in_list(GstBuffer **packet, guint, gpointer context) noexcept {
  auto &probe = *static_cast<Probe_Context *>(context);
  *packet = with_time(*packet, probe.pad, *probe.clock);
  return TRUE;
}

using Clock_Reference = std::shared_ptr<Shared_Stream_Clock>;

GstPadProbeReturn set_times(GstPad *pad, GstPadProbeInfo *info, gpointer data) noexcept {
  Shared_Stream_Clock &clock = **static_cast<Clock_Reference *>(data);
  if ((info->type & GST_PAD_PROBE_TYPE_BUFFER_LIST) != 0) {
    Probe_Context context{pad, &clock};
    GstBufferList *const list =
        gst_buffer_list_make_writable(gst_pad_probe_info_get_buffer_list(info));
    gst_buffer_list_foreach(list, set_time_in_list, &context);
    info->data = list;
  } else {
    info->data = with_time(gst_pad_probe_info_get_buffer(info), pad, clock);
  }
  return GST_PAD_PROBE_OK;
}

}  // namespace

GstClockTime Stream_Clock::time_of(guint32 timestamp, GstClockTime expected, gint64 now) noexcept {
  if (!started_) {
    started_ = true;
    time_ = static_cast<gint64>(expected);
  } else if (timestamp == timestamp_ && !restarted_) {
    return static_cast<GstClockTime>(time_);
  } else {
    const gint64 elapsed = restarted_ ? elapsed_at_restart(expected) : now_in_ns(now - arrival_);
    const gint64 step = step_to(timestamp, elapsed);
    time_ = std::max<gint64>(0, time_ + step + correction(step));
  }
  restarted_ = false;
  observe(static_cast<gint64>(expected) - time_, now);
  timestamp_ = timestamp;
  arrival_ = now;
  expected_ = static_cast<gint64>(expected);
  return static_cast<GstClockTime>(time_);
}

// Returns the elapsed time in ns when a sender replaces another. The jitter buffer may hold several
// packets until it trusts their sequence numbers.
gint64 Stream_Clock::elapsed_at_restart(GstClockTime expected) const noexcept {
  constexpr gint64 packets_held = 5;
  return static_cast<gint64>(expected) - expected_ - packets_held * usual_step_;
}

void Stream_Clock::restart(guint rate) noexcept {
  rate_ = rate;
  restarted_ = true;
  window_began_ = 0;
}

// Only a difference with the same sign for a whole window is corrected: late packets cause
// differences too.
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

// Returns the part of the difference to correct in this step.
gint64 Stream_Clock::correction(gint64 step) noexcept {
  const gint64 most = std::abs(step) / steps_per_correction;
  const gint64 part = std::clamp(remaining_, -most, most);
  remaining_ -= part;
  return part;
}

// Returns the step in ns from the last timestamp to this one. `elapsed` is the time between their
// arrivals.
gint64 Stream_Clock::step_to(guint32 timestamp, gint64 elapsed) noexcept {
  const auto ticks = static_cast<gint32>(timestamp - timestamp_);  // modulo 2^32
  const gint64 step = ticks * gint64{GST_SECOND} / rate_;
  const gint64 furthest_back =
      usual_step_ != 0 ? std::min(tolerance, steps_back * usual_step_) : tolerance;
  if (!restarted_ && step >= -furthest_back && step < elapsed + tolerance) {
    if (step > 0 && step < tolerance) usual_step_ = step;
    return step;
  }
  const gint64 usual = std::max(usual_step_, shortest_step);
  return elapsed > usual + tolerance / 2 ? elapsed : usual;
}

bool Shared_Stream_Clock::has_started() const noexcept {
  const std::lock_guard lock(mutex_);
  return clock_.has_value();
}

GstClockTime Shared_Stream_Clock::time_of(guint32 ssrc, guint rate, guint32 timestamp,
                                          GstClockTime expected) noexcept {
  const std::lock_guard lock(mutex_);
  if (!clock_)
    clock_.emplace(rate);
  else if (ssrc != ssrc_)
    clock_->restart(rate);
  ssrc_ = ssrc;
  return clock_->time_of(timestamp, expected, g_get_monotonic_time());
}

void add_stream_clock(GstElement *depayloader, std::shared_ptr<Shared_Stream_Clock> clock) {
  auto reference = std::make_unique<Clock_Reference>(std::move(clock));
  const auto mask =
      static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_BUFFER_LIST);
  Media_Helper::add_probe_to_sink_pad_or_throw(
      depayloader, mask, set_times, reference.get(),
      [](gpointer data) { delete static_cast<Clock_Reference *>(data); });
  static_cast<void>(reference.release());  // the pad owns it now
}

}  // namespace kel::tavren::programs
