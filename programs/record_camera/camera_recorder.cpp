#include "camera_recorder.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <iomanip>
#include <iostream>
#include <list>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

#include <glib/gstdio.h>
#include <tavren/capture/media_helper.h>
#include <unistd.h>

#include "camera/camera_source.h"
#include "camera/camera_streams.h"
#include "command_line/program.h"
#include "pipeline_graph.h"

namespace kel::tavren::programs {

using capture::Media_Helper;
using capture::MediaType;

namespace {

using Element = boost::intrusive_ptr<GstElement>;
using Pad = boost::intrusive_ptr<GstPad>;
using Caps = boost::intrusive_ptr<GstCaps>;

constexpr guint tick_interval = 500;                             // ms
constexpr gint64 start_limit = gint64{10} * G_TIME_SPAN_SECOND;  // for the camera's first stream
constexpr gint64 late_limit = gint64{5} * G_TIME_SPAN_SECOND;    // for its other streams after that
constexpr gint64 silence_limit = gint64{5} * G_TIME_SPAN_SECOND;  // of a camera that was sending
constexpr gint64 patience = gint64{2} * G_TIME_SPAN_SECOND;       // with one who stops it twice
constexpr gint64 finish_limit = gint64{10} * G_TIME_SPAN_SECOND;  // for the file's end

// One of the camera's streams on its way into the file.
struct Stream {
  Pad source;        // the camera's, blocked until the recording begins
  gulong block = 0;  // the probe that blocks it
  std::string depayloader_name;
  MediaType kind = capture::UNKNOWN;  // of what the depayloader will send
  GstElement *depayloader = nullptr;  // borrowed from the pipeline, like the next
  GstElement *queue = nullptr;        // the last element before the muxer
  Pad multiqueue_sink;                // kept for the multiqueue's request
  bool viewed = false;
  GstClockTime first = GST_CLOCK_TIME_NONE;  // time of the first buffer into the file
  std::atomic<GstClockTime> recorded{0};     // what has gone into the file since, in ns
};

// Where the time now stands on the monotonic clock, in us.
gint64 now() {
  return g_get_monotonic_time();
}

//! [kind of a stream]
// The kind of media that a depayloader makes of a stream. Some can make several: the stream's own
// caps tell whether it is video or audio.
MediaType depayloaded_kind(const std::string &depayloader, const GstCaps *rtp_caps) {
  const char *const media = gst_structure_get_string(gst_caps_get_structure(rtp_caps, 0), "media");
  const bool is_video = g_strcmp0(media, "video") == 0;
  const Element element(GST_ELEMENT_CAST(gst_object_ref_sink(
                            Media_Helper::gst_element_factory_make_or_throw(depayloader, ""))),
                        false);
  const Pad pad(Media_Helper::gst_element_get_static_pad_or_throw(element.get(), "src"), false);
  const Caps made(gst_pad_get_pad_template_caps(pad.get()), false);
  for (guint i = 0; i < gst_caps_get_size(made.get()); ++i) {
    const Caps one(gst_caps_copy_nth(made.get(), i), false);
    const MediaType kind = Media_Helper::get_media_type(one.get());
    if (is_video ? Media_Helper::is_video(kind, false) : Media_Helper::is_audio(kind, false))
      return kind;
  }
  return capture::UNKNOWN;
}
//! [kind of a stream]

// The caps of what an element takes in; throws before there are any.
Caps current_sink_caps(GstElement *element) {
  const Pad pad(Media_Helper::gst_element_get_static_pad_or_throw(element, "sink"), false);
  Caps caps(gst_pad_get_current_caps(pad.get()), false);
  if (!caps) throw std::runtime_error("the stream has no caps yet");
  return caps;
}

// The duration of an AAC frame in ns; none for what is not AAC.
GstClockTime aac_frame_duration(const GstCaps *caps) noexcept {
  constexpr guint64 samples_per_frame = 1024;
  const GstStructure *const structure = gst_caps_get_structure(caps, 0);
  int version = 0;
  int rate = 0;
  if (!gst_structure_has_name(structure, "audio/mpeg") ||
      !gst_structure_get(structure, "mpegversion", G_TYPE_INT, &version, "rate", G_TYPE_INT, &rate,
                         nullptr) ||
      version == 1 || rate <= 0)
    return GST_CLOCK_TIME_NONE;
  return gst_util_uint64_scale(samples_per_frame, GST_SECOND, static_cast<guint64>(rate));
}

// Gives an AAC frame its duration: some depayloaders leave it out, and the AVI muxer adds durations
// up. Takes the frame over and returns it, or a copy that can be written to.
GstBuffer *with_duration(GstBuffer *frame, GstPad *pad) noexcept {
  if (GST_BUFFER_DURATION_IS_VALID(frame)) return frame;
  const Caps caps(gst_pad_get_current_caps(pad), false);
  const GstClockTime duration = aac_frame_duration(caps.get());
  if (!GST_CLOCK_TIME_IS_VALID(duration)) return frame;
  frame = gst_buffer_make_writable(frame);
  GST_BUFFER_DURATION(frame) = duration;
  return frame;
}

// Caps that tell a video's frame rate, as its camera announced it; null when it did not.
Caps announced_frame_rate(const GstCaps *rtp_caps) {
  const char *const rate =
      gst_structure_get_string(gst_caps_get_structure(rtp_caps, 0), "a-framerate");
  int numerator = 0;
  int denominator = 1;
  if (rate != nullptr)
    gst_util_double_to_fraction(g_ascii_strtod(rate, nullptr), &numerator, &denominator);
  if (numerator <= 0) return nullptr;
  return Caps(gst_caps_new_simple("video/mpeg", "framerate", GST_TYPE_FRACTION, numerator,
                                  denominator, nullptr),
              false);
}

// The element that adapts a kind's frame rate. The one for H.264 is part of the wider system and
// not of every installation.
std::string video_rate_for(MediaType kind) {
  const std::string name = Media_Helper::select_video_rate(kind);
  const bool installed =
      gst_registry_check_feature_version(gst_registry_get(), name.c_str(), 0, 0, 0) != FALSE;
  return installed ? name : "identity";
}

// Gives an element a ghost "sink" pad that stands for an inner element's, so that it can be linked
// as a whole.
void ghost_sink_pad(GstElement *bin, GstElement *inner) {
  const Pad pad(Media_Helper::gst_element_get_static_pad_or_throw(inner, "sink"), false);
  gst_element_add_pad(bin, gst_ghost_pad_new("sink", pad.get()));
}

// Tells that a file cannot be written while that is still the only thing to tell. Only plain files
// are written: others could hold the recording up.
void check_output(const std::string &file) {
  const std::unique_ptr<char, Emancipator<char>> folder(g_path_get_dirname(file.c_str()));
  const bool exists = g_file_test(file.c_str(), G_FILE_TEST_EXISTS) != FALSE;
  const bool is_plain = g_file_test(file.c_str(), G_FILE_TEST_IS_REGULAR) != FALSE;
  if (exists ? !is_plain || g_access(file.c_str(), W_OK) != 0 : g_access(folder.get(), W_OK) != 0)
    throw Bus_Error(GST_RESOURCE_ERROR_OPEN_WRITE, "cannot write " + file);
}

}  // namespace

class Camera_Recorder::Session {
public:
  //! [prepare]
  explicit Session(const Recording_Options &options)
      : options_(options), muxer_name_(Media_Helper::select_muxer(options.output)),
        loop_(g_main_loop_new(nullptr, FALSE), false),
        pipeline_(GST_ELEMENT_CAST(gst_object_ref_sink(
                      Media_Helper::gst_element_factory_make_or_throw("pipeline", "recorder"))),
                  false) {
    check_output(options.output);
    Camera_Options camera_options;
    camera_options.address = parse_camera_address(options_.uri);
    GstElement *const camera = add_camera_source(pipeline_.get(), camera_options, Transport::tcp);
    Media_Helper::g_signal_connect_or_throw(camera, "select-stream", G_CALLBACK(on_select_stream),
                                            this);
    Media_Helper::g_signal_connect_or_throw(camera, "pad-added", G_CALLBACK(on_pad_added), this);

    const boost::intrusive_ptr<GstBus> bus(
        Media_Helper::gst_element_get_bus_or_throw(pipeline_.get()), false);
    bus_watch_.reset(Media_Helper::gst_bus_create_watch_or_throw(bus.get()), false);
    g_source_set_callback(bus_watch_.get(), G_SOURCE_FUNC(on_message), this, nullptr);
    g_source_attach(bus_watch_.get(), nullptr);
  }
  //! [prepare]

