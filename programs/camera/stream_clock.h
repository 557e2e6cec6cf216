// Times of a stream's packets, made from their RTP timestamps.

#ifndef TAVREN_PROGRAMS_STREAM_CLOCK_H
#define TAVREN_PROGRAMS_STREAM_CLOCK_H

#include <memory>
#include <mutex>
#include <optional>

#include <gst/gst.h>

namespace kel::tavren::programs {

// Converts RTP timestamps to running times.
//
// rtspsrc's jitter buffer follows the arrival of the packets, which bends the times at the start of
// a stream, and squeezes a burst after a pause until several frames have the same time. This clock
// keeps the camera's steps exactly. A step that the camera's clock cannot have made in the time
// that has passed, backwards or far ahead, is a jump of that clock, not of the media: the stream
// then goes on with its usual step, or after the time that has really passed if that is longer.
//
// The camera's clock is followed only as long as it agrees with the jitter buffer's times, which
// keep the camera's streams together and run with the local clock. A difference that lasts is worn
// off in steps too small to be noticed.
class Stream_Clock {
public:
  // Rate is that of the RTP timestamps in Hz.
  explicit Stream_Clock(guint rate) noexcept : rate_(rate) {}

  // Returns the time in ns of a packet with an RTP timestamp that arrived now, on the monotonic
  // clock in us. Expected is its time in ns by the jitter buffer; the first packet has that time.
  GstClockTime time_of(guint32 timestamp, GstClockTime expected, gint64 now) noexcept;

  // The next timestamp is that of another sender: whatever it is, it is a jump.
  void restart(guint rate) noexcept;

private:
  gint64 step_to(guint32 timestamp, gint64 elapsed) noexcept;
  void observe(gint64 difference, gint64 now) noexcept;
  gint64 correction(gint64 step) noexcept;
  gint64 elapsed_at_restart(GstClockTime expected) const noexcept;

  guint rate_;
  bool started_ = false;
  bool restarted_ = false;
  guint32 timestamp_ = 0;  // of the last packet
  gint64 arrival_ = 0;     // of the last timestamp's first packet, in us
  gint64 expected_ = 0;    // of the last packet by the jitter buffer, in ns
  gint64 time_ = 0;        // of the last packet, in ns
  gint64 usual_step_ = 0;  // between two frames, in ns; 0 until it is known

  // The smallest and the largest difference from the expected times in the current window, in ns.
  gint64 smallest_ = 0;
  gint64 largest_ = 0;
  gint64 window_began_ = 0;  // in us; 0: no window
  gint64 remaining_ = 0;     // of the difference that is being worn off, in ns
};

// The clock of one of the camera's streams, whatever its SSRC. Any thread.
class Shared_Stream_Clock {
public:
  // Returns the time in ns of a packet; see Stream_Clock. Rate is that of its stream in Hz.
  GstClockTime time_of(guint32 ssrc, guint rate, guint32 timestamp, GstClockTime expected) noexcept;

private:
  std::mutex mutex_;
  guint32 ssrc_ = 0;
  std::optional<Stream_Clock> clock_;
};

// Sets the times of all RTP packets that reach a depayloader, by the clock of their stream. Throws
// what the library throws if the element has no "sink" pad.
void add_stream_clock(GstElement *depayloader, std::shared_ptr<Shared_Stream_Clock> clock);

// The same with a clock that only this depayloader has.
inline void add_stream_clock(GstElement *depayloader) {
  add_stream_clock(depayloader, std::make_shared<Shared_Stream_Clock>());
}

}  // namespace kel::tavren::programs

#endif
