// Which file each frame is written to, and when a new file begins.

#include <algorithm>
#include <deque>

#include "recording.h"

namespace kel::tavren::programs {

using Caps = boost::intrusive_ptr<GstCaps>;

namespace {

constexpr gint64 seconds = G_TIME_SPAN_SECOND;
constexpr gint64 late_limit = 8 * seconds;       // for streams that start later than the others
constexpr gint64 straggler_limit = 5 * seconds;  // for streams that have not left an old file
constexpr gint64 us_in_ns = 1000;
constexpr std::size_t frames_for_rate = 10;

}  // namespace

//! [route the frames]
// Moves frames to their files until none can be moved. A new file may let other streams continue.
void Recording::route_all() {
  for (bool moved = true; moved;) {
    moved = false;
    for (auto &[number, stream] : streams_)
      moved = route(stream) || moved;
  }
}

// Moves a stream's waiting frames. Returns whether any frame was moved.
bool Recording::route(Stream &stream) {
  bool moved = false;
  while (!stream.waiting.empty()) {
    if (is_past_end(stream)) complete(stream);
    if (stream.is_over) return moved;
    if (stream.file != nullptr && begins_new_file(stream, stream.waiting.front()))
      stream.leave_file();
    if (stream.file == nullptr) {
      if (!open_file()) return moved;
      continue;  // the frames before the beginning of the file have been dropped
    }
    const Frame &frame = stream.waiting.front();
    move_to_newest_file(stream, frame);
    if (stream.file == nullptr) continue;
    if (!stream.needs_key || (frame.is_key && stream.belongs_to(frame, stream.file->start())))
      write(stream, frame);
    stream.waiting.pop_front();
    moved = true;
    if (stream.has_ended && stream.waiting.empty()) stream.close();
  }
  return moved;
}
//! [route the frames]

bool Recording::begins_new_file(const Stream &stream, const Frame &frame) {
  if (!stream.file->takes(stream.number, frame.caps())) return true;
  if (&stream != leading_stream() || !frame.is_key) return false;
  const bool segment_is_over = options_.segment != 0 && frame.pts - stream.file->start() >=
                                                            static_cast<gint64>(options_.segment);
  return segment_is_over || others_wait_for_file(stream);
}

bool Recording::others_wait_for_file(const Stream &stream) const {
  return std::any_of(streams_.begin(), streams_.end(), [&stream](const auto &entry) {
    const Stream &other = entry.second;
    return other.number != stream.number && other.file == nullptr && !other.is_over &&
           !other.waiting.empty();
  });
}

// Returns whether an active stream still uses a file because it is waiting for its next key frame.
bool Recording::is_in_use(const Media_File &file) const {
  return std::any_of(streams_.begin(), streams_.end(), [&file](const auto &entry) {
    return entry.second.file == &file &&
           g_get_monotonic_time() - entry.second.last_arrival < straggler_limit;
  });
}

// A stream that has stopped would keep an old file open.
void Recording::leave_old_files() {
  for (Media_File *const old : files_.old_files()) {
    Media_File &newest = files_.newest();
    if (tally_.end() - newest.start() <= straggler_limit * us_in_ns || is_in_use(*old)) continue;
    for (auto &[number, stream] : streams_) {
      if (stream.file != old) continue;
      stream.file = newest.takes(number, stream.caps.get()) ? &newest : nullptr;
      stream.needs_key = true;
    }
    old->end();
  }
}

// A stream switches to the newest file with its first frame that belongs there.
void Recording::move_to_newest_file(Stream &stream, const Frame &frame) {
  Media_File *const newest = &files_.newest();
  if (stream.file == newest || !frame.is_key || !stream.belongs_to(frame, newest->start())) return;
  stream.leave_file();
  stream.file = newest->takes(stream.number, frame.caps()) ? newest : nullptr;
}

void Recording::write(Stream &stream, const Frame &frame) {
  stream.needs_key = false;
  if (!stream.has_begun) stream.begin_dts = frame.dts;
  stream.has_begun = true;
  stream.file->write(stream.number, frame);
  tally_.add(stream.number, frame, frame.duration != 0 ? frame.duration : stream.times.interval());
}

bool Recording::is_past_end(const Stream &stream) const {
  return options_.duration != 0 && has_begun() &&
         stream.is_past_end(stream.waiting.front(), *tally_.begin(), options_.duration);
}

Recording::Stream *Recording::leading_stream() {
  Stream *first = nullptr;
  for (auto &[number, stream] : streams_) {
    if (stream.is_over || stream.is_quiet || stream.last_arrival == 0) continue;
    if (stream.is_video) return &stream;
    if (first == nullptr) first = &stream;
  }
  return first;
}

// At the beginning of a session, waits for all its streams. If the container needs a frame rate
// that the camera does not announce, waits until the rate can be measured.
bool Recording::may_open(const Stream &leading) const {
  const bool is_late = is_session_ending_ || g_get_monotonic_time() - first_arrival_ > late_limit;
  const bool all_arrive = std::all_of(streams_.begin(), streams_.end(), [](const auto &entry) {
    return entry.second.is_over || entry.second.last_arrival != 0;
  });
  const bool rate_is_known = !needs_frame_rate(container_, leading.waiting.front().caps()) ||
                             leading.has_begun || leading.waiting.size() >= frames_for_rate;
  return is_late || (all_arrive && rate_is_known);
}

//! [open a file]
// Opens a file at the next key frame of the leading stream. Returns false if there is no key frame.
bool Recording::open_file() {
  Stream *const leading = leading_stream();
  if (leading == nullptr || leading->file != nullptr) return false;
  std::deque<Frame> &frames = leading->waiting;
  while (!frames.empty() && !frames.front().is_key)
    frames.pop_front();
  if (frames.empty() || !may_open(*leading)) return false;

  const gint64 start = frames.front().pts;
  Media_File &file = files_.open(tracks_for_file(), start);
  tally_.begin(start);
  for (auto &[number, stream] : streams_) {
    if (stream.file != nullptr || !file.has_track(number)) continue;
    stream.file = &file;
    stream.needs_key = true;
    while (!stream.waiting.empty() && !stream.belongs_to(stream.waiting.front(), start))
      stream.waiting.pop_front();
  }
  return true;
}
//! [open a file]

std::vector<Track> Recording::tracks_for_file() const {
  std::vector<Track> tracks;
  for (const auto &[number, stream] : streams_) {
    if (stream.is_over || stream.is_quiet || stream.caps == nullptr) continue;
    Track &track = tracks.emplace_back();
    track.stream = number;
    track.name = stream.name;
    const Caps caps = stream.waiting.empty() ? stream.caps : Caps(stream.waiting.front().caps());
    track.caps = complete_caps(container_, caps, stream.times.interval());
  }
  return tracks;
}

}  // namespace kel::tavren::programs
