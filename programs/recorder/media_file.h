// A file that is being written.

#ifndef TAVREN_PROGRAMS_MEDIA_FILE_H
#define TAVREN_PROGRAMS_MEDIA_FILE_H

#include <memory>
#include <string>
#include <vector>

#include <gst/gst.h>

#include "container.h"
#include "frame.h"
#include "media_feed.h"
#include "pipeline_bin.h"
#include "recorder_status.h"

namespace kel::tavren::programs {

// A stream in a file.
struct Track {
  guint stream = 0;  // number of the stream among the camera's streams
  std::string name;
  boost::intrusive_ptr<GstCaps> caps;
  bool has_ended = false;
  guint64 frames = 0;
  gint64 begin = 0;  // of the first frame, in ns of running time
  gint64 end = 0;    // of the last frame

  GstClockTime duration() const noexcept {
    return frames == 0 ? 0 : static_cast<GstClockTime>(end - begin);
  }
};

// A bin in the pipeline: a queue for each track, a muxer and a file sink. For use in one thread,
// which also handles the pipeline's messages. If the object is destroyed before the file is
// finished, the file remains unfinished.
class Media_File {
public:
  // Adds the bin and starts it. `start` is the running time in ns at which the file begins.
  // Propagates the library's exceptions. Throws Bus_Error if an element cannot start.
  Media_File(GstElement *pipeline, const Container &container, std::string path,
             std::vector<Track> tracks, gint64 start);
  const std::string &path() const noexcept { return path_; }
  gint64 start() const noexcept { return start_; }
  const std::vector<Track> &tracks() const noexcept { return tracks_; }
  GstClockTime duration() const noexcept;
  guint64 bytes() const;
  // Returns the number of bytes that are waiting to be written.
  guint64 waiting_bytes() const;
  std::vector<Queue_Level> queue_levels() const;
  // Reports the fill level of each queue.
  std::vector<std::string> queue_reports() const;

  bool has_track(guint stream) const noexcept { return index_of(stream) < tracks_.size(); }
  // Returns whether the file has an open track for the stream with compatible caps.
  bool takes(guint stream, const GstCaps *caps) const;
  // Writes a frame. It is not complete until flush() is called or its track ends.
  void write(guint stream, const Frame &frame);
  void flush() noexcept;
  void end_track(guint stream) noexcept;
  // Ends all tracks. The file is finished when is_finished() returns true.
  void end() noexcept;

  bool has_ended() const noexcept;
  bool is_finished() const noexcept { return finished_; }
  // Returns whether a message is about this file.
  bool owns(GstMessage *message) const { return bin_.posted(message); }
  // Detects the end of the file.
  void handle(GstMessage *message);

private:
  void add_tracks(GstElement *muxer);
  std::size_t index_of(guint stream) const noexcept;

  std::string path_;
  gint64 start_;
  std::vector<Track> tracks_;
  Pipeline_Bin bin_;
  std::vector<GstElement *> queues_;  // owned by the bin
  std::vector<std::unique_ptr<Media_Feed>> feeds_;
  bool finished_ = false;
};

}  // namespace kel::tavren::programs

#endif
