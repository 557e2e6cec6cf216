// The open and the finished files of a recording.

#ifndef TAVREN_PROGRAMS_FILE_SET_H
#define TAVREN_PROGRAMS_FILE_SET_H

#include <list>
#include <memory>
#include <string>
#include <vector>

#include <gst/gst.h>

#include "container.h"
#include "media_file.h"
#include "recorder_log.h"
#include "recording_files.h"

namespace kel::tavren::programs {

// Usually one file is open. When a new file begins, the old one remains open until its last stream
// has switched to the new one.
class File_Set {
public:
  // `keep_free` is the space in bytes to keep free by removing the oldest files; 0: no limit.
  File_Set(GstElement *pipeline, const Container &container, Recording_Files names,
           guint64 keep_free, Recorder_Log &log);

  // Begins a file at a running time in ns. Throws the exceptions of Media_File and Reserved_File.
  Media_File &open(std::vector<Track> tracks, gint64 start);
  bool is_empty() const noexcept { return files_.empty(); }
  Media_File &newest() noexcept { return *files_.back().media; }
  // Returns all files except the newest that still have tracks.
  std::vector<Media_File *> old_files() const;

  // Handles a message about a file. Returns whether the message is about one. For an error, gives
  // up all files and throws Bus_Error: a file that cannot be written cannot be finished either.
  bool handle(GstMessage *message);
  // Flushes all files.
  void flush() noexcept;
  // Closes the files that are finished. Throws Bus_Error if one cannot be finished in time.
  void tick();
  // Ends all files.
  void end() noexcept;

  std::size_t finished() const noexcept { return finished_; }
  const std::string &last_finished() const noexcept { return last_finished_; }
  // Returns the path of the newest file, open or finished; empty if there is none.
  std::string current() const;
  guint64 bytes() const;
  // Returns the number of bytes that are waiting to be written.
  guint64 waiting_bytes() const;
  // Reports the fill levels of the queues of the newest file.
  std::vector<std::string> queue_reports() const;
  // Returns the fill levels of the queues of all files.
  std::vector<Queue_Level> queue_levels() const;

private:
  struct Open_File {
    std::unique_ptr<Reserved_File> reservation;
    std::unique_ptr<Media_File> media;
    gint64 ended_at = 0;  // on the monotonic clock in us; 0: not ended
  };

  void close_finished();
  void report(const Media_File &file);
  void free_space();

  GstElement *pipeline_;
  const Container &container_;
  Recording_Files names_;
  guint64 keep_free_;
  Recorder_Log &log_;
  std::list<Open_File> files_;  // the newest last
  std::size_t finished_ = 0;
  std::string last_finished_;
  guint64 finished_bytes_ = 0;
  gint64 space_checked_at_ = 0;  // on the monotonic clock in us
};

}  // namespace kel::tavren::programs

#endif
