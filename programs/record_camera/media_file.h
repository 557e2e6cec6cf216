// One file that is being written.

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

namespace kel::tavren::programs {

// A stream as a file holds it.
struct Track {
  guint stream = 0;  // its number among the camera's streams
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

// A bin in the pipeline: a queue for each track, a muxer and a file sink. For one thread, which
// also handles the pipeline's messages. A file that is destroyed before it is finished stays as it
// is.
class Media_File {
public:
  // Adds the bin and starts it. Start is the running time in ns at which the file begins. Throws
  // what the library throws, or the Bus_Error of the element that could not start.
  Media_File(GstElement *pipeline, const Container &container, std::string path,
             std::vector<Track> tracks, gint64 start);
  const std::string &path() const noexcept { return path_; }
  gint64 start() const noexcept { return start_; }
  const std::vector<Track> &tracks() const noexcept { return tracks_; }
  GstClockTime duration() const noexcept;
  guint64 bytes() const;
  // The bytes that wait to be written.
  guint64 waiting_bytes() const;
  // Reports, for each queue, how full it is.
  std::vector<std::string> queue_reports() const;

  bool has_track(guint stream) const noexcept { return index_of(stream) < tracks_.size(); }
  // Whether the file has a track for the stream that goes on, with caps that let it go on.
  bool takes(guint stream, const GstCaps *caps) const;
  void write(guint stream, const Frame &frame);
  void end_track(guint stream) noexcept;
  // Ends all tracks. The file is finished when is_finished() says so.
  void end() noexcept;

  bool has_ended() const noexcept;
  bool is_finished() const noexcept { return finished_; }
  // Whether a message is about this file.
  bool owns(GstMessage *message) const { return bin_.posted(message); }
  // Notices that the file is finished.
  void handle(GstMessage *message);

private:
  void add_tracks(GstElement *muxer);
  std::size_t index_of(guint stream) const noexcept;

  std::string path_;
  gint64 start_;
  std::vector<Track> tracks_;
  Pipeline_Bin bin_;
  std::vector<GstElement *> queues_;  // borrowed from the bin
  std::vector<std::unique_ptr<Media_Feed>> feeds_;
  bool finished_ = false;
};

}  // namespace kel::tavren::programs

#endif
