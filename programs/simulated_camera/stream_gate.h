// A gate that delays or drops the data of a simulated camera's stream.

#ifndef TAVREN_PROGRAMS_STREAM_GATE_H
#define TAVREN_PROGRAMS_STREAM_GATE_H

#include <condition_variable>
#include <mutex>

#include <gst/gst.h>

namespace kel::tavren::programs {

// Thread-safe. Times are in us.
class Stream_Gate {
public:
  static constexpr gint64 for_ever = G_MAXINT64;

  // Holds data back for the given time.
  void hold(gint64 duration) noexcept;
  // Drops data for the given time, or permanently with for_ever.
  void drop(gint64 duration) noexcept;
  // Ends any delay or drop, so that no thread waits here any more.
  void open() noexcept;

  // Adds the gate after a payloader. The gate must outlive the payloader. Propagates the library's
  // exception if the payloader has no "src" pad.
  void guard(GstElement *payloader);

private:
  static GstPadProbeReturn on_packet(GstPad *, GstPadProbeInfo *, gpointer gate) noexcept;
  bool lets_through() noexcept;

  std::mutex mutex_;
  std::condition_variable opened_;
  gint64 hold_until_ = 0;  // on the monotonic clock
  gint64 drop_until_ = 0;  // on the monotonic clock
};

}  // namespace kel::tavren::programs

#endif
