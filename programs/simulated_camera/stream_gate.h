// Lets a stream of the simulated camera through, or not.

#ifndef TAVREN_PROGRAMS_STREAM_GATE_H
#define TAVREN_PROGRAMS_STREAM_GATE_H

#include <condition_variable>
#include <mutex>

#include <gst/gst.h>

namespace kel::tavren::programs {

// All functions may be called from any thread. Times are in us.
class Stream_Gate {
public:
  static constexpr gint64 for_ever = G_MAXINT64;

  // Holds what arrives back for a time.
  void hold(gint64 duration) noexcept;
  // Drops what arrives for a time, or for_ever.
  void drop(gint64 duration) noexcept;
  // Ends whatever goes on, so that no thread waits here any more.
  void open() noexcept;

  // Puts the gate behind a payloader. The gate must outlive it. Throws what the library throws if
  // the payloader has no "src" pad.
  void guard(GstElement *payloader);

private:
  static GstPadProbeReturn on_packet(GstPad *, GstPadProbeInfo *, gpointer gate) noexcept;
  bool lets_through() noexcept;

  std::mutex mutex_;
  std::condition_variable opened_;
  gint64 hold_until_ = 0;  // on the monotonic clock
  gint64 drop_until_ = 0;  // likewise
};

}  // namespace kel::tavren::programs

#endif
