// What goes into which file.

#ifndef TAVREN_PROGRAMS_RECORDING_H
#define TAVREN_PROGRAMS_RECORDING_H

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gst/gst.h>

#include "container.h"
#include "file_set.h"
#include "frame.h"
#include "progress_display.h"

namespace kel::tavren::programs {

struct Recording_Options {
  std::string output;         // its extension chooses the container
  GstClockTime duration = 0;  // in ns from the first frame on; 0: until stopped
  GstClockTime segment = 0;   // of a file, in ns; 0: one file as long as the camera goes on
  guint64 keep_free = 0;      // bytes; 0: no limit
  bool overwrite = false;
};

// Writes the frames of one camera session after another into files. A file begins with a key frame
// of the leading stream: the first video stream, or the first stream if there is no video. A new
// file begins when a segment is over, and when the container cannot go on: with other caps, with an
// encoder that was restarted, with a stream that joins. For the main context only.
class Recording {
public:
  // Throws what the library throws if the container is not known or its muxer is missing, and
  // Bus_Error if the file cannot be written.
  Recording(GstElement *pipeline, const Recording_Options &options, Progress_Display &display);

  const Container &container() const noexcept { return container_; }

  // The session's streams: each is added before its first frame.
  void add_stream(guint number, const std::string &name, bool is_video);
  void add_frame(guint number, GstSample *sample);
  void restart_stream(guint number);
  void end_stream(guint number);
  // Ends the files, and forgets the streams: others begin with the next session.
  void end_session();

  // Ends the files for good; later frames are dropped.
  void finish();
  // Does what time brings; called several times a second. Throws Bus_Error if a file cannot be
  // finished in time.
  void tick();
  // Handles a message about a file; returns whether it is about one. Throws Bus_Error for an error.
  bool handle(GstMessage *message);

  // The time, in UTC us, between the last frame of a session and the first recorded frame of the
  // next; once for each such gap, when it is over.
  struct Gap {
    gint64 from = 0;
    gint64 to = 0;
  };
  // The gap that is not over yet, until now.
  std::optional<Gap> open_gap() const;
  std::optional<Gap> take_gap() { return std::exchange(gap_, std::nullopt); }

  bool has_begun() const noexcept { return begin_.has_value(); }
  bool has_streams() const noexcept { return !streams_.empty(); }
  // Whether all that was asked for has been recorded.
  bool is_complete() const;
  const File_Set &files() const noexcept { return files_; }
  // Whether all streams of the session have ended.
  bool all_ended() const;
  // When the last frame arrived, in us of the monotonic clock, and the longest wait for one.
  gint64 last_arrival() const noexcept { return last_arrival_; }
  gint64 longest_wait() const noexcept { return longest_wait_; }
  // Whether video arrives but no key frame, so that no file can begin.
  bool waits_for_key_frame() const;
  GstClockTime recorded() const noexcept;
  // How much of each stream the files hold: video H264 10.0 s, audio PCMA 10.0 s.
  std::string summary() const;

private:
  struct Stream {
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

  struct Total {
    std::string name;
    GstClockTime duration = 0;
  };

  void route_all();
  bool route(Stream &stream);
  bool begins_new_file(const Stream &stream, const Frame &frame);
  bool others_wait_for_file(const Stream &stream) const;
  static bool belongs_to(const Stream &stream, const Frame &frame, gint64 start);
  static void leave_file(Stream &stream);
  static void close(Stream &stream);
  void complete(Stream &stream);
  void forget_session() noexcept;
  void leave_old_files();
  bool is_in_use(const Media_File &file) const;
  void move_to_newest_file(Stream &stream, const Frame &frame);
  void write(Stream &stream, const Frame &frame);
  bool accepts(const Stream &stream) const;
  void refuse(Stream &stream);
  void note_arrival(Stream &stream);
  bool is_past_end(const Stream &stream, const Frame &frame) const;
  Stream *leading_stream();
  bool may_open(const Stream &leading) const;
  bool open_file();
  std::vector<Track> tracks_for_file() const;
  void end_stopped_streams();
  static gint64 longest_silence(const Stream &stream);

  Recording_Options options_;
  Container container_;
  Progress_Display &display_;
  File_Set files_;
  std::map<guint, Stream> streams_;
  std::optional<gint64> begin_;  // running time of the first file
  gint64 begin_arrival_ = 0;     // when that file was opened, in us of the monotonic clock
  gint64 end_ = 0;               // running time of the end of what has been recorded
  std::map<guint, Total> totals_;
  bool is_finishing_ = false;
  bool is_session_ending_ = false;
  bool is_resuming_ = false;  // nothing has been recorded since the last session
  gint64 last_recorded_ = 0;  // when the last recorded frame arrived, UTC in us
  gint64 last_written_ = 0;   // when the last frame was written, on the monotonic clock in us
  std::optional<Gap> gap_;
  gint64 first_arrival_ = 0;  // in the session, in us of the monotonic clock; 0: none yet
  gint64 last_arrival_ = 0;
  gint64 longest_wait_ = 0;
  gint64 resumed_at_ = 0;  // when a stream sent again after a pause of all streams
  gint64 first_over_ = 0;  // when the first stream was over; 0: none is
};

}  // namespace kel::tavren::programs

#endif
