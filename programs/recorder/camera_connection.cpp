#include "camera_connection.h"

#include <algorithm>
#include <utility>

#include "camera/connection_failure.h"
#include "command_line/program.h"
#include "command_line/time_text.h"

namespace kel::tavren::programs {

namespace {

constexpr gint64 seconds = G_TIME_SPAN_SECOND;
constexpr gint64 start_limit = 10 * seconds;            // until the camera's first frame
constexpr guint64 congestion = guint64{64} << 20U;      // in bytes that are waiting to be written
constexpr gint64 encrypted_start_limit = 20 * seconds;  // to load the certificate authorities
constexpr gint64 silence_limit = 10 * seconds;          // of a camera that was sending

gint64 now() {
  return g_get_monotonic_time();
}

std::string offer_line(const Stream_Plan &plan) {
  const std::string line = "the camera offers " + plan.encoding;
  if (plan.is_recorded()) return line + " (" + plan.media + ')';
  if (plan.is_metadata) return line + ": metadata, not recorded";
  return line + ": " + plan.media + ", not recorded, error " + plan.obstacle;
}

std::exception_ptr read_error(const std::string &text) {
  return std::make_exception_ptr(Bus_Error(GST_RESOURCE_ERROR_READ, text));
}

}  // namespace

Camera_Connection::Camera_Connection(GstElement *pipeline, const Camera_Options &options,
                                     gint64 retry, Recording &recording, Recorder_Log &log,
                                     Hooks hooks)
    : pipeline_(pipeline), options_(options), recording_(recording), log_(log),
      hooks_(std::move(hooks)), transports_(transports_to_try(options.transport)), retries_(retry) {
}

void Camera_Connection::connect() {
  reconnect_at_ = 0;
  connected_at_ = now();
  has_received_ = false;
  last_warning_ = nullptr;
  plans_.clear();
  session_ = std::make_unique<Camera_Session>(pipeline_, options_, transports_.front(),
                                              recording_.container(), refused_);
  try {
    session_->start();
  } catch (const Bus_Error &) {
    end_session(std::current_exception());
  }
}

bool Camera_Connection::handle(GstMessage *message) {
  if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_APPLICATION) {
    handle_events();
    return true;
  }
  if (!session_ || !session_->owns(message)) return false;
  if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_WARNING) {
    last_warning_ = std::make_exception_ptr(Bus_Error(message));
  } else if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
    handle_events();  // events before the error
    if (session_) end_session(std::make_exception_ptr(Bus_Error(message)));
  }
  return true;
}

void Camera_Connection::handle_events() {
  if (!session_) return;
  for (const Camera_Event &event : session_->take_events()) {
    handle(event);
    if (!session_) return;
  }
  recording_.flush();
  const bool is_congested = recording_.files().waiting_bytes() > congestion;
  if (is_congested) held_back_at_ = now();
  session_->hold_back(is_congested);
}

void Camera_Connection::handle(const Camera_Event &event) {
  switch (event.kind) {
  case Camera_Event::Kind::offered:
    return offer(event);
  case Camera_Event::Kind::frame:
    return accept_frame(event);
  case Camera_Event::Kind::restarted:
    session_->remove_old_branches(event.number);
    return recording_.restart_stream(event.number);
  case Camera_Event::Kind::ended:
    return end_stream(event.number);
  case Camera_Event::Kind::failed:
    return end_session(event.failure);
  }
}

// Prints each stream once, even if the program connects to the camera several times.
void Camera_Connection::offer(const Camera_Event &event) {
  const Stream_Plan &plan = plans_[event.number] = event.plan;
  if (plan.is_recorded()) recording_.add_stream(event.number, plan.name(), plan.is_video());
  if (const std::string line = offer_line(plan); std::exchange(shown_[event.number], line) != line)
    log_.line(line);
}

void Camera_Connection::accept_frame(const Camera_Event &event) {
  if (!has_received_) {
    has_received_ = true;
    has_ever_received_ = true;
    transports_.resize(1);
    retries_.reset();
    if (!recording_.has_begun()) absence_ = nullptr;
  }
  recording_.add_frame(event.number, event.sample.get());
  if (const auto gap = recording_.tally().take_gap()) show_gap(*gap);
  hooks_.frame_arrives(event.number, plans_[event.number], event.sample.get());
  if (recording_.all_ended() && !recording_.is_complete())
    end_session(read_error("nothing that the camera sends can be recorded"));
}

