#include "stream_relay.h"

#include <algorithm>
#include <iostream>
#include <utility>

#include "camera/connection_failure.h"
#include "command_line/program.h"
#include "command_line/signal_watch.h"
#include "command_line/time_text.h"
#include "main_loop/timer.h"

namespace kel::tavren::programs {

namespace {

constexpr guint tick_interval = 50;  // ms
constexpr gint64 seconds = G_TIME_SPAN_SECOND;
// a camera may still be ending the session that failed
constexpr gint64 transport_pause = seconds / 5;
constexpr gint64 silence_limit = 10 * seconds;    // until a silent camera counts as absent
constexpr gint64 key_frame_limit = 30 * seconds;  // for the first key frame of a session

gint64 now() noexcept {
  return g_get_monotonic_time();
}

Bus_Error read_error(const std::string &text) {
  return Bus_Error(GST_RESOURCE_ERROR_READ, text);
}

std::string text_of(const std::exception_ptr &failure) {
  try {
    std::rethrow_exception(failure);
  } catch (const std::exception &error) {
    return error.what();
  }
}

// Returns whether connecting to the camera failed.
bool is_unreachable(const std::exception_ptr &failure) {
  try {
    std::rethrow_exception(failure);
  } catch (const Bus_Error &error) {
    return error.is(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_OPEN_READ_WRITE);
  } catch (...) {
    return false;
  }
}

bool can_relay_any(const Relayed_Streams &streams) {
  return std::any_of(streams.begin(), streams.end(),
                     [](const auto &stream) { return stream->description().relayed(); });
}

Bus_Error nothing_to_relay() {
  return {GST_RESOURCE_ERROR_NOT_FOUND, "none of the camera's streams can be relayed"};
}

Relayed_Streams started(const Relayed_Streams &streams) {
  Relayed_Streams started;
  std::copy_if(streams.begin(), streams.end(), std::back_inserter(started),
               [](const auto &stream) { return stream->started(); });
  return started;
}

// Returns the time of the last arrival, or 0 if nothing has arrived.
gint64 last_arrival(const Relayed_Streams &streams) {
  gint64 last = 0;
  for (const auto &stream : streams)
    last = std::max(last, stream->last_arrival());
  return last;
}

std::vector<Camera_Stream> descriptions(const Relayed_Streams &streams) {
  std::vector<Camera_Stream> descriptions;
  for (const auto &stream : streams) {
    Camera_Stream &description = descriptions.emplace_back(stream->description());
    if (!description.relayed() || stream->started()) continue;
    description.depayloader.clear();
    description.obstacle = "the camera does not send it";
  }
  return descriptions;
}

}  // namespace

Stream_Relay::Stream_Relay(const Relay_Options &options, On_Serving on_serving)
    : options_(options), on_serving_(std::move(on_serving)),
      loop_(g_main_loop_new(nullptr, FALSE), false), server_(nullptr, options.port),
      retries_(options.retry * seconds), transports_(transports_to_try(options.camera.transport)) {}

void Stream_Relay::run() {
  const Signal_Watch signals({SIGINT, SIGTERM, SIGHUP}, [this] { g_main_loop_quit(loop_.get()); });
  const Timer ticks(nullptr, tick_interval, Timer::Kind::repeated, [this] { on_tick(); });
  g_main_loop_run(loop_.get());
  if (failure_) std::rethrow_exception(failure_);
}

void Stream_Relay::on_tick() noexcept {
  try {
    tick();
  } catch (...) {
    failure_ = std::current_exception();
    g_main_loop_quit(loop_.get());
  }
}

void Stream_Relay::tick() {
  if (end_at_ != 0 && now() >= end_at_) return g_main_loop_quit(loop_.get());
  if (media_) media_->check();
  if (!feed_) {
    if (now() >= reconnect_at_) connect();
    return;
  }
  try {
    check_feed();
  } catch (...) {
    return lose_camera(std::current_exception());
  }
  if (is_ready() && feed_->streams() != streams_) serve();
}

void Stream_Relay::connect() {
  connected_at_ = now();
  has_received_ = false;
  feed_ = std::make_unique<Camera_Feed>(options_.camera, transports_.front(), time_, streams_,
                                        refused_);
}

// Throws the error that ended the session with the camera, if any.
void Stream_Relay::check_feed() {
  feed_->check();
  const Relayed_Streams streams = feed_->streams();
  // GStreamer 1.18 stays connected to a camera even if none of its streams is selected.
  if (feed_->is_open() && !can_relay_any(streams)) throw nothing_to_relay();
  const gint64 arrival = last_arrival(streams);
  if (!has_received_ && arrival >= connected_at_) note_return();
  if (now() - std::max(arrival, connected_at_) > silence_limit)
    throw read_error(has_received_ ? "the camera has gone silent"
                                   : "the camera does not send anything");
  if (started(streams).empty() && now() - connected_at_ > key_frame_limit)
    throw read_error("the camera sends no key frame");
}

// Handles the first frame of a session.
void Stream_Relay::note_return() {
  has_received_ = true;
  transports_.resize(1);
  retries_.reset();
  const auto absence = std::exchange(absence_, std::nullopt);
  if (absence && media_) show_gap(*absence);
}

void Stream_Relay::show_gap(const Absence &absence) {
  const gint64 end = g_get_real_time();
  const auto length = static_cast<GstClockTime>((end - absence.since) * GST_USECOND);
  std::cout << "gap from " << in_utc(absence.since) << " to " << in_utc(end) << " ("
            << in_seconds(length) << "): " << absence.reason << std::endl;
}

// Tries again without the stream that the camera refuses or with the next transport, or schedules a
// retry. Throws the failure if none of these can help.
void Stream_Relay::lose_camera(const std::exception_ptr &failure) {
  const Relayed_Streams streams = feed_->streams();
  const bool is_refused = !has_received_ && feed_->add_refused(refused_);
  feed_.reset();
  if (is_refused) {
    reconnect_at_ = now() + transport_pause;
    return;
  }
  refused_.clear();
  if (!streams.empty() && !can_relay_any(streams)) throw nothing_to_relay();
  if (transports_.size() > 1 && !has_received_ && !is_permanent(failure) &&
      !is_unreachable(failure)) {
    transports_.erase(transports_.begin());
    reconnect_at_ = now() + transport_pause;
    return;
  }
  retry_later(has_received_ ? failure : with_connection_failure(failure, options_.camera));
}

void Stream_Relay::retry_later(const std::exception_ptr &failure) {
  const auto retry = is_permanent(failure) ? std::nullopt : retries_.next(now());
  if (!retry) std::rethrow_exception(failure);
  reconnect_at_ = *retry;
  // A camera that has never sent anything may support the first transport later.
  if (!media_) transports_ = transports_to_try(options_.camera.transport);
  if (absence_) return;
  const gint64 silence = now() - last_arrival(streams_);
  absence_ = Absence{text_of(failure), g_get_real_time() - silence};
  if (media_)
    std::cout << "lost the camera, trying again: " << absence_->reason << std::endl;
  else
    std::cerr << "cannot reach the camera, trying again: " << absence_->reason << std::endl;
}

// Returns whether there is something to serve to viewers. Waits for a stream that does not start,
// but only for a limited time.
bool Stream_Relay::is_ready() const {
  if (!feed_->is_open()) return false;
  const Relayed_Streams streams = feed_->streams();
  const bool all_started = std::all_of(streams.begin(), streams.end(), [](const auto &stream) {
    return stream->started() || !stream->description().relayed();
  });
  return all_started || (!started(streams).empty() && now() - connected_at_ > silence_limit);
}

void Stream_Relay::serve() {
  media_.reset();
  streams_ = feed_->streams();
  media_ = std::make_unique<Relay_Media>(server_, started(streams_), time_);
  if (end_at_ == 0 && options_.duration > 0) end_at_ = now() + options_.duration * seconds;
  on_serving_(server_.uri("/relay"), descriptions(streams_));
}

}  // namespace kel::tavren::programs
