// A thread that runs a main context.

#ifndef TAVREN_PROGRAMS_LOOP_THREAD_H
#define TAVREN_PROGRAMS_LOOP_THREAD_H

#include <thread>

#include <tavren/handles/reference_adapters.h>

namespace kel::tavren::programs {

// Runs a main context from construction until stop() is called.
class Loop_Thread {
public:
  explicit Loop_Thread(GMainContext *context)
      : loop_(g_main_loop_new(context, FALSE), false),
        thread_([this] { g_main_loop_run(loop_.get()); }) {}
  ~Loop_Thread() { stop(); }

  Loop_Thread(const Loop_Thread &) = delete;
  Loop_Thread &operator=(const Loop_Thread &) = delete;

  // Waits for the thread to end. Further calls have no effect. Do not call this from the thread
  // itself.
  void stop() noexcept {
    if (!thread_.joinable()) return;
    // A queued call ends the loop even if the thread has not entered it yet.
    g_main_context_invoke(
        g_main_loop_get_context(loop_.get()),
        [](gpointer loop) -> gboolean {
          g_main_loop_quit(static_cast<GMainLoop *>(loop));
          return G_SOURCE_REMOVE;
        },
        loop_.get());
    thread_.join();
  }

private:
  const boost::intrusive_ptr<GMainLoop> loop_;
  std::thread thread_;
};

}  // namespace kel::tavren::programs

#endif
