#include "relayed_stream.h"

#include <algorithm>
#include <utility>

#include <gst/app/gstappsrc.h>

#include "camera/frame_duration.h"

namespace kel::tavren::programs {

namespace {

// An appsrc buffers more than this only if the data is not being sent.
constexpr guint64 largest_backlog = guint64{16} * 1024 * 1024;  // bytes

bool is_key_frame(GstSample *frame) noexcept {
  return !GST_BUFFER_FLAG_IS_SET(gst_sample_get_buffer(frame), GST_BUFFER_FLAG_DELTA_UNIT);
}

bool is_audio(GstSample *frame) noexcept {
  const GstStructure *const caps = gst_caps_get_structure(gst_sample_get_caps(frame), 0);
  return g_str_has_prefix(gst_structure_get_name(caps), "audio/") != FALSE;
}

// Returns whether a frame has a valid timestamp for viewers. Audio frames must not overlap, which
// they may if the camera's clock jumps. Video frames may be out of order.
bool has_time(GstSample *frame, GstClockTime expected) noexcept {
  const GstClockTime time = GST_BUFFER_PTS(gst_sample_get_buffer(frame));
  return GST_CLOCK_TIME_IS_VALID(time) &&
         (!is_audio(frame) || time + frame_duration(frame) / 2 >= expected);
}

// Returns the time of the next frame if that frame has no timestamp. After a packet with several
// audio frames, this is the end of the previous frame. The parts of a picture have the same time; a
// parser splits a picture that contains parameter sets.
GstClockTime time_after(GstSample *frame) noexcept {
  const GstClockTime time = GST_BUFFER_PTS(gst_sample_get_buffer(frame));
  return is_audio(frame) ? time + frame_duration(frame) : time;
}

// Returns a copy of a sample whose buffer has the given time.
boost::intrusive_ptr<GstSample> with_time(GstSample *frame, GstClockTime time) noexcept {
  GstBuffer *const buffer = gst_buffer_copy(gst_sample_get_buffer(frame));
  GST_BUFFER_PTS(buffer) = time;
  boost::intrusive_ptr<GstSample> timed(
      gst_sample_new(buffer, gst_sample_get_caps(frame), gst_sample_get_segment(frame), nullptr),
      false);
  gst_buffer_unref(buffer);
  return timed;
}

}  // namespace

void Relayed_Stream::restart() noexcept {
  const std::lock_guard lock(mutex_);
  waits_for_key_frame_ = true;
}

void Relayed_Stream::note_packet(gsize size) noexcept {
  const std::lock_guard lock(mutex_);
  largest_packet_ = std::max(largest_packet_, static_cast<guint>(size));
}

void Relayed_Stream::take(boost::intrusive_ptr<GstSample> frame) noexcept {
  if (is_key_frame(frame.get()))
    if (const auto viewers = gate()) viewers->open();
  const std::lock_guard lock(mutex_);
  last_arrival_ = g_get_monotonic_time();
  if (!has_time(frame.get(), next_time_)) frame = with_time(frame.get(), next_time_);
  next_time_ = time_after(frame.get());
  if (is_key_frame(frame.get())) {
    key_frame_ = frame;
    waits_for_key_frame_ = false;
  }
  if (!waits_for_key_frame_) pass_on(frame.get());
}

bool Relayed_Stream::started() const noexcept {
  const std::lock_guard lock(mutex_);
  return key_frame_ != nullptr;
}

guint Relayed_Stream::largest_packet() const noexcept {
  const std::lock_guard lock(mutex_);
  return largest_packet_;
}

gint64 Relayed_Stream::last_arrival() const noexcept {
  const std::lock_guard lock(mutex_);
  return last_arrival_;
}

void Relayed_Stream::connect(const boost::intrusive_ptr<GstElement> &appsrc,
                             std::shared_ptr<Key_Frame_Gate> gate) noexcept {
  const std::lock_guard lock(mutex_);
  appsrc_ = appsrc;
  gate_ = std::move(gate);
  if (key_frame_) pass_on(key_frame_.get());
}

void Relayed_Stream::disconnect() noexcept {
  const std::lock_guard lock(mutex_);
  appsrc_.reset();
  gate_.reset();
}

std::shared_ptr<Key_Frame_Gate> Relayed_Stream::gate() const noexcept {
  const std::lock_guard lock(mutex_);
  return gate_;
}

// The caller holds the lock.
void Relayed_Stream::pass_on(GstSample *frame) noexcept {
  if (!appsrc_) return;
  GstAppSrc *const appsrc = GST_APP_SRC(appsrc_.get());
  if (gst_app_src_get_current_level_bytes(appsrc) > largest_backlog) {
    waits_for_key_frame_ = true;
    return;
  }
  gst_app_src_push_sample(appsrc, frame);
}

}  // namespace kel::tavren::programs
