// Distributes the frames of a camera to files.

#ifndef TAVREN_PROGRAMS_RECORDING_H
#define TAVREN_PROGRAMS_RECORDING_H

#include <map>
#include <string>
#include <vector>

#include <gst/gst.h>

#include "container.h"
#include "file_set.h"
#include "recorded_stream.h"
#include "recorder_log.h"
#include "recording_tally.h"

namespace kel::tavren::programs {

struct Recording_Options {
  std::string output;         // the extension selects the container
  GstClockTime duration = 0;  // in ns from the first frame; 0: until stopped
  GstClockTime segment = 0;   // duration of a file in ns; 0: do not start new files
  guint64 keep_free = 0;      // bytes; 0: no limit
  bool overwrite = false;
};

// Writes the frames of consecutive camera sessions to files. A file begins with a key frame of the
// leading stream, which is the first video stream, or the first stream if there is no video. A new
// file begins when a segment is over, and when the container cannot continue: the caps change, an
// encoder restarts, or a stream is added. For use in the main context only.
class Recording {
public:
  // Propagates the library's exception if the container is unknown or its muxer is missing. Throws
  // Bus_Error if the file cannot be written.
  Recording(GstElement *pipeline, const Recording_Options &options, Recorder_Log &log);

  const Container &container() const noexcept { return container_; }

  // Adds a stream of the session. Call this before its first frame.
  void add_stream(guint number, const std::string &name, bool is_video);
  void add_frame(guint number, GstSample *sample);
  // Passes the added frames on to the files. Call this after each batch of frames.
  void flush() noexcept { files_.flush(); }
  void restart_stream(guint number);
  void end_stream(guint number);
  // Ends the session: ends the files and forgets the streams. The next session adds its streams
  // again.
  void end_session();

  // Ends the files permanently. Later frames are dropped.
  void finish();
  // Handles timeouts. Call this several times a second. Throws Bus_Error if a file cannot be
  // finished in time.
  void tick();
  // Handles a message about a file. Returns whether the message is about one. Throws Bus_Error for
  // an error.
  bool handle(GstMessage *message);

  bool has_begun() const noexcept { return tally_.begin().has_value(); }
  bool has_streams() const noexcept { return !streams_.empty(); }
  // Returns whether everything requested has been recorded.
  bool is_complete() const;
  const File_Set &files() const noexcept { return files_; }
  // Returns whether all streams of the session have ended.
  bool all_ended() const;
  // The arrival time of the last frame, in us of the monotonic clock, and the longest wait for a
  // frame.
  gint64 last_arrival() const noexcept { return last_arrival_; }
  gint64 longest_wait() const noexcept { return longest_wait_; }
  // Returns whether video arrives without a key frame, so that no file can begin.
  bool waits_for_key_frame() const;
  // The recorded duration and the gaps.
  Recording_Tally &tally() noexcept { return tally_; }
  const Recording_Tally &tally() const noexcept { return tally_; }

private:
  using Stream = Recorded_Stream;

  void route_all();
  bool route(Stream &stream);
  bool begins_new_file(const Stream &stream, const Frame &frame);
  bool others_wait_for_file(const Stream &stream) const;
  void complete(Stream &stream);
  void forget_session() noexcept;
  void leave_old_files();
  bool is_in_use(const Media_File &file) const;
  void move_to_newest_file(Stream &stream, const Frame &frame);
  void write(Stream &stream, const Frame &frame);
  bool accepts(const Stream &stream) const;
  void refuse(Stream &stream);
  void note_arrival(Stream &stream);
  bool is_past_end(const Stream &stream) const;
  Stream *leading_stream();
  bool may_open(const Stream &leading) const;
  bool open_file();
  std::vector<Track> tracks_for_file() const;
  void end_stopped_streams();

  Recording_Options options_;
  Container container_;
  Recorder_Log &log_;
  File_Set files_;
  Recording_Tally tally_;
  std::map<guint, Stream> streams_;
  bool is_finishing_ = false;
  bool is_session_ending_ = false;
  gint64 first_arrival_ = 0;  // in the session, in us of the monotonic clock; 0: none yet
  gint64 last_arrival_ = 0;
  gint64 longest_wait_ = 0;
  gint64 resumed_at_ = 0;  // when a stream resumed after a pause of all streams
  gint64 first_over_ = 0;  // when the first stream was complete; 0: none yet
};

}  // namespace kel::tavren::programs

#endif
