// Timers of a main context.

#ifndef TAVREN_PROGRAMS_TIMER_H
#define TAVREN_PROGRAMS_TIMER_H

#include <functional>
#include <utility>

#include <tavren/handles/reference_adapters.h>

namespace kel::tavren::programs {

// Calls a function once or at a regular interval while the timer exists. Destroy a timer in the
// thread that runs its context, or after that thread has ended.
class Timer {
public:
  enum class Kind { once, repeated };

  // A null context means the default context. The function must not throw.
  Timer(GMainContext *context, guint milliseconds, Kind kind, std::function<void()> call)
      : kind_(kind), call_(std::move(call)), source_(g_timeout_source_new(milliseconds), false) {
    g_source_set_callback(source_.get(), dispatch, this, nullptr);
    g_source_attach(source_.get(), context);
  }
  ~Timer() { g_source_destroy(source_.get()); }

  Timer(const Timer &) = delete;
  Timer &operator=(const Timer &) = delete;

private:
  static gboolean dispatch(gpointer data) noexcept {
    const Timer &timer = *static_cast<Timer *>(data);
    timer.call_();
    return timer.kind_ == Kind::repeated;
  }

  const Kind kind_;
  const std::function<void()> call_;
  const boost::intrusive_ptr<GSource> source_;
};

}  // namespace kel::tavren::programs

#endif
