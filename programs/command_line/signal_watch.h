// Ends the programs on Ctrl-C, SIGTERM and SIGHUP.

#ifndef TAVREN_PROGRAMS_SIGNAL_WATCH_H
#define TAVREN_PROGRAMS_SIGNAL_WATCH_H

#include <csignal>

#include <functional>

#include <glib-unix.h>

namespace kel::tavren::programs {

// Calls a function from the default main context when the process receives one of these signals.
// While a watch exists, the signals do not kill the process.
class Signal_Watch {
public:
  // The function must not throw.
  explicit Signal_Watch(std::function<void()> on_end)
      : on_end_(std::move(on_end)), interrupt_(g_unix_signal_add(SIGINT, call, this)),
        terminate_(g_unix_signal_add(SIGTERM, call, this)),
        hang_up_(g_unix_signal_add(SIGHUP, call, this)) {}

  ~Signal_Watch() {
    g_source_remove(interrupt_);
    g_source_remove(terminate_);
    g_source_remove(hang_up_);
  }

  Signal_Watch(const Signal_Watch &) = delete;
  Signal_Watch &operator=(const Signal_Watch &) = delete;

private:
  static gboolean call(gpointer watch) noexcept {
    static_cast<Signal_Watch *>(watch)->on_end_();
    return G_SOURCE_CONTINUE;
  }

  std::function<void()> on_end_;
  guint interrupt_;
  guint terminate_;
  guint hang_up_;
};

}  // namespace kel::tavren::programs

#endif
