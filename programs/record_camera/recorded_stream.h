// One stream of a recording: the frames that wait, and the file that they go to.

#ifndef TAVREN_PROGRAMS_RECORDED_STREAM_H
#define TAVREN_PROGRAMS_RECORDED_STREAM_H

#include <deque>
#include <string>

#include <gst/gst.h>

#include "frame.h"
#include "media_file.h"

namespace kel::tavren::programs {

struct Recorded_Stream {
  // Nothing more of the stream is recorded.
  void close();
  // Later frames wait for another file.
  void leave_file();
  // Whether a frame belongs into a file that begins at a time. The key frames of two encoders are
  // seldom taken at the same moment: a second video may begin a little before the first.
  bool belongs_to(const Frame &frame, gint64 start) const;
  // Whether a frame is later than a recording that begins at a time and lasts for a duration in ns.
  bool is_past_end(const Frame &frame, gint64 begin, GstClockTime duration) const;
  // In us, after which the stream counts as stopped.
  gint64 longest_silence() const;

  guint number = 0;
  std::string name;
  bool is_video = false;
  Frame_Times times;
  std::deque<Frame> waiting;   // for a file
  Media_File *file = nullptr;  // the frames' way; null: the next file is waited for
  bool needs_key = false;      // frames are dropped until the next key frame
  bool has_ended = false;      // the camera has ended it
  bool is_over = false;        // nothing more of it is recorded
  bool is_complete = false;    // all that was asked for of it is recorded
  bool is_quiet = false;       // it has stopped, and that has been shown
  gint64 last_arrival = 0;
  gint64 begin_dts = 0;  // of its first frame in the recording
  bool has_begun = false;
  boost::intrusive_ptr<GstCaps> caps;  // of its last frame
};

}  // namespace kel::tavren::programs

#endif