  //! [tear down]
  ~Session() {
    // Once the pipeline has stopped nothing calls back any more.
    gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
    if (bus_watch_) g_source_destroy(bus_watch_.get());
  }
  //! [tear down]

  Session(const Session &) = delete;
  Session &operator=(const Session &) = delete;

  //! [record]
  void record() {
    const guint ticker = g_timeout_add(tick_interval, on_tick, this);
    started_ = now();
    try {
      Media_Helper::gst_element_set_state_or_throw(pipeline_.get(), GST_STATE_PLAYING,
                                                   "connecting to the camera");
      g_main_loop_run(loop_.get());
    } catch (...) {
      fail(std::current_exception());
    }
    g_source_remove(ticker);
    if (file_ != nullptr) print_progress("\n");
    gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
    settle_file();
    if (!graph_.empty())
      guarded([](Session &self) { draw_graph(self.graph_, self.options_.graph); });
  }
  //! [record]

  void stop() noexcept {
    guarded([](Session &self) { self.end_as_asked(); });
  }

  void rethrow_failure() const {
    const std::lock_guard lock(mutex_);
    if (failure_) std::rethrow_exception(failure_);
  }

  Recording_Result result() const { return {recorded(), written_, viewed_pictures_}; }

private:
  enum class Phase { connecting, recording, finishing };

