#include "time_text.h"

#include <iomanip>
#include <memory>
#include <sstream>

#include <tavren/handles/emancipator.h>

namespace kel::tavren::programs {

std::string in_seconds(GstClockTime duration) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(1) << static_cast<double>(duration) / GST_SECOND << " s";
  return text.str();
}

std::string in_utc(gint64 time) {
  constexpr gint64 ms = 1000;
  const std::unique_ptr<GDateTime, decltype(&g_date_time_unref)> whole(
      g_date_time_new_from_unix_utc(time / G_TIME_SPAN_SECOND), g_date_time_unref);
  const std::unique_ptr<char, Emancipator<char>> date(
      g_date_time_format(whole.get(), "%Y-%m-%dT%H:%M:%S"));
  std::ostringstream text;
  text << date.get() << '.' << std::setw(3) << std::setfill('0') << time % G_TIME_SPAN_SECOND / ms
       << 'Z';
  return text.str();
}

}  // namespace kel::tavren::programs
