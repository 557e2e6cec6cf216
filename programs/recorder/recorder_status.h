// The status of a recorder.

#ifndef TAVREN_PROGRAMS_RECORDER_STATUS_H
#define TAVREN_PROGRAMS_RECORDER_STATUS_H

#include <exception>
#include <optional>
#include <string>
#include <vector>

#include <gst/gst.h>

namespace kel::tavren::programs {

enum class Recorder_State {
  connecting,  // nothing has been recorded yet
  recording,
  away,  // the camera is unavailable and is retried
  finishing,
  ended,
  failed
};

// A time, in UTC us, from which nothing was recorded.
struct Recorded_Gap {
  gint64 from = 0;
  gint64 to = 0;
  std::string cause;
};

// The fill level of the queue of a stream in front of the muxer.
struct Queue_Level {
  std::string stream;
  guint buffers = 0;
  guint bytes = 0;
  guint64 time = 0;  // in ns
};

struct Recorder_Status {
  Recorder_State state = Recorder_State::connecting;
  gint64 since = 0;            // when the state was entered, in UTC us
  std::exception_ptr failure;  // why the camera is away, or the recording failed; null: neither
  std::string file;            // the newest file; empty: none yet
  guint64 bytes = 0;           // of all files
  guint64 frames = 0;          // of all streams
  GstClockTime recorded = 0;   // in ns
  guint64 gaps = 0;
  std::optional<Recorded_Gap> last_gap;
  std::vector<Queue_Level> queues;
};

}  // namespace kel::tavren::programs

#endif
