#include "recorder_thread.h"

#include <utility>

namespace kel::tavren::programs {

Recorder_Thread::Recorder_Thread(const Recorder_Options &options, Event_Log &log)
    : name_(options.name), events_(log), log_(log, options.name),
      context_(g_main_context_new(), false), recorder_(options, context_.get(), log_) {}

Recorder_Thread::~Recorder_Thread() {
  if (!thread_.joinable()) return;
  stop();
  thread_.join();
}

void Recorder_Thread::start() noexcept {
  if (thread_.joinable() || has_ended_) return;
  try {
    thread_ = std::thread([this] { record(); });
  } catch (...) {
    end(std::current_exception());
  }
}

void Recorder_Thread::record() noexcept {
  try {
    recorder_.record();
    end(nullptr);
  } catch (...) {
    // A camera that has sent nothing has no file to finish.
    const bool is_expected = is_stopping_ && !recorder_.has_begun();
    end(is_expected ? nullptr : std::current_exception());
  }
}

void Recorder_Thread::end(std::exception_ptr failure) noexcept {
  failure_ = std::move(failure);
  ended_at_ = g_get_real_time();
  has_ended_ = true;
  // Only now: whoever reads this may reload the configuration at once to try the camera again.
  if (failure_) events_.write_failure(name_, failure_);
}

void Recorder_Thread::stop() {
  is_stopping_ = true;
  g_main_context_invoke(
      context_.get(),
      [](gpointer recorder) -> gboolean {
        static_cast<Camera_Recorder *>(recorder)->stop();
        return G_SOURCE_REMOVE;
      },
      &recorder_);
}

Recorder_Status Recorder_Thread::status() const {
  Recorder_Status status = recorder_.status();
  if (!has_ended_) return status;
  status.state = failure_ ? Recorder_State::failed : Recorder_State::ended;
  status.since = ended_at_;
  status.failure = failure_;
  status.queues.clear();
  return status;
}

}  // namespace kel::tavren::programs
