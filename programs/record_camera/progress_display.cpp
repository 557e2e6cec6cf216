#include "progress_display.h"

#include <unistd.h>

#include <iostream>

namespace kel::tavren::programs {

namespace {

constexpr gint64 line_interval = gint64{10} * G_TIME_SPAN_SECOND;
constexpr const char *erase_line = "\r\033[K";

}  // namespace

Progress_Display::Progress_Display(bool quiet)
    : quiet_(quiet), is_terminal_(isatty(STDOUT_FILENO) != 0),
      last_progress_(g_get_monotonic_time()) {}

void Progress_Display::line(const std::string &text, const std::exception_ptr &) {
  if (quiet_) return;
  if (line_is_open_) std::cout << erase_line;
  line_is_open_ = false;
  std::cout << text << std::endl;
}

void Progress_Display::progress(const std::string &text) {
  if (quiet_) return;
  if (is_terminal_) {
    std::cout << erase_line << text << std::flush;
    line_is_open_ = true;
    return;
  }
  const gint64 now = g_get_monotonic_time();
  if (now - last_progress_ < line_interval) return;
  last_progress_ = now;
  std::cout << text << std::endl;
}

}  // namespace kel::tavren::programs
