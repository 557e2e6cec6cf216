// Computes the times of a stream's packets from their RTP timestamps.

#ifndef TAVREN_PROGRAMS_STREAM_CLOCK_H
#define TAVREN_PROGRAMS_STREAM_CLOCK_H

#include <memory>
#include <mutex>
#include <optional>

#include <gst/gst.h>

namespace kel::tavren::programs {

// Converts RTP timestamps to running times.
//
// rtspsrc's jitter buffer follows the arrival of the packets. This distorts the times at the start
// of a stream, and compresses a burst after a pause until several frames have the same time. This
// clock preserves the camera's steps exactly. A step backwards or far ahead that does not match the
// elapsed time is a discontinuity of the camera's clock, not of the media. The stream then
// continues with its usual step, or with the elapsed time if that is longer.
//
// The clock follows the camera's clock only while it agrees with the jitter buffer's times, which
// keep the camera's streams synchronised and follow the local clock. A persistent difference is
// corrected in steps too small to be noticed.
class Stream_Clock {
public:
  // `rate` is the rate of the RTP timestamps in Hz.
  explicit Stream_Clock(guint rate) noexcept : rate_(rate) {}

  // Returns the time in ns of a packet with the given RTP timestamp. `now` is its arrival time on
  // the monotonic clock in us. `expected` is the jitter buffer's time in ns; the first packet gets
  // this time.
  GstClockTime time_of(guint32 timestamp, GstClockTime expected, gint64 now) noexcept;

  // The next timestamp is from another sender: treat it as a discontinuity.
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
  gint64 arrival_ = 0;     // of the first packet with the last timestamp, in us
  gint64 expected_ = 0;    // time that the jitter buffer gave to the last packet, in ns
  gint64 time_ = 0;        // of the last packet, in ns
  gint64 usual_step_ = 0;  // between two frames, in ns; 0 until it is known

  // The smallest and the largest difference from the expected times in the current window, in ns.
  gint64 smallest_ = 0;
  gint64 largest_ = 0;
  gint64 window_began_ = 0;  // in us; 0: no window
  gint64 remaining_ = 0;     // of the difference to correct, in ns
};

// The clock of one of the camera's streams, whatever its SSRC. Thread-safe.
class Shared_Stream_Clock {
public:
  // Returns the time in ns of a packet; see Stream_Clock. `rate` is the rate of the stream in Hz.
  GstClockTime time_of(guint32 ssrc, guint rate, guint32 timestamp, GstClockTime expected) noexcept;
  // Returns whether a packet has been given a time.
  bool has_started() const noexcept;

private:
  mutable std::mutex mutex_;
  guint32 ssrc_ = 0;
  std::optional<Stream_Clock> clock_;
};

// Sets the times of all RTP packets that reach a depayloader according to the stream's clock.
// Propagates the library's exception if the element has no "sink" pad.
void add_stream_clock(GstElement *depayloader, std::shared_ptr<Shared_Stream_Clock> clock);

// The same with a separate clock for this depayloader.
inline void add_stream_clock(GstElement *depayloader) {
  add_stream_clock(depayloader, std::make_shared<Shared_Stream_Clock>());
}

}  // namespace kel::tavren::programs

#endif
