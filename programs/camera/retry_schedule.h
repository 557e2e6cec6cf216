// Schedules reconnection attempts to an unavailable camera.

#ifndef TAVREN_PROGRAMS_RETRY_SCHEDULE_H
#define TAVREN_PROGRAMS_RETRY_SCHEDULE_H

#include <algorithm>
#include <optional>

#include <glib.h>

namespace kel::tavren::programs {

// Computes retry delays of a sixteenth of the time that the camera has been unavailable, from a
// quarter of a second to half a minute, so that the gap is little longer than the absence. All
// times are in us of the monotonic clock.
class Retry_Schedule {
public:
  explicit Retry_Schedule(gint64 limit) noexcept : limit_(limit) {}

  // Call this if the camera has disconnected or does not respond. Returns the time of the next
  // attempt, or nothing if the camera has been unavailable for too long.
  std::optional<gint64> next(gint64 now) noexcept {
    if (!since_) since_ = now;
    const gint64 left = *since_ + limit_ - now;
    if (left <= 0) return std::nullopt;
    return now + std::min(left, std::clamp((now - *since_) / 16, shortest_pause, longest_pause));
  }

  // Call this when the camera is available again.
  void reset() noexcept { since_.reset(); }

private:
  static constexpr gint64 shortest_pause = G_TIME_SPAN_SECOND / 4;
  static constexpr gint64 longest_pause = 30 * G_TIME_SPAN_SECOND;

  gint64 limit_;
  std::optional<gint64> since_;
};

}  // namespace kel::tavren::programs

#endif
