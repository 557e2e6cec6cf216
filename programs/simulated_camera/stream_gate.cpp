#include "stream_gate.h"

#include <chrono>

#include <tavren/capture/media_helper.h>

namespace kel::tavren::programs {

using capture::Media_Helper;

namespace {

gint64 time_after(gint64 duration) noexcept {
  const gint64 now = g_get_monotonic_time();
  return duration > Stream_Gate::for_ever - now ? Stream_Gate::for_ever : now + duration;
}

}  // namespace

void Stream_Gate::hold(gint64 duration) noexcept {
  const std::lock_guard lock(mutex_);
  hold_until_ = time_after(duration);
}

void Stream_Gate::drop(gint64 duration) noexcept {
  const std::lock_guard lock(mutex_);
  drop_until_ = time_after(duration);
}

void Stream_Gate::open() noexcept {
  {
    const std::lock_guard lock(mutex_);
    hold_until_ = 0;
    drop_until_ = 0;
  }
  opened_.notify_all();
}

void Stream_Gate::guard(GstElement *payloader) {
  const boost::intrusive_ptr<GstPad> pad(
      Media_Helper::gst_element_get_static_pad_or_throw(payloader, "src"), false);
  const auto mask =
      static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_BUFFER_LIST);
  gst_pad_add_probe(pad.get(), mask, on_packet, this, nullptr);
}

GstPadProbeReturn Stream_Gate::on_packet(GstPad *, GstPadProbeInfo *, gpointer gate) noexcept {
  return static_cast<Stream_Gate *>(gate)->lets_through() ? GST_PAD_PROBE_OK : GST_PAD_PROBE_DROP;
}

// Waits while the gate holds data back. Returns whether to let it pass.
bool Stream_Gate::lets_through() noexcept {
  std::unique_lock lock(mutex_);
  for (gint64 left = hold_until_ - g_get_monotonic_time(); left > 0;
       left = hold_until_ - g_get_monotonic_time())
    opened_.wait_for(lock, std::chrono::microseconds(left));
  return drop_until_ <= g_get_monotonic_time();
}

}  // namespace kel::tavren::programs
