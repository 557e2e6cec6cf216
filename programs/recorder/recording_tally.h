// The recorded duration, and the gaps in it.

#ifndef TAVREN_PROGRAMS_RECORDING_TALLY_H
#define TAVREN_PROGRAMS_RECORDING_TALLY_H

#include <map>
#include <optional>
#include <string>

#include <gst/gst.h>

#include "frame.h"

namespace kel::tavren::programs {

class Recording_Tally {
public:
  // The time, in UTC us, between the last frame of a session and the first recorded frame of the
  // next one.
  struct Gap {
    gint64 from = 0;
    gint64 to = 0;
  };

  void add_stream(guint number, const std::string &name) { totals_[number].name = name; }
  // Begins the first file at a running time.
  void begin(gint64 start);
  // Counts a written frame with the given duration in ns.
  void add(guint stream, const Frame &frame, GstClockTime length);
  // Begins a gap: the session has ended.
  void interrupt() noexcept { is_interrupted_ = begin_.has_value(); }

  // Returns the current gap, up to now. Returns a completed gap only once.
  std::optional<Gap> open_gap() const;
  std::optional<Gap> take_gap();

  // Running time of the first file.
  std::optional<gint64> begin() const noexcept { return begin_; }
  // When that file began and when the last frame was written, in us of the monotonic clock.
  gint64 begin_arrival() const noexcept { return begin_arrival_; }
  gint64 last_written() const noexcept { return last_written_; }
  // The running time of the end of the recording.
  gint64 end() const noexcept { return end_; }
  GstClockTime recorded() const noexcept;
  // The number of recorded frames of all streams.
  guint64 frames() const noexcept { return frames_; }
  // The recorded duration of each stream: video H264 10.0 s, audio PCMA 10.0 s.
  std::string summary() const;

private:
  struct Total {
    std::string name;
    GstClockTime duration = 0;
  };

  std::map<guint, Total> totals_;
  guint64 frames_ = 0;
  std::optional<gint64> begin_;
  gint64 begin_arrival_ = 0;
  gint64 end_ = 0;
  gint64 last_written_ = 0;
  gint64 last_recorded_ = 0;     // when the last recorded frame arrived, UTC in us
  bool is_interrupted_ = false;  // nothing has been recorded since the last session ended
  std::optional<Gap> gap_;
};

}  // namespace kel::tavren::programs

#endif
