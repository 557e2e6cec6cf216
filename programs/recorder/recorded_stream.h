// One stream of a recording: its waiting frames, and the file that they are written to.

#ifndef TAVREN_PROGRAMS_RECORDED_STREAM_H
#define TAVREN_PROGRAMS_RECORDED_STREAM_H

#include <deque>
#include <string>

#include <gst/gst.h>

#include "frame.h"
#include "media_file.h"

namespace kel::tavren::programs {

struct Recorded_Stream {
  // Stops recording the stream.
  void close();
  // Later frames wait for another file.
  void leave_file();
  // Returns whether a frame belongs in a file that begins at the given time. The key frames of two
  // encoders are rarely simultaneous: the second video stream may begin slightly before the first.
  bool belongs_to(const Frame &frame, gint64 start) const;
  // Returns whether a frame is later than the end of a recording with the given start and duration
  // in ns.
  bool is_past_end(const Frame &frame, gint64 begin, GstClockTime duration) const;
  // Returns the silence in us after which the stream counts as stopped.
  gint64 longest_silence() const;

  guint number = 0;
  std::string name;
  bool is_video = false;
  Frame_Times times;
  std::deque<Frame> waiting;   // for a file
  Media_File *file = nullptr;  // current file; null: waiting for the next one
  bool needs_key = false;      // drop frames until the next key frame
  bool has_ended = false;      // the camera has ended the stream
  bool is_over = false;        // the stream is no longer recorded
  bool is_complete = false;    // the requested duration is recorded
  bool is_quiet = false;       // the stream has stopped, and that has been printed
  gint64 last_arrival = 0;
  gint64 begin_dts = 0;  // of its first frame in the recording
  bool has_begun = false;
  boost::intrusive_ptr<GstCaps> caps;  // of its last frame
};

}  // namespace kel::tavren::programs

#endif