void Camera_Connection::end_stream(guint number) {
  recording_.end_stream(number);
  if (!recording_.all_ended() || recording_.is_complete()) return;
  end_session(last_warning_ ? last_warning_ : read_error("the camera went away"));
}

// Tries again without the stream that the camera refuses or with the next transport, or schedules a
// retry. Throws the failure if none of these can help.
void Camera_Connection::end_session(const std::exception_ptr &failure) {
  if (!has_received_ && session_->add_refused(refused_)) {
    session_.reset();
    recording_.end_session();
    reconnect_at_ = now();
    return;
  }
  refused_.clear();
  const bool next_transport = can_try_next_transport(failure);
  const std::exception_ptr reason = next_transport ? failure : explain(failure);
  if (!next_transport) hooks_.session_fails(reason);
  session_.reset();
  recording_.end_session();
  if (next_transport) {
    transports_.erase(transports_.begin());
    reconnect_at_ = now();
    return;
  }
  const auto retry = is_permanent(reason) ? std::nullopt : retries_.next(now());
  if (!retry) std::rethrow_exception(reason);
  reconnect_at_ = *retry;
  if (!has_ever_received_) transports_ = transports_to_try(options_.transport);
  if (absence_) return;
  absence_ = reason;
  log_.line((recording_.has_begun() ? "lost the camera, trying again: "
                                    : "cannot reach the camera, trying again: ") +
                failure_text(reason),
            reason);
}

// A camera that rejects a transport, or sends nothing over it, may support another one.
bool Camera_Connection::can_try_next_transport(const std::exception_ptr &failure) const {
  return transports_.size() > 1 && !has_received_ && wants_any_stream() && !is_permanent(failure);
}

// The source reports that there are no streams if none of the offered streams is selected.
std::exception_ptr Camera_Connection::explain(const std::exception_ptr &failure) const {
  if (plans_.empty() || wants_any_stream())
    return has_received_ ? failure : with_connection_failure(failure, options_);
  for (const auto &[number, plan] : plans_)
    if (!plan.is_metadata) return std::make_exception_ptr(Nothing_To_Record(plan));
  return std::make_exception_ptr(
      Bus_Error(GST_RESOURCE_ERROR_NOT_FOUND, "the camera offers neither video nor audio"));
}

bool Camera_Connection::wants_any_stream() const {
  return std::any_of(plans_.begin(), plans_.end(),
                     [](const auto &plan) { return plan.second.is_recorded(); });
}

void Camera_Connection::tick() {
  if (reconnect_at_ != 0 && now() >= reconnect_at_) return connect();
  handle_events();
  if (session_) check_session();
}

void Camera_Connection::check_session() {
  if (!has_received_) {
    if (now() - connected_at_ > (options_.is_encrypted() ? encrypted_start_limit : start_limit))
      end_session(read_error("the camera does not send anything"));
    return;
  }
  const gint64 limit = std::max(silence_limit, 3 * recording_.longest_wait());
  if (now() - std::max(recording_.last_arrival(), held_back_at_) > limit)
    end_session(read_error("the camera has gone silent"));
  else if (recording_.waits_for_key_frame())
    end_session(read_error("the camera sends no key frame"));
}

void Camera_Connection::show_open_gap() {
  const auto gap = recording_.tally().open_gap();
  if (gap && absence_) show_gap(*gap);
}

void Camera_Connection::show_gap(const Recording_Tally::Gap &gap) {
  const auto length = static_cast<GstClockTime>((gap.to - gap.from) * GST_USECOND);
  const std::string cause = absence_ ? failure_text(absence_) : "the camera went away";
  log_.line("gap from " + in_utc(gap.from) + " to " + in_utc(gap.to) + " (" + in_seconds(length) +
                "): " + cause,
            absence_);
  last_gap_ = Recorded_Gap{gap.from, gap.to, cause};
  ++gaps_;
  absence_ = nullptr;
}

}  // namespace kel::tavren::programs
