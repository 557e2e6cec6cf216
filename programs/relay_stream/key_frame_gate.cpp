#include "key_frame_gate.h"

#include <chrono>

namespace kel::tavren::programs {

namespace {

constexpr std::chrono::seconds longest_wait_of_viewer(5);
constexpr std::chrono::milliseconds longest_wait_of_key_frame(500);

}  // namespace

void Key_Frame_Gate::enter() noexcept {
  std::unique_lock lock(mutex_);
  if (removed_) return;
  ++waiting_;
  const unsigned last_key_frame = key_frames_;
  const bool admitted = changed_.wait_for(
      lock, longest_wait_of_viewer, [&] { return removed_ || key_frames_ != last_key_frame; });
  if (!admitted) --waiting_;
}

void Key_Frame_Gate::leave() noexcept {
  {
    const std::lock_guard lock(mutex_);
    if (admitted_ > 0) --admitted_;
  }
  changed_.notify_all();
}

void Key_Frame_Gate::open() noexcept {
  std::unique_lock lock(mutex_);
  if (waiting_ == 0) return;
  admitted_ = waiting_;
  waiting_ = 0;
  ++key_frames_;
  changed_.notify_all();
  changed_.wait_for(lock, longest_wait_of_key_frame, [&] { return removed_ || admitted_ == 0; });
  admitted_ = 0;
}

void Key_Frame_Gate::remove() noexcept {
  {
    const std::lock_guard lock(mutex_);
    removed_ = true;
  }
  changed_.notify_all();
}

}  // namespace kel::tavren::programs