  // What the callbacks, on whatever thread, tell the main context, as names of messages.
  static constexpr const char *failed = "failed";
  static constexpr const char *stream_added = "stream-added";
  static constexpr const char *duration_over = "duration-over";

  GstElement *make(const std::string &factory, const std::string &name) {
    return Media_Helper::create_and_add_element_to_pipeline(factory, pipeline_.get(), name);
  }

  // Callbacks: no exception may leave them.

  static gboolean on_select_stream(GstElement *, guint, GstCaps *caps, gpointer session) noexcept {
    bool is_wanted = false;
    static_cast<Session *>(session)->guarded(
        [&](Session &self) { is_wanted = self.select_stream(caps); });
    return is_wanted;
  }

  static void on_pad_added(GstElement *, GstPad *pad, gpointer session) noexcept {
    static_cast<Session *>(session)->guarded([&](Session &self) { self.add_stream(pad); });
  }

  static GstPadProbeReturn on_blocked(GstPad *, GstPadProbeInfo *, gpointer) noexcept {
    return GST_PAD_PROBE_OK;
  }

  static GstPadProbeReturn on_recorded(GstPad *pad, GstPadProbeInfo *info,
                                       gpointer session) noexcept {
    info->data = with_duration(gst_pad_probe_info_get_buffer(info), pad);
    static_cast<Session *>(session)->note_recorded(pad, gst_pad_probe_info_get_buffer(info));
    return GST_PAD_PROBE_OK;
  }

  static GstPadProbeReturn on_viewed(GstPad *, GstPadProbeInfo *, gpointer session) noexcept {
    ++static_cast<Session *>(session)->viewed_pictures_;
    return GST_PAD_PROBE_OK;
  }

  static gboolean on_message(GstBus *, GstMessage *message, gpointer session) noexcept {
    static_cast<Session *>(session)->guarded([&](Session &self) { self.handle(message); });
    return G_SOURCE_CONTINUE;
  }

  static gboolean on_tick(gpointer session) noexcept {
    static_cast<Session *>(session)->guarded([](Session &self) { self.tick(); });
    return G_SOURCE_CONTINUE;
  }

  //! [guard callbacks]
  template <typename Step>
  void guarded(Step step) noexcept {
    try {
      step(*this);
    } catch (...) {
      fail(std::current_exception());
    }
  }
  //! [guard callbacks]

  // Keeps the first failure and tells the main context. Any thread.
  void fail(std::exception_ptr failure) noexcept {
    {
      const std::lock_guard lock(mutex_);
      if (!failure_) failure_ = std::move(failure);
    }
    post(failed);
  }

  void post(const char *name) noexcept {
    gst_element_post_message(pipeline_.get(),
                             gst_message_new_application(GST_OBJECT_CAST(pipeline_.get()),
                                                         gst_structure_new_empty(name)));
  }

