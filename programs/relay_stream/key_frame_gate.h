// Lets viewers begin with a key frame.

#ifndef TAVREN_PROGRAMS_KEY_FRAME_GATE_H
#define TAVREN_PROGRAMS_KEY_FRAME_GATE_H

#include <condition_variable>
#include <mutex>

#include <glib.h>

namespace kel::tavren::programs {

// Viewers wait here until a key frame is about to be sent. The key frame waits until they all play.
// Neither waits for long: a viewer plays without a key frame in the end, and a key frame is sent
// without a viewer that does not get ready.
class Key_Frame_Gate {
public:
  // A viewer is about to play. Called by the viewer's thread, which waits.
  void enter() noexcept;
  // The viewer plays.
  void leave() noexcept;

  // A key frame is about to be sent. Called by the camera's thread, which waits.
  void open() noexcept;

  // Nothing waits any more.
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
