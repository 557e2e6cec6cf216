#include "camera_feed.h"

#include <algorithm>
#include <string>
#include <utility>

#include <tavren/capture/media_helper.h>

#include "camera/source_pads.h"
#include "camera/stream_clock.h"
#include "command_line/program.h"

namespace kel::tavren::programs {

using capture::Media_Helper;

namespace {

using Pad = boost::intrusive_ptr<GstPad>;
using Sample = boost::intrusive_ptr<GstSample>;
using Shared_Stream = std::shared_ptr<Relayed_Stream>;

// How long a stream is silent before the camera may have returned to an earlier SSRC.
constexpr gint64 return_delay = G_TIME_SPAN_SECOND / 2;

// Parsers between depayloader and payloader, for formats that the payloader does not handle alone:
//
// h264parse        repeats the parameter sets before each key frame. The payloader would repeat
//                  them before each slice, which splits the frame.
// mpegvideoparse   marks the key frames.
// mpeg4videoparse  as mpegvideoparse.
// h265parse        as h264parse.
// vp9parse         as mpegvideoparse.
// aacparse         timestamps all frames of a packet. The depayloader timestamps only the first.
// ac3parse         names the media as the payloader expects. It links to the depayloader only if
//                  the sink accepts both names.
struct Parser {
  const char *depayloader;
  const char *factory;
  const char *caps;  // caps that the parser must produce
};

constexpr Parser parsers[] = {
    {"rtph264depay", "h264parse", "video/x-h264, stream-format=byte-stream, alignment=au"},
    {"rtph265depay", "h265parse", "video/x-h265, stream-format=byte-stream, alignment=au"},
    {"rtpmpvdepay", "mpegvideoparse", "video/mpeg, systemstream=false, parsed=true"},
    {"rtpmp4vdepay", "mpeg4videoparse", "video/mpeg, mpegversion=4, parsed=true"},
    {"rtpvp9depay", "vp9parse", "video/x-vp9, parsed=true"},
    {"rtpmp4gdepay", "aacparse", "audio/mpeg, framed=true"},
    {"rtpac3depay", "ac3parse", "audio/x-ac3; audio/ac3"},
};

const Parser *find_parser(const std::string &depayloader) {
  const auto *const found =
      std::find_if(std::begin(parsers), std::end(parsers),
                   [&](const Parser &parser) { return depayloader == parser.depayloader; });
  return found != std::end(parsers) ? found : nullptr;
}

bool is_same_field(const Camera_Stream &a, const Camera_Stream &b, const char *field) {
  const GValue *const first =
      gst_structure_get_value(gst_caps_get_structure(a.caps.get(), 0), field);
  const GValue *const second =
      gst_structure_get_value(gst_caps_get_structure(b.caps.get(), 0), field);
  if (first == nullptr || second == nullptr) return first == second;
  return gst_value_compare(first, second) == GST_VALUE_EQUAL;
}

// Returns whether viewers of one stream can continue with the other. H.264 parameter sets may
// differ, because they are part of the stream. A stream that the camera refuses is not relayed.
bool is_same_stream(const Camera_Stream &a, const Camera_Stream &b) {
  const char *const fields[] = {"media",   "encoding-name",   "clock-rate",
                                "payload", "encoding-params", "config"};
  return a.number == b.number && a.depayloader == b.depayloader &&
         std::all_of(std::begin(fields), std::end(fields),
                     [&](const char *field) { return is_same_field(a, b, field); });
}

bool reports_open(GstMessage *message) {
  GstProgressType type = GST_PROGRESS_TYPE_START;
  gchar *code = nullptr;
  gst_message_parse_progress(message, &type, &code, nullptr);
  const std::unique_ptr<char, Emancipator<char>> owned(code);
  return type == GST_PROGRESS_TYPE_COMPLETE && g_str_equal(code, "open");
}

std::string branch_name(guint number) {
  return "depayloader_" + std::to_string(number);
}

void drop_stream(gpointer stream) noexcept {
  delete static_cast<Shared_Stream *>(stream);
}

Relayed_Streams::const_iterator find_stream(const Relayed_Streams &streams, guint number) {
  return std::find_if(streams.begin(), streams.end(), [number](const Shared_Stream &stream) {
    return stream->description().number == number;
  });
}

boost::intrusive_ptr<GstElement> make_pipeline() {
  return {GST_ELEMENT_CAST(gst_object_ref_sink(gst_pipeline_new("feed"))), false};
}

}  // namespace

Camera_Feed::Camera_Feed(const Camera_Options &camera, Transport transport,
                         const Running_Time &time, Relayed_Streams known, Refused_Streams refused)
    : known_(std::move(known)), refused_(std::move(refused)), pipeline_(make_pipeline()),
      source_(add_camera_source(pipeline_.get(), camera, transport)),
      bus_(Media_Helper::gst_element_get_bus_or_throw(pipeline_.get()), false) {
  for (const Shared_Stream &stream : known_)
    stream->restart();
  time.set_for(GST_PIPELINE(pipeline_.get()));
  Media_Helper::g_signal_connect_or_throw(source_, "select-stream", G_CALLBACK(on_select_stream),
                                          this);
  Media_Helper::g_signal_connect_or_throw(source_, "pad-added", G_CALLBACK(on_pad_added), this);
  setup_.observe(source_);
  // If this fails, the source has posted the reason on the bus, where check() finds it.
  gst_element_set_state(pipeline_.get(), GST_STATE_PLAYING);
}

// After the pipeline has stopped, no callback is called any more.
Camera_Feed::~Camera_Feed() {
  expect_no_response(source_);
  gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
}

void Camera_Feed::check() {
  {
    const std::lock_guard lock(mutex_);
    if (failure_) std::rethrow_exception(failure_);
  }
  while (const boost::intrusive_ptr<GstMessage> message{gst_bus_pop(bus_.get()), false})
    handle(message.get());
  remove_replaced_pads();
}

// Keeps the newest replaced pad of a stream, because the camera may return to its SSRC: an SSRC
// must not be removed while packets with it arrive. If the camera returns to the SSRC of a removed
// pad, the source adds a new pad.
void Camera_Feed::remove_replaced_pads() {
  std::vector<Pad> old;
  {
    const std::lock_guard lock(mutex_);
    for (auto &entry : replaced_pads_) {
      auto &pads = entry.second;
      while (pads.size() > 1) {
        old.push_back(std::move(pads.front()));
        pads.pop_front();
      }
    }
  }
  for (const Pad &pad : old)
    remove_source_pad(pad.get());
}

// Must be called with the mutex locked.
bool Camera_Feed::is_silent(guint number) const {
  const auto stream = find_stream(streams_, number);
  return stream != streams_.end() &&
         g_get_monotonic_time() - (*stream)->last_arrival() > return_delay;
}

void Camera_Feed::handle(GstMessage *message) {
  switch (GST_MESSAGE_TYPE(message)) {
  case GST_MESSAGE_ERROR:
    throw Bus_Error(message);
  case GST_MESSAGE_EOS:
    throw Bus_Error(GST_RESOURCE_ERROR_READ, "the camera ended its stream");
  case GST_MESSAGE_PROGRESS:
    if (reports_open(message)) is_open_ = true;
    break;
  case GST_MESSAGE_LATENCY:
    gst_bin_recalculate_latency(GST_BIN(pipeline_.get()));
    break;
  default:
    break;
  }
}

Relayed_Streams Camera_Feed::streams() const {
  const std::lock_guard lock(mutex_);
  return streams_;
}

// Runs a step of a callback. No exception may cross the C code of the framework.
template <typename Step>
void Camera_Feed::guarded(Step step) noexcept {
  try {
    step();
  } catch (...) {
    const std::lock_guard lock(mutex_);
    if (!failure_) failure_ = std::current_exception();
  }
}

gboolean Camera_Feed::on_select_stream(GstElement *, guint number, GstCaps *caps,
                                       gpointer data) noexcept {
  auto &feed = *static_cast<Camera_Feed *>(data);
  bool is_relayed = false;
  feed.guarded([&] { is_relayed = feed.select_stream(number, caps); });
  return is_relayed;
}

void Camera_Feed::on_pad_added(GstElement *, GstPad *pad, gpointer data) noexcept {
  auto &feed = *static_cast<Camera_Feed *>(data);
  feed.guarded([&] {
    gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, on_source_packet, data, nullptr);
    feed.link_stream(pad);
  });
}