  //! [select streams]
  // Asks for one of the streams that the camera offers, or passes it over. The camera's thread.
  bool select_stream(GstCaps *offered) {
    const Caps caps = offered_rtp_caps(offered);
    const bool is_metadata = Media_Helper::get_media_type(caps.get()) == capture::RTP_METADATA;
    std::cout << "the camera offers " << Media_Helper::get_encoding_name_from_caps(caps.get())
              << (is_metadata ? ": metadata, not recorded" : "") << std::endl;
    if (!is_metadata)
      Media_Helper::select_proxy_elements(caps.get());  // throws for what nothing here can take
    const std::lock_guard lock(mutex_);
    (is_metadata ? passed_over_streams_ : expected_streams_) += 1;
    return !is_metadata;
  }
  //! [select streams]

  //! [take up a stream]
  // Takes up one of the camera's streams and holds it back until all are there. The camera's
  // thread.
  void add_stream(GstPad *pad) {
    const Caps caps(gst_pad_get_current_caps(pad), false);
    const std::string depayloader = Media_Helper::select_proxy_elements(caps.get()).first;
    const MediaType kind = depayloaded_kind(depayloader, caps.get());
    const std::lock_guard lock(mutex_);
    if (phase_ != Phase::connecting) return;  // too late for the file: left unlinked
    Stream &stream = streams_.emplace_back();
    stream.source = pad;
    stream.depayloader_name = depayloader;
    stream.kind = kind;
    stream.block =
        gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BLOCK_DOWNSTREAM, on_blocked, nullptr, nullptr);
    if (first_stream_ == 0) first_stream_ = now();
    post(stream_added);
  }
  //! [take up a stream]

  //! [follow the recording]
  // Follows what goes into the file; a stream's queue is the last stop before the muxer.
  void note_recorded(GstPad *pad, GstBuffer *buffer) noexcept {
    last_recorded_ = now();
    const GstClockTime time = GST_BUFFER_PTS(buffer);
    if (!GST_CLOCK_TIME_IS_VALID(time)) return;
    for (Stream &stream : streams_) {  // nobody adds streams while recording
      if (stream.queue != GST_PAD_PARENT(pad)) continue;
      if (!GST_CLOCK_TIME_IS_VALID(stream.first)) stream.first = time;
      if (time > stream.first) stream.recorded = time - stream.first;
    }
    if (options_.duration != 0 && recorded() >= options_.duration && !duration_over_.exchange(true))
      post(duration_over);
  }
  //! [follow the recording]

  // From here on: the main context.

