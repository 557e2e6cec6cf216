#include "recording.h"

#include <algorithm>
#include <memory>
#include <utility>

#include <tavren/handles/emancipator.h>
#include <tavren/handles/scope_exit_guard.h>

#include "command_line/program.h"

namespace kel::tavren::programs {

using Caps = boost::intrusive_ptr<GstCaps>;

namespace {

constexpr gint64 seconds = G_TIME_SPAN_SECOND;
constexpr gint64 late_limit = 8 * seconds;         // for streams that start later than the others
constexpr gint64 key_frame_limit = 30 * seconds;   // for the first key frame
constexpr gint64 pause = 1 * seconds;              // of all streams
constexpr gint64 straggler_limit = 5 * seconds;    // for streams that have not left an old file
constexpr gint64 last_frames_limit = 1 * seconds;  // for the other streams after one is complete
constexpr gint64 last_frame_limit = 4 * seconds;   // for another frame after the duration
constexpr gint64 longest_waiting = gint64{60} * GST_SECOND;  // of frames that wait for a file
constexpr std::size_t frames_for_rate = 10;

gint64 now() {
  return g_get_monotonic_time();
}

gint64 in_ns(gint64 us) {
  return us * 1000;
}

}  // namespace

Recording::Recording(GstElement *pipeline, const Recording_Options &options,
                     Progress_Display &display)
    : options_(options), container_(choose_container(options.output)), display_(display),
      files_(pipeline, container_,
             Recording_Files(options.output, options.overwrite, options.segment != 0),
             options.keep_free, display) {}

void Recording::add_stream(guint number, const std::string &name, bool is_video) {
  Stream &stream = streams_[number];
  stream.number = number;
  stream.name = name;
  stream.is_video = is_video;
  tally_.add_stream(number, name);
}

void Recording::add_frame(guint number, GstSample *sample) {
  const auto found = streams_.find(number);
  if (found == streams_.end() || is_finishing_ || found->second.is_over) return;
  Stream &stream = found->second;
  auto frame = stream.times.make_frame(sample);
  if (!frame) return;
  note_arrival(stream);
  const bool has_new_caps = stream.caps.get() != frame->caps();
  stream.caps = frame->caps();
  if (has_new_caps && !accepts(stream)) return refuse(stream);
  stream.waiting.push_back(*std::move(frame));
  route_all();
  while (!stream.waiting.empty() &&
         stream.waiting.back().pts - stream.waiting.front().pts > longest_waiting)
    stream.waiting.pop_front();
}

void Recording::note_arrival(Stream &stream) {
  const gint64 arrival = now();
  if (last_arrival_ != 0) longest_wait_ = std::max(longest_wait_, arrival - last_arrival_);
  if (arrival - last_arrival_ > pause) resumed_at_ = arrival;
  last_arrival_ = stream.last_arrival = arrival;
  if (first_arrival_ == 0) first_arrival_ = arrival;
  if (stream.is_quiet) display_.line(stream.name + " sends again");
  stream.is_quiet = false;
}

// The exact caps of a stream are known only while it is running.
bool Recording::accepts(const Stream &stream) const {
  const Caps caps = complete_caps(container_, stream.caps, stream.times.interval());
  return gst_caps_can_intersect(caps.get(), container_.accepted.get()) != FALSE;
}

void Recording::refuse(Stream &stream) {
  const std::unique_ptr<char, Emancipator<char>> caps(gst_caps_to_string(stream.caps.get()));
  display_.line(stream.name + " is not recorded: " + container_.name() + " does not hold " +
                caps.get());
  stream.close();
}

// Frames before the next key frame refer to pictures that were not received.
void Recording::restart_stream(guint number) {
  const auto found = streams_.find(number);
  if (found == streams_.end()) return;
  Stream &stream = found->second;
  if (stream.is_complete) return;
  const bool is_leading = &stream == leading_stream();
  stream.is_over = stream.has_ended = false;
  stream.needs_key = true;
  if (is_leading && stream.file != nullptr) stream.leave_file();
}

// Frames that are waiting for a file are still recorded.
void Recording::end_stream(guint number) {
  const auto found = streams_.find(number);
  if (found == streams_.end()) return;
  Stream &stream = found->second;
  stream.has_ended = true;
  route_all();
  if (stream.waiting.empty()) stream.close();
}

// The requested duration of the stream has been recorded.
void Recording::complete(Stream &stream) {
  stream.close();
  stream.is_complete = true;
  if (first_over_ == 0) first_over_ = now();
}

// Frames that are waiting for other streams are recorded without them.
void Recording::end_session() {
  Scope_Exit_Guard end_files;
  arm(end_files, [this] { forget_session(); });
  is_session_ending_ = true;
  route_all();
}

void Recording::forget_session() noexcept {
  is_session_ending_ = false;
  tally_.interrupt();
  streams_.clear();
  files_.end();
  first_arrival_ = last_arrival_ = longest_wait_ = 0;
}

void Recording::finish() {
  Scope_Exit_Guard refuse_frames;
  arm(refuse_frames, [this] { is_finishing_ = true; });
  end_session();
}

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
    return entry.second.file == &file && now() - entry.second.last_arrival < straggler_limit;
  });
}

// A stream that has stopped would keep an old file open.
void Recording::leave_old_files() {
  for (Media_File *const old : files_.old_files()) {
    Media_File &newest = files_.newest();
    if (tally_.end() - newest.start() <= in_ns(straggler_limit) || is_in_use(*old)) continue;
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
  const bool is_late = is_session_ending_ || now() - first_arrival_ > late_limit;
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

void Recording::tick() {
  route_all();
  leave_old_files();
  files_.tick();
  end_stopped_streams();
}

// A muxer waits for all its tracks. End the track of a stream that has stopped, so that the others
// are written. If the stream returns, a new file begins.
void Recording::end_stopped_streams() {
  for (auto &[number, stream] : streams_) {
    if (stream.is_quiet || stream.is_over || stream.last_arrival == 0 ||
        last_arrival_ - std::max(stream.last_arrival, resumed_at_) < stream.longest_silence())
      continue;
    stream.is_quiet = true;
    if (stream.file != nullptr) stream.leave_file();
    display_.line(stream.name + " has stopped; recording the other streams");
  }
}

bool Recording::handle(GstMessage *message) {
  try {
    return files_.handle(message);
  } catch (const Bus_Error &) {
    is_finishing_ = true;
    streams_.clear();
    throw;
  }
}

bool Recording::is_complete() const {
  if (options_.duration == 0 || !has_begun()) return false;
  if (first_over_ != 0 && (all_ended() || now() - first_over_ > last_frames_limit)) return true;
  // No frame need arrive at the end: the camera may have a low frame rate, or be away.
  const gint64 begin = tally_.begin_arrival();
  return now() - std::max(last_arrival_, begin) > last_frame_limit &&
         in_ns(now() - begin) > static_cast<gint64>(options_.duration);
}

bool Recording::all_ended() const {
  return std::all_of(streams_.begin(), streams_.end(), [](const auto &entry) {
    return entry.second.is_over || entry.second.has_ended;
  });
}

bool Recording::waits_for_key_frame() const {
  return files_.is_empty() && first_arrival_ != 0 &&
         now() - std::max(first_arrival_, tally_.last_written()) > key_frame_limit;
}

}  // namespace kel::tavren::programs
