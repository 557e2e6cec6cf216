// Times of a stream's packets, made from their RTP timestamps.

#ifndef TAVREN_PROGRAMS_STREAM_CLOCK_H
#define TAVREN_PROGRAMS_STREAM_CLOCK_H

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

private:
  gint64 step_to(guint32 timestamp, gint64 elapsed) noexcept;
  void observe(gint64 difference, gint64 now) noexcept;
  gint64 correction(gint64 step) noexcept;

  guint rate_;
  bool started_ = false;
  guint32 timestamp_ = 0;  // of the last packet
  gint64 arrival_ = 0;     // of the last timestamp's first packet, in us
  gint64 time_ = 0;        // of the last packet, in ns
  gint64 usual_step_ = 0;  // between two frames, in ns; 0 until it is known

  // The smallest and the largest difference from the expected times in the current window, in ns.
  gint64 smallest_ = 0;
  gint64 largest_ = 0;
  gint64 window_began_ = 0;  // in us; 0: no window
  gint64 remaining_ = 0;     // of the difference that is being worn off, in ns
};

// Sets the times of all RTP packets that reach a depayloader; a new SSRC starts the clock again.
// Throws what the library throws if the element has no "sink" pad.
void add_stream_clock(GstElement *depayloader);

}  // namespace kel::tavren::programs

#endif
