// Calls a function when a signal arrives.

#ifndef TAVREN_PROGRAMS_SIGNAL_WATCH_H
#define TAVREN_PROGRAMS_SIGNAL_WATCH_H

#include <csignal>

#include <functional>
#include <initializer_list>
#include <vector>

#include <glib-unix.h>

namespace kel::tavren::programs {

// Calls a function from the default main context when the process receives one of the signals.
// While a watch exists, the signals do not kill the process.
class Signal_Watch {
public:
  // The function must not throw.
  Signal_Watch(std::initializer_list<int> signals, std::function<void()> call)
      : call_(std::move(call)) {
    sources_.reserve(signals.size());
    for (const int signal : signals)
      sources_.push_back(g_unix_signal_add(signal, dispatch, this));
  }

  ~Signal_Watch() {
    for (const guint source : sources_)
      g_source_remove(source);
  }

  Signal_Watch(const Signal_Watch &) = delete;
  Signal_Watch &operator=(const Signal_Watch &) = delete;

private:
  static gboolean dispatch(gpointer watch) noexcept {
    static_cast<Signal_Watch *>(watch)->call_();
    return G_SOURCE_CONTINUE;
  }

  std::function<void()> call_;
  std::vector<guint> sources_;
};

}  // namespace kel::tavren::programs

#endif