GstFlowReturn Camera_Feed::on_frame(GstAppSink *sink, gpointer stream) noexcept {
  Sample frame(gst_app_sink_pull_sample(sink), false);
  if (frame) (*static_cast<Shared_Stream *>(stream))->take(std::move(frame));
  return GST_FLOW_OK;
}

// This function and the following ones run in the camera's thread.
bool Camera_Feed::select_stream(guint number, GstCaps *offered) {
  setup_.note_offer(number);
  Camera_Stream description = describe_stream(number, offered);
  if (const auto refused = refused_.find(number); refused != refused_.end()) {
    description.depayloader.clear();
    description.obstacle = refused->second;
  }
  const bool is_relayed = description.relayed();
  Shared_Stream stream = find_known(description);
  if (!stream) stream = std::make_shared<Relayed_Stream>(std::move(description));
  const std::lock_guard lock(mutex_);
  streams_.push_back(std::move(stream));
  return is_relayed;
}

Shared_Stream Camera_Feed::find_known(const Camera_Stream &description) const {
  const auto found = std::find_if(known_.begin(), known_.end(), [&](const Shared_Stream &known) {
    return is_same_stream(known->description(), description);
  });
  return found != known_.end() ? *found : nullptr;
}

// A stream whose SSRC changes gets a new pad, which is linked to the depayloader in place of the
// old one.
void Camera_Feed::link_stream(GstPad *pad) {
  const std::lock_guard linking(linking_);
  const guint number = stream_number(pad);
  boost::intrusive_ptr<GstElement> depayloader(
      gst_bin_get_by_name(GST_BIN(pipeline_.get()), branch_name(number).c_str()), false);
  if (depayloader) {
    const Pad sink(Media_Helper::gst_element_get_static_pad_or_throw(depayloader.get(), "sink"),
                   false);
    if (const Pad old{gst_pad_get_peer(sink.get()), false}) {
      gst_pad_unlink(old.get(), sink.get());
      replace(old.get(), pad);
    }
  } else {
    const Relayed_Streams known = streams();
    const auto stream = find_stream(known, number);
    if (stream == known.end())
      throw Bus_Error(GST_RESOURCE_ERROR_FAILED, "the camera sends a stream that it did not offer");
    // GStreamer 1.18 also adds pads for streams that were not selected.
    if (!(*stream)->description().relayed()) return;
    depayloader = add_branch(*stream);
  }
  Media_Helper::link_pad_to_element_or_throw(pad, depayloader.get());
}

