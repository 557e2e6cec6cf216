#include "recording_tally.h"

#include <algorithm>
#include <utility>

#include "command_line/time_text.h"

namespace kel::tavren::programs {

void Recording_Tally::begin(gint64 start) {
  if (begin_) return;
  begin_ = start;
  begin_arrival_ = g_get_monotonic_time();
}

void Recording_Tally::add(guint stream, const Frame &frame, GstClockTime length) {
  if (std::exchange(is_interrupted_, false)) gap_ = Gap{last_recorded_, frame.arrival};
  last_recorded_ = std::max(last_recorded_, frame.arrival);
  last_written_ = g_get_monotonic_time();
  totals_[stream].duration += length;
  ++frames_;
  end_ = std::max(end_, frame.pts + static_cast<gint64>(length));
}

std::optional<Recording_Tally::Gap> Recording_Tally::open_gap() const {
  if (!is_interrupted_) return std::nullopt;
  return Gap{last_recorded_, g_get_real_time()};
}

std::optional<Recording_Tally::Gap> Recording_Tally::take_gap() {
  return std::exchange(gap_, std::nullopt);
}

GstClockTime Recording_Tally::recorded() const noexcept {
  return begin_ && end_ > *begin_ ? static_cast<GstClockTime>(end_ - *begin_) : 0;
}

std::string Recording_Tally::summary() const {
  std::string text;
  for (const auto &[number, total] : totals_)
    text += (text.empty() ? "" : ", ") + total.name + ' ' + in_seconds(total.duration);
  return text;
}

}  // namespace kel::tavren::programs
