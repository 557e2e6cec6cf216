// Makes viewers start with a key frame.

#ifndef TAVREN_PROGRAMS_KEY_FRAME_GATE_H
#define TAVREN_PROGRAMS_KEY_FRAME_GATE_H

#include <condition_variable>
#include <mutex>

#include <glib.h>

namespace kel::tavren::programs {

// Viewers wait at the gate until a key frame is about to be sent. The key frame waits until they
// are all playing. Both waits are bounded: eventually, a viewer plays without a key frame, and a
// key frame is sent although a viewer is not ready.
class Key_Frame_Gate {
public:
  // Call this when a viewer is about to play. Blocks the viewer's thread.
  void enter() noexcept;
  // Call this when the viewer is playing.
  void leave() noexcept;

  // Call this when a key frame is about to be sent. Blocks the camera's thread.
  void open() noexcept;

  // Ends all waits permanently.
  void remove() noexcept;

private:
  std::mutex mutex_;
  std::condition_variable changed_;
  unsigned waiting_ = 0;     // viewers that wait for a key frame
  unsigned admitted_ = 0;    // viewers for which a key frame waits
  unsigned key_frames_ = 0;  // for which viewers have waited
  bool removed_ = false;
};

}  // namespace kel::tavren::programs

#endif