  void handle(GstMessage *message) {
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_ERROR:
      return handle_error(message);
    case GST_MESSAGE_WARNING:
      last_warning_ = std::make_exception_ptr(Bus_Error(message));
      if (options_.verbose) std::cerr << Bus_Error(message).what() << std::endl;
      return;
    case GST_MESSAGE_EOS:
      return handle_end_of_stream();
    case GST_MESSAGE_APPLICATION:
      return handle_note(gst_structure_get_name(gst_message_get_structure(message)));
    default:
      return;
    }
  }

  void handle_error(GstMessage *message) {
    fail(std::make_exception_ptr(
        offers_metadata_only()
            ? Bus_Error(GST_RESOURCE_ERROR_NOT_FOUND, "the camera offers neither video nor audio")
            : Bus_Error(message)));
    // A file that cannot be written cannot be finished either.
    if (file_ != nullptr && GST_MESSAGE_SRC(message) == GST_OBJECT_CAST(file_))
      g_main_loop_quit(loop_.get());
  }

  bool offers_metadata_only() const {
    const std::lock_guard lock(mutex_);
    return expected_streams_ == 0 && passed_over_streams_ > 0;
  }

  // A camera has no end of its own: when its stream ends unasked, it has gone. What it or the
  // connection warned about last tells why.
  void handle_end_of_stream() {
    if (phase_ != Phase::finishing) {
      fail(last_warning_ ? last_warning_
                         : std::make_exception_ptr(
                               Bus_Error(GST_RESOURCE_ERROR_READ, "the camera went away")));
      phase_ = Phase::finishing;
    }
    g_main_loop_quit(loop_.get());
  }

  void handle_note(const std::string &note) {
    if (note == failed || note == duration_over) return finish();
    if (note == stream_added && phase_ == Phase::connecting && all_streams_there()) begin();
  }

  bool all_streams_there() const {
    const std::lock_guard lock(mutex_);
    return streams_.size() == expected_streams_;
  }

  //! [begin the recording]
  // Builds all that lies behind the camera, and lets the streams go.
  void begin() {
    GstElement *const file = make("filesink", "file");
    g_object_set(file, "location", options_.output.c_str(), "async", FALSE, nullptr);
    gst_util_set_object_arg(G_OBJECT(file), "buffer-mode", "unbuffered");
    GstElement *const muxer = make(muxer_name_, "muxer");
    GstElement *const multiqueue = make("multiqueue", "synchroniser");
    Media_Helper::gst_element_link_many_or_throw(muxer, file, nullptr);

    std::vector<GstElement *> elements = {file, muxer, multiqueue};
    const std::lock_guard lock(mutex_);
    for (Stream &stream : streams_)
      build_recording_branch(stream, multiqueue, muxer, elements);
    start(elements);
    file_ = file;
    phase_ = Phase::recording;
    last_recorded_ = now();
    for (const Stream &stream : streams_)
      gst_pad_remove_probe(stream.source.get(), stream.block);
  }
  //! [begin the recording]

  //! [start the elements]
  // An element that cannot start has told why on the bus, better than anyone else could.
  void start(const std::vector<GstElement *> &elements) {
    try {
      for (GstElement *const element : elements)
        Media_Helper::gst_element_sync_state_with_parent_or_throw(element);
    } catch (const Backend_Error<std::runtime_error> &) {
      const boost::intrusive_ptr<GstBus> bus(
          Media_Helper::gst_element_get_bus_or_throw(pipeline_.get()), false);
      const boost::intrusive_ptr<GstMessage> reason(
          gst_bus_pop_filtered(bus.get(), GST_MESSAGE_ERROR), false);
      if (reason) throw Bus_Error(reason.get());
      throw;
    }
  }
  //! [start the elements]

  //! [lead a stream into the file]
  // Leads a stream into the muxer. Adds what it makes to the elements, those downstream first.
  void build_recording_branch(Stream &stream, GstElement *multiqueue, GstElement *muxer,
                              std::vector<GstElement *> &elements) {
    GstElement *const parser = make(Media_Helper::select_parser(stream.kind), "");
    stream.depayloader = make(stream.depayloader_name, "");
    stream.queue = make("queue", "");
    elements.push_back(stream.queue);

    GstElement *last = parser;
    if (Media_Helper::is_video(stream.kind, false)) {
      GstElement *const tee = make("tee", "");
      last = make(video_rate_for(stream.kind), "");
      elements.insert(elements.end(), {last, tee});
      Media_Helper::gst_element_link_many_or_throw(stream.depayloader, parser, nullptr);
      Media_Helper::gst_element_link_many_or_throw(with_frame_rate(stream, parser, elements), tee,
                                                   nullptr);
      Media_Helper::link_tee_to_element(tee, last);
    } else {
      Media_Helper::gst_element_link_many_or_throw(stream.depayloader, parser, nullptr);
    }
    elements.insert(elements.end(), {parser, stream.depayloader});

    const auto [sink_pad, src_pad] =
        Media_Helper::request_new_multiqueue_pads(multiqueue, "", nullptr);
    stream.multiqueue_sink.reset(sink_pad, false);
    const Pad multiqueue_src(src_pad, false);
    if (!Media_Helper::link_element_to_pad(last, sink_pad))
      throw Bus_Error(GST_RESOURCE_ERROR_FAILED, "cannot lead a stream into the multiqueue");
    Media_Helper::link_pad_to_element_or_throw(src_pad, stream.queue);
    Media_Helper::gst_element_link_many_or_throw(stream.queue, muxer, nullptr);
    Media_Helper::add_probe_to_sink_pad_or_throw(stream.queue, GST_PAD_PROBE_TYPE_BUFFER,
                                                 on_recorded, this, nullptr);
    Media_Helper::link_pad_to_element_or_throw(stream.source.get(), stream.depayloader);
  }
  //! [lead a stream into the file]

  // Lets a viewer join a video stream. One that cannot join does not disturb the recording.
  void show(Stream &stream) {
    stream.viewed = true;
    try {
      join_viewer(stream);
    } catch (const std::exception &error) {
      std::cerr << "the viewer cannot join: " << error.what() << std::endl;
    }
  }

  // MPEG-4 video seldom tells its frame rate, and the AVI muxer wants one: an element behind the
  // parser adds what the camera announced. Returns the last element of the two.
  GstElement *with_frame_rate(const Stream &stream, GstElement *parser,
                              std::vector<GstElement *> &elements) {
    const Caps rtp_caps(gst_pad_get_current_caps(stream.source.get()), false);
    const Caps rate = announced_frame_rate(rtp_caps.get());
    if (stream.kind != capture::MPEG_VIDEO || !rate) return parser;
    GstElement *const setter = make("capssetter", "");
    g_object_set(setter, "caps", rate.get(), nullptr);
    elements.push_back(setter);
    Media_Helper::gst_element_link_many_or_throw(parser, setter, nullptr);
    return setter;
  }

  //! [join a viewer]
  // Hangs a viewer on the tee of a video stream while the recording runs.
  void join_viewer(const Stream &stream) {
    const Caps wanted = current_sink_caps(stream.queue);
    const Element tee(Media_Helper::find_tee_with_caps(GST_BIN(pipeline_.get()), wanted.get()),
                      false);
    if (!tee) throw std::runtime_error("no tee carries the stream");
    Media_Helper::verify_element_top_parent(tee.get(), pipeline_.get());

    GstElement *const viewer = make("bin", "");
    try {
      fill_viewer(viewer, stream.kind);
      Media_Helper::gst_element_sync_state_with_parent_or_throw(viewer);
      Media_Helper::link_tee_to_element(tee.get(), viewer);
    } catch (...) {
      gst_element_set_state(viewer, GST_STATE_NULL);
      gst_bin_remove(GST_BIN(pipeline_.get()), viewer);
      throw;
    }
  }
  //! [join a viewer]

  void fill_viewer(GstElement *viewer, MediaType kind) {
    const auto make_inside = [viewer](const std::string &factory) {
      return Media_Helper::create_and_add_element_to_bin(factory, viewer, "");
    };
    GstElement *const queue = make_inside("queue");
    GstElement *const decoder = make_inside(Media_Helper::select_decoder(kind));
    GstElement *const screen = make_inside("fakesink");
    // A viewer that falls behind loses pictures; it never holds the recording up.
    gst_util_set_object_arg(G_OBJECT(queue), "leaky", "downstream");
    g_object_set(screen, "sync", FALSE, "async", FALSE, nullptr);
    Media_Helper::gst_element_link_many_or_throw(queue, decoder, screen, nullptr);
    Media_Helper::add_probe_to_sink_pad_or_throw(screen, GST_PAD_PROBE_TYPE_BUFFER, on_viewed, this,
                                                 nullptr);
    ghost_sink_pad(viewer, queue);
  }

  void end_as_asked() {
    if (phase_ == Phase::connecting)
      throw Bus_Error(GST_RESOURCE_ERROR_READ, "stopped before the camera had sent anything");
    if (phase_ == Phase::recording) return finish();
    // Asked again: the file is worth a moment, which is nearly always all it takes.
    if (now() - finishing_since_ < patience) return;
    g_main_loop_quit(loop_.get());
    throw Bus_Error(GST_RESOURCE_ERROR_CLOSE, "stopped before the file was finished");
  }

  //! [finish the file]
  // Ends each stream where it comes in, each from a thread of its own: one that is held up must not
  // keep the others from ending.
  void finish() {
    if (phase_ == Phase::connecting) return g_main_loop_quit(loop_.get());
    if (phase_ == Phase::finishing) return;
    take_graph();
    phase_ = Phase::finishing;
    finishing_since_ = now();
    for (const Stream &stream : streams_)
      gst_element_call_async(
          stream.depayloader,
          [](GstElement *depayloader, gpointer) {
            const Pad pad(gst_element_get_static_pad(depayloader, "sink"), false);
            gst_pad_send_event(pad.get(), gst_event_new_eos());
          },
          nullptr, nullptr);
  }
  //! [finish the file]

  void tick() {
    switch (phase_) {
    case Phase::connecting:
      return watch_start();
    case Phase::recording:
      return watch_recording();
    case Phase::finishing:
      if (now() - finishing_since_ > finish_limit) {
        fail(std::make_exception_ptr(
            Bus_Error(GST_RESOURCE_ERROR_CLOSE, "the file could not be finished in time")));
        g_main_loop_quit(loop_.get());
      }
    }
  }

  void watch_start() {
    const gint64 first_stream = first_stream_;
    if (first_stream != 0 && now() - first_stream > late_limit) {
      std::cout << "a stream of the camera does not come; recording without it" << std::endl;
      begin();
    } else if (first_stream == 0 && now() - started_ > start_limit) {
      throw Bus_Error(GST_RESOURCE_ERROR_READ, "the camera does not send anything");
    }
  }

  void watch_recording() {
    if (now() - last_recorded_ > silence_limit)
      throw Bus_Error(GST_RESOURCE_ERROR_READ, "the camera has gone silent");
    print_progress(isatty(STDOUT_FILENO) != 0 ? "\r" : "\n");
    if (options_.verbose)
      for (const Stream &stream : streams_)
        std::cout << Media_Helper::generate_queue_stats_report(stream.queue) << std::endl;
    for (Stream &stream : streams_)
      if (!stream.viewed && stream.recorded > 0 && Media_Helper::is_video(stream.kind, false))
        show(stream);
    if (viewed_pictures_ > 0) take_graph();
  }

  // Takes the picture that was asked for, to be drawn when the recording is over.
  void take_graph() {
    if (!options_.graph.empty() && graph_.empty())
      graph_ = describe_graph(GST_BIN(pipeline_.get()));
  }

  // The longest of the streams in the file, in ns.
  GstClockTime recorded() const noexcept {
    GstClockTime longest = 0;
    for (const Stream &stream : streams_)
      longest = std::max(longest, stream.recorded.load());
    return longest;
  }

  // A file that nothing went into is not left behind.
  void settle_file() {
    if (file_ == nullptr) return;
    written_ = bytes_so_far();
    if (written_ == 0) g_remove(options_.output.c_str());
  }

  guint64 bytes_so_far() const {
    GStatBuf status;
    return g_stat(options_.output.c_str(), &status) == 0 ? static_cast<guint64>(status.st_size) : 0;
  }

  void print_progress(const char *line_end) const {
    const auto seconds = [](GstClockTime time) { return static_cast<double>(time) / GST_SECOND; };
    std::ostringstream line;
    line << std::fixed << std::setprecision(1) << "recording: " << seconds(recorded()) << " s";
    if (options_.duration != 0)
      line << " of " << seconds(options_.duration) << " s, "
           << std::min<GstClockTime>(100, 100 * recorded() / options_.duration) << " %";
    std::cout << line.str() << ", " << bytes_so_far() << " bytes" << line_end << std::flush;
  }

  Recording_Options options_;
  std::string muxer_name_;
  boost::intrusive_ptr<GMainLoop> loop_;
  Element pipeline_;
  boost::intrusive_ptr<GSource> bus_watch_;

  std::atomic<Phase> phase_{Phase::connecting};
  gint64 started_ = 0;
  gint64 finishing_since_ = 0;
  GstElement *file_ = nullptr;  // borrowed from the pipeline
  guint64 written_ = 0;
  std::exception_ptr last_warning_;
  std::string graph_;  // of the running pipeline; empty until it has been taken

  // Guards the failure, and until the recording begins the streams and the step into that phase.
  mutable std::mutex mutex_;
  std::list<Stream> streams_;
  unsigned int expected_streams_ = 0;
  unsigned int passed_over_streams_ = 0;
  std::exception_ptr failure_;
  std::atomic<gint64> first_stream_{0};
  std::atomic<gint64> last_recorded_{0};
  std::atomic<bool> duration_over_{false};
  std::atomic<unsigned int> viewed_pictures_{0};
};

Camera_Recorder::Camera_Recorder(const Recording_Options &options)
    : session_(std::make_unique<Session>(options)) {}

Camera_Recorder::~Camera_Recorder() = default;

void Camera_Recorder::record() {
  session_->record();
}

void Camera_Recorder::stop() noexcept {
  session_->stop();
}

void Camera_Recorder::rethrow_failure() const {
  session_->rethrow_failure();
}

Recording_Result Camera_Recorder::result() const {
  return session_->result();
}

}  // namespace kel::tavren::programs