void Camera_Feed::replace(GstPad *old, GstPad *pad) {
  const std::lock_guard lock(mutex_);
  auto &pads = replaced_pads_[stream_number(pad)];
  pads.erase(std::remove(pads.begin(), pads.end(), Pad(pad)), pads.end());
  pads.emplace_back(old);
}

// Drops the packets of a replaced pad: an error would stop the pad's thread for good.
GstPadProbeReturn Camera_Feed::on_source_packet(GstPad *pad, GstPadProbeInfo *,
                                                gpointer data) noexcept {
  if (gst_pad_is_linked(pad)) return GST_PAD_PROBE_OK;
  auto &feed = *static_cast<Camera_Feed *>(data);
  feed.guarded([&] { feed.link_again(pad); });
  return GST_PAD_PROBE_DROP;
}

// Links a replaced pad in place of its successor if the camera has returned to its SSRC. Packets of
// two SSRCs may arrive in turn.
void Camera_Feed::link_again(GstPad *pad) {
  {
    const std::lock_guard lock(mutex_);
    if (!is_silent(stream_number(pad))) return;
  }
  link_stream(pad);
}

GstPadProbeReturn Camera_Feed::on_packet(GstPad *, GstPadProbeInfo *info,
                                         gpointer stream) noexcept {
  if (GstBuffer *const packet = gst_pad_probe_info_get_buffer(info))
    (*static_cast<Shared_Stream *>(stream))->note_packet(gst_buffer_get_size(packet));
  return GST_PAD_PROBE_OK;
}

// Returns the depayloader (transfer none), which is linked to a sink for the stream's frames.
GstElement *Camera_Feed::add_branch(const Shared_Stream &stream) {
  const Camera_Stream &description = stream->description();
  GstElement *const sink = add_sink(stream);
  GstElement *const depayloader = Media_Helper::create_and_add_element_to_pipeline(
      description.depayloader, pipeline_.get(), branch_name(description.number));
  add_stream_clock(depayloader);
  auto context = std::make_unique<Shared_Stream>(stream);
  Media_Helper::add_probe_to_sink_pad_or_throw(depayloader, GST_PAD_PROBE_TYPE_BUFFER, on_packet,
                                               context.get(), drop_stream);
  static_cast<void>(context.release());  // the pad owns it now
  if (const Parser *const parser = find_parser(description.depayloader)) {
    GstElement *const element =
        Media_Helper::create_and_add_element_to_pipeline(parser->factory, pipeline_.get(), "");
    if (g_object_class_find_property(G_OBJECT_GET_CLASS(element), "config-interval") != nullptr)
      g_object_set(element, "config-interval", -1, nullptr);
    const boost::intrusive_ptr<GstCaps> caps(gst_caps_from_string(parser->caps), false);
    g_object_set(sink, "caps", caps.get(), nullptr);
    Media_Helper::gst_element_link_many_or_throw(depayloader, element, sink, nullptr);
    Media_Helper::gst_element_sync_state_with_parent_or_throw(element);
  } else {
    Media_Helper::gst_element_link_many_or_throw(depayloader, sink, nullptr);
  }
  Media_Helper::gst_element_sync_state_with_parent_or_throw(depayloader);
  return depayloader;
}

GstElement *Camera_Feed::add_sink(const Shared_Stream &stream) {
  GstElement *const sink =
      Media_Helper::create_and_add_element_to_pipeline("appsink", pipeline_.get(), "");
  g_object_set(sink, "sync", FALSE, "async", FALSE, "enable-last-sample", FALSE, nullptr);
  GstAppSinkCallbacks callbacks = {};
  callbacks.new_sample = on_frame;
  gst_app_sink_set_callbacks(GST_APP_SINK(sink), &callbacks, new Shared_Stream(stream),
                             drop_stream);
  Media_Helper::gst_element_sync_state_with_parent_or_throw(sink);
  return sink;
}

}  // namespace kel::tavren::programs
