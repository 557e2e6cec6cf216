#include "camera_recorder.h"

#include <algorithm>

#include <tavren/capture/media_helper.h>

#include "command_line/program.h"
#include "command_line/time_text.h"
#include "main_loop/timer.h"
#include "pipeline_graph.h"

namespace kel::tavren::programs {

using capture::Media_Helper;

namespace {

constexpr guint tick_interval = 100;  // ms
constexpr guint view_interval = 20;   // ms, so that the pictures move smoothly
constexpr gint64 seconds = G_TIME_SPAN_SECOND;
constexpr gint64 graph_delay = 1 * seconds;  // after the start of a recording
constexpr gint64 progress_interval = seconds / 4;
constexpr gint64 queue_interval = 2 * seconds;
constexpr gint64 status_interval = 1 * seconds;
constexpr gint64 patience = 2 * seconds;  // before a second request to stop takes effect

gint64 now() {
  return g_get_monotonic_time();
}

}  // namespace

//! [prepare]
Camera_Recorder::Camera_Recorder(const Recorder_Options &options, GMainContext *context,
                                 Recorder_Log &log)
    : options_(options), log_(log), loop_(g_main_loop_new(context, FALSE), false),
      pipeline_(GST_ELEMENT_CAST(gst_object_ref_sink(
                    Media_Helper::gst_element_factory_make_or_throw("pipeline", "recorder"))),
                false),
      recording_(pipeline_.get(), options.recording, log_),
      connection_(pipeline_.get(), options.camera, options.retry, recording_, log_,
                  {[this](const std::exception_ptr &failure) { examine(failure); },
                   [this](guint number, const Stream_Plan &plan, GstSample *sample) {
                     note_frame();
                     show(number, plan, sample);
                   }}),
      may_view_(options.view) {
  const boost::intrusive_ptr<GstBus> bus(
      Media_Helper::gst_element_get_bus_or_throw(pipeline_.get()), false);
  bus_watch_.reset(Media_Helper::gst_bus_create_watch_or_throw(bus.get()), false);
  g_source_set_callback(bus_watch_.get(), G_SOURCE_FUNC(on_message), this, nullptr);
  g_source_attach(bus_watch_.get(), context);
}
//! [prepare]

Camera_Recorder::~Camera_Recorder() {
  g_source_destroy(bus_watch_.get());
}

//! [record]
void Camera_Recorder::record() {
  const Timer ticker(g_main_loop_get_context(loop_.get()),
                     options_.view ? view_interval : tick_interval, Timer::Kind::repeated,
                     [this] { guarded([](Camera_Recorder &self) { self.tick(); }); });
  guarded([](Camera_Recorder &self) {
    Media_Helper::gst_element_set_state_or_throw(self.pipeline_.get(), GST_STATE_PLAYING,
                                                 "starting to record");
    self.connection_.connect();
  });
  if (!is_finishing_ || !recording_.files().is_empty()) g_main_loop_run(loop_.get());
  connection_.close();
  gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
  report();
  if (!graph_.empty())
    guarded([](Camera_Recorder &self) { draw_graph(self.graph_, self.options_.graph); });
  if (failure_) std::rethrow_exception(failure_);
}
//! [record]

void Camera_Recorder::report() {
  if (viewer_) log_.line("the viewer showed " + std::to_string(viewer_->pictures()) + " pictures");
  if (!recording_.has_begun()) return;
  log_.line("recorded " + Media_Helper::gst_time_to_string(recording_.tally().recorded()) + ": " +
            recording_.tally().summary());
  const GstClockTime asked_for = options_.recording.duration;
  if (ends_at_duration_ && recording_.tally().recorded() + GST_SECOND < asked_for)
    log_.line("the camera sent nothing for the last " +
              in_seconds(asked_for - recording_.tally().recorded()));
}

template <typename Step>
void Camera_Recorder::guarded(Step step) noexcept {
  try {
    step(*this);
  } catch (...) {
    fail(std::current_exception());
  }
}

gboolean Camera_Recorder::on_message(GstBus *, GstMessage *message, gpointer recorder) noexcept {
  static_cast<Camera_Recorder *>(recorder)->guarded(
      [&](Camera_Recorder &self) { self.handle(message); });
  return G_SOURCE_CONTINUE;
}

//! [handle messages]
void Camera_Recorder::handle(GstMessage *message) {
  if (options_.diagnoses) bus_history_.add(message);
  const bool is_error = GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR;
  if (options_.verbose && GST_MESSAGE_TYPE(message) == GST_MESSAGE_WARNING)
    log_.line(std::string("warning: ") + Bus_Error(message).what());
  if (viewer_ && viewer_->owns(message)) {
    if (is_error) handle_viewer_error(Bus_Error(message).what());
  } else if (!recording_.handle(message) && !is_finishing_) {
    connection_.handle(message);
  }
  if (is_finishing_ && recording_.files().is_empty()) g_main_loop_quit(loop_.get());
  if (!is_finishing_ && recording_.is_complete()) finish_at_duration();
}
//! [handle messages]

// The recording continues without the viewer.
void Camera_Recorder::handle_viewer_error(const std::string &text) {
  log_.line("the viewer has failed, recording without it: " + text);
  viewer_.reset();
  may_view_ = false;
}

void Camera_Recorder::tick() {
  if (now() - status_published_ >= status_interval) publish_status();
  recording_.tick();
  if (is_finishing_) {
    if (recording_.files().is_empty()) g_main_loop_quit(loop_.get());
    return;
  }
  connection_.tick();
  if (recording_.is_complete()) return finish_at_duration();
  if (!recording_.has_begun()) return;
  show_progress();
  if (graph_due_ == 0) graph_due_ = now() + graph_delay;
  if (graph_.empty() && now() > graph_due_) take_graph();
}

void Camera_Recorder::stop() noexcept {
  guarded([](Camera_Recorder &self) { self.end_as_asked(); });
}

void Camera_Recorder::end_as_asked() {
  if (!is_finishing_) {
    finish();
    if (!recording_.has_begun())
      throw Bus_Error(GST_RESOURCE_ERROR_READ, "stopped before the camera had sent anything");
    return;
  }
  // The user stopped the program again. Finishing a file is worth a short wait, which nearly always
  // suffices.
  if (now() - finishing_since_ < patience) return;
  g_main_loop_quit(loop_.get());
  throw Bus_Error(GST_RESOURCE_ERROR_CLOSE, "stopped before the file was finished");
}

void Camera_Recorder::finish_at_duration() {
  ends_at_duration_ = true;
  finish();
}

void Camera_Recorder::finish() {
  if (is_finishing_) return;
  if (graph_.empty() && recording_.has_begun()) take_graph();
  is_finishing_ = true;
  finishing_since_ = now();
  connection_.show_open_gap();
  recording_.finish();
  connection_.close();
  if (recording_.files().is_empty()) g_main_loop_quit(loop_.get());
}

// Keeps the first failure and ends the recording.
void Camera_Recorder::fail(std::exception_ptr failure) noexcept {
  if (!failure_) failure_ = std::move(failure);
  try {
    if (!graph_is_of_failure_) examine(failure_);
    finish();
  } catch (...) {  // the first failure is the one to report
    connection_.close();
    if (recording_.files().is_empty()) g_main_loop_quit(loop_.get());
  }
}

void Camera_Recorder::take_graph() {
  if (!options_.graph.empty()) graph_ = describe_graph(GST_BIN(pipeline_.get()));
}

// Keep the state of the pipeline at the last failure: afterwards, the elements of the session are
// destroyed.
void Camera_Recorder::examine(const std::exception_ptr &failure) {
  take_graph();
  graph_is_of_failure_ = true;
  if (!options_.diagnoses) return;
  try {
    const std::string folder = options_.diagnoses->write(
        options_.name, diagnose(GST_BIN(pipeline_.get()), failure, bus_history_),
        options_.camera.address);
    log_.line("wrote a diagnosis to " + folder);
  } catch (const std::exception &error) {  // the failure itself is the one to report
    log_.line(std::string("cannot write a diagnosis: ") + error.what());
  }
}

// The camera is back: draw the pipeline in its current state.
void Camera_Recorder::note_frame() {
  if (!graph_is_of_failure_) return;
  graph_is_of_failure_ = false;
  graph_.clear();
}

void Camera_Recorder::show(guint number, const Stream_Plan &plan, GstSample *sample) {
  if (!may_view_ || !plan.is_video() || (viewer_ && number != viewed_stream_)) return;
  viewed_stream_ = number;
  try {
    if (!viewer_) viewer_ = std::make_unique<Viewer>(pipeline_.get(), plan.kind, sample);
    viewer_->show(sample);
  } catch (const std::exception &error) {
    handle_viewer_error(error.what());
  }
}

Recorder_Status Camera_Recorder::status() const {
  const std::lock_guard lock(status_mutex_);
  return status_;
}

void Camera_Recorder::publish_status() {
  status_published_ = now();
  Recorder_Status status;
  status.state = is_finishing_            ? Recorder_State::finishing
                 : connection_.absence()  ? Recorder_State::away
                 : recording_.has_begun() ? Recorder_State::recording
                                          : Recorder_State::connecting;
  status.failure = connection_.absence();
  status.file = recording_.files().current();
  status.bytes = recording_.files().bytes();
  status.frames = recording_.tally().frames();
  status.recorded = recording_.tally().recorded();
  status.gaps = connection_.gaps();
  status.last_gap = connection_.last_gap();
  status.queues = recording_.files().queue_levels();
  const std::lock_guard lock(status_mutex_);
  status.since = status.state == status_.state ? status_.since : g_get_real_time();
  status_ = std::move(status);
}

void Camera_Recorder::show_progress() {
  if (now() - progress_shown_ < progress_interval) return;
  progress_shown_ = now();
  std::string line = "recording: " + in_seconds(recording_.tally().recorded());
  if (const GstClockTime duration = options_.recording.duration; duration != 0)
    line += " of " + in_seconds(duration) + ", " +
            std::to_string(
                std::min<GstClockTime>(100, 100 * recording_.tally().recorded() / duration)) +
            " %";
  log_.progress(line + ", " + std::to_string(recording_.files().bytes()) + " bytes");
  if (!options_.verbose || now() - queues_shown_ < queue_interval) return;
  queues_shown_ = now();
  for (const std::string &queue : recording_.files().queue_reports())
    log_.line(queue);
}

}  // namespace kel::tavren::programs
