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
constexpr gint64 key_frame_limit = 30 * seconds;   // for the first key frame
constexpr gint64 pause = 1 * seconds;              // of all streams
constexpr gint64 last_frames_limit = 1 * seconds;  // for the other streams after one is complete
constexpr gint64 last_frame_limit = 4 * seconds;   // for another frame after the duration
constexpr gint64 longest_waiting = gint64{60} * GST_SECOND;  // of frames that wait for a file

gint64 now() {
  return g_get_monotonic_time();
}

gint64 in_ns(gint64 us) {
  return us * 1000;
}

}  // namespace

Recording::Recording(GstElement *pipeline, const Recording_Options &options, Recorder_Log &log)
    : options_(options), container_(choose_container(options.output)), log_(log),
      files_(pipeline, container_,
             Recording_Files(options.output, options.overwrite, options.segment != 0),
             options.keep_free, log) {}

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
  if (stream.is_quiet) log_.line(stream.name + " sends data again");
  stream.is_quiet = false;
}

// The exact caps of a stream are known only while it is running.
bool Recording::accepts(const Stream &stream) const {
  const Caps caps = complete_caps(container_, stream.caps, stream.times.interval());
  return gst_caps_can_intersect(caps.get(), container_.accepted.get()) != FALSE;
}

void Recording::refuse(Stream &stream) {
  const std::unique_ptr<char, Emancipator<char>> caps(gst_caps_to_string(stream.caps.get()));
  log_.line(stream.name + " is not recorded: " + container_.name() + " does not hold " +
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

void Recording::tick() {
  route_all();
  flush();
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
    log_.line(stream.name + " has stopped; recording the other streams");
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
