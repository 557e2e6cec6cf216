#include "camera_session.h"

#include <algorithm>
#include <utility>

#include <tavren/capture/media_helper.h>

#include "camera/camera_streams.h"
#include "camera/source_pads.h"

namespace kel::tavren::programs {

using capture::Media_Helper;

namespace {

constexpr gint64 take_over_delay = G_TIME_SPAN_SECOND / 2;
constexpr int branches_kept = 1;  // of those replaced

// rtpmp4adepay sends its first packet unchanged, with the lengths of the frames in front of them.
GstPadProbeReturn drop_unframed(GstPad *pad, GstPadProbeInfo *, gpointer) noexcept {
  const boost::intrusive_ptr<GstCaps> caps(gst_pad_get_current_caps(pad), false);
  gboolean framed = TRUE;
  if (caps) gst_structure_get_boolean(gst_caps_get_structure(caps.get(), 0), "framed", &framed);
  return framed ? GST_PAD_PROBE_REMOVE : GST_PAD_PROBE_DROP;
}

}  // namespace

Camera_Session::Camera_Session(GstElement *pipeline, const Camera_Options &options,
                               Transport transport, const Container &container,
                               Refused_Streams refused)
    : pipeline_(pipeline), container_(container), refused_(std::move(refused)), bin_(pipeline, ""),
      source_(add_camera_source(bin_.element(), options, transport)) {
  //! [connect]
  Media_Helper::g_signal_connect_or_throw(source_, "select-stream", G_CALLBACK(on_select_stream),
                                          this);
  Media_Helper::g_signal_connect_or_throw(source_, "pad-added", G_CALLBACK(on_pad_added), this);
  setup_.observe(source_);
  //! [connect]
}

//! [disconnect]
Camera_Session::~Camera_Session() {
  {
    const std::lock_guard lock(mutex_);
    closing_ = true;
  }
  released_.notify_all();
  expect_no_response(source_);
  // After the bin has stopped, no callback is called any more.
  bin_.stop();
}
//! [disconnect]

std::deque<Camera_Event> Camera_Session::take_events() {
  const std::lock_guard lock(mutex_);
  return std::exchange(events_, {});
}

void Camera_Session::hold_back(bool held) noexcept {
  {
    const std::lock_guard lock(mutex_);
    held_back_ = held;
  }
  released_.notify_all();
}

// Called from any thread.
void Camera_Session::add_event(Camera_Event event) {
  const bool is_urgent = event.kind != Camera_Event::Kind::frame;
  {
    const std::lock_guard lock(mutex_);
    events_.push_back(std::move(event));
  }
  if (is_urgent)
    gst_element_post_message(pipeline_,
                             gst_message_new_application(GST_OBJECT_CAST(pipeline_),
                                                         gst_structure_new_empty(events_message)));
}

//! [guard callbacks]
// Runs a step of a callback. No exception may cross the C code of the framework.
template <typename Step>
void Camera_Session::guarded(Step step) noexcept {
  try {
    step(*this);
  } catch (...) {
    Camera_Event event;
    event.failure = std::current_exception();
    add_event(std::move(event));
  }
}
//! [guard callbacks]

gboolean Camera_Session::on_select_stream(GstElement *, guint number, GstCaps *caps,
                                          gpointer session) noexcept {
  bool is_wanted = false;
  static_cast<Camera_Session *>(session)->guarded(
      [&](Camera_Session &self) { is_wanted = self.select_stream(number, caps); });
  return is_wanted;
}

void Camera_Session::on_pad_added(GstElement *, GstPad *pad, gpointer session) noexcept {
  static_cast<Camera_Session *>(session)->guarded(
      [&](Camera_Session &self) { self.add_branch(pad); });
}

GstFlowReturn Camera_Session::on_sample(GstAppSink *sink, gpointer data) noexcept {
  Branch &branch = *static_cast<Branch *>(data);
  branch.session->guarded([&](Camera_Session &self) {
    Camera_Event event;
    event.kind = Camera_Event::Kind::frame;
    event.sample.reset(gst_app_sink_pull_sample(sink), false);
    if (event.sample) self.deliver(branch, std::move(event));
  });
  return GST_FLOW_OK;
}

void Camera_Session::on_end(GstAppSink *, gpointer data) noexcept {
  Branch &branch = *static_cast<Branch *>(data);
  branch.session->guarded([&](Camera_Session &self) {
    Camera_Event event;
    event.kind = Camera_Event::Kind::ended;
    self.deliver(branch, std::move(event));
  });
}

// Adds an event of a branch unless another branch has replaced it. Waits while the session is held
// back.
void Camera_Session::deliver(Branch &branch, Camera_Event event) {
  bool has_returned = false;
  {
    std::unique_lock lock(mutex_);
    released_.wait(lock, [&] { return !held_back_ || closing_ || !branch.is_current; });
    if (closing_ || branch.is_removed ||
        !(branch.is_current || (has_returned = takes_over(branch))))
      return;
    delivered_at_[branch.number] = g_get_monotonic_time();
  }
  event.number = branch.number;
  if (has_returned) add_restart(branch.number);
  add_event(std::move(event));
}

// A camera may return to an earlier SSRC. There is no new pad for a known SSRC.
bool Camera_Session::takes_over(Branch &branch) {
  if (g_get_monotonic_time() - delivered_at_[branch.number] < take_over_delay) return false;
  for (Branch &other : branches_)
    if (other.number == branch.number) other.is_current = false;
  branch.is_current = true;
  return true;
}

void Camera_Session::add_restart(guint number) {
  Camera_Event event;
  event.kind = Camera_Event::Kind::restarted;
  event.number = number;
  add_event(std::move(event));
}

//! [select streams]
// Selects or skips one of the streams that the camera offers. Runs in the camera's thread.
bool Camera_Session::select_stream(guint number, GstCaps *offered) {
  setup_.note_offer(number);
  Camera_Event event;
  event.kind = Camera_Event::Kind::offered;
  event.number = number;
  event.plan = plan_stream(offered_rtp_caps(offered).get(), container_);
  if (const auto refused = refused_.find(number); refused != refused_.end())
    event.plan.obstacle = refused->second;
  const bool is_recorded = event.plan.is_recorded();
  {
    const std::lock_guard lock(mutex_);
    plans_[number] = event.plan;
  }
  add_event(std::move(event));
  return is_recorded;
}
//! [select streams]

//! [add a stream]
// Builds the branch of a new stream. If the stream has a branch already, its SSRC has changed and
// the new branch replaces the old one. Runs in the camera's thread.
void Camera_Session::add_branch(GstPad *pad) {
  const guint number = stream_number(pad);
  Branch *branch = nullptr;
  Stream_Plan plan;
  bool is_new = true;
  {
    const std::lock_guard lock(mutex_);
    plan = plans_.at(number);
    // GStreamer 1.18 also adds pads for streams that were not selected.
    if (!plan.is_recorded()) return;
    for (Branch &other : branches_) {
      if (other.number != number) continue;
      other.is_current = false;
      is_new = false;
    }
    delivered_at_[number] = g_get_monotonic_time();
    branch = &branches_.emplace_back();
    branch->session = this;
    branch->number = number;
    branch->source = pad;
    auto &clock = clocks_[number];
    if (!clock) clock = std::make_shared<Shared_Stream_Clock>();
    branch->clock = clock;
  }
  released_.notify_all();  // wakes a branch that is no longer current
  if (!is_new) add_restart(number);
  build_branch(*branch, plan);
}
//! [add a stream]

//! [build a branch]
// Links a stream from the camera's pad to its appsink. Starts the elements from the last to the
// first and links the camera's pad last, so no buffer reaches an incomplete branch.
void Camera_Session::build_branch(Branch &branch, const Stream_Plan &plan) {
  GstElement *last = add_frame_sink(branch);
  branch.elements = {last};
  const auto prepend = [&](const std::string &factory) {
    GstElement *const element = bin_.add(factory);
    Media_Helper::gst_element_link_many_or_throw(element, last, nullptr);
    branch.elements.push_back(element);
    last = element;
  };
  if (!plan.timestamper.empty()) {
    prepend(plan.timestamper);
    // The timestamper does not forward the sink's format restriction to the parser.
    prepend("capsfilter");
    g_object_set(last, "caps", container_.formats.get(), nullptr);
  }
  if (!plan.parser.empty()) {
    prepend(plan.parser);
    configure_parser(last);
    Media_Helper::add_probe_to_sink_pad_or_throw(last, GST_PAD_PROBE_TYPE_BUFFER, drop_unframed,
                                                 nullptr, nullptr);
  }
  if (plan.has_access_units) {
    // The camera marks the end of each access unit. A parser that has to find the end without the
    // marker treats parameter sets between two slices, which some cameras send, as the start of the
    // next access unit.
    prepend("capsfilter");
    gst_util_set_object_arg(G_OBJECT(last), "caps",
                            container_.has_times
                                ? "video/x-h264, alignment=au; video/x-h265, alignment=au"
                                : "video/x-h264, stream-format=byte-stream, alignment=au");
  }
  prepend(plan.depayloader);
  add_stream_clock(last, branch.clock);
  for (GstElement *const element : branch.elements)
    Media_Helper::gst_element_sync_state_with_parent_or_throw(element);
  Media_Helper::link_pad_to_element_or_throw(branch.source.get(), last);
  const std::lock_guard lock(mutex_);
  branch.is_built = true;
}
//! [build a branch]

// The AVI muxer cannot store parameter sets outside the stream.
void Camera_Session::configure_parser(GstElement *parser) const {
  if (!container_.has_times &&
      g_object_class_find_property(G_OBJECT_GET_CLASS(parser), "config-interval") != nullptr)
    g_object_set(parser, "config-interval", -1, nullptr);
}

// The sink's caps make the parser choose the format that the container requires.
GstElement *Camera_Session::add_frame_sink(Branch &branch) {
  GstElement *const sink = bin_.add("appsink");
  g_object_set(sink, "caps", container_.formats.get(), "sync", FALSE, "async", FALSE,
               "enable-last-sample", FALSE, nullptr);
  GstAppSinkCallbacks callbacks = {};
  callbacks.new_sample = on_sample;
  callbacks.eos = on_end;
  gst_app_sink_set_callbacks(GST_APP_SINK(sink), &callbacks, &branch, nullptr);
  return sink;
}

// Keeps the newest of the replaced branches: packets of two SSRCs may arrive in turn.
void Camera_Session::remove_old_branches(guint number) {
  std::list<Branch> old;
  {
    const std::lock_guard lock(mutex_);
    int kept = 0;
    for (auto branch = branches_.end(); branch != branches_.begin();) {
      --branch;
      if (branch->number != number || branch->is_current || !branch->is_built ||
          ++kept <= branches_kept)
        continue;
      branch->is_removed = true;  // must not become current and wait while this thread stops it
      const auto removed = branch++;
      old.splice(old.end(), branches_, removed);
    }
  }
  for (const Branch &branch : old) {
    remove_source_pad(branch.source.get());
    if (!branch.elements.empty())
      Media_Helper::unlink_pad_from_element(branch.source.get(), branch.elements.back());
    for (GstElement *const element : branch.elements) {
      gst_element_set_state(element, GST_STATE_NULL);
      gst_bin_remove(GST_BIN(bin_.element()), element);
    }
  }
}

}  // namespace kel::tavren::programs
