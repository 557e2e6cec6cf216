#include "stream_relay.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <optional>

#include <gst/rtsp-server/rtsp-server.h>
#include <tavren/capture/media_helper.h>

#include "camera/camera_source.h"
#include "command_line/program.h"
#include "command_line/signal_watch.h"

namespace kel::tavren::programs {

using capture::Media_Helper;

namespace {

constexpr guint check_interval = 2;  // s

// What is relayed, and how it ended: shared by the relay and by everything that the framework calls
// from its own threads, which may outlast the relay by a moment.
class Relay_State {
public:
  Relay_State(std::string uri, std::vector<Camera_Stream> streams)
      : uri_(std::move(uri)), streams_(std::move(streams)),
        loop_(g_main_loop_new(nullptr, FALSE), false) {}

  const std::string &uri() const noexcept { return uri_; }
  const std::vector<Camera_Stream> &streams() const noexcept { return streams_; }
  bool relays(guint number) const noexcept {
    return std::any_of(streams_.begin(), streams_.end(), [number](const Camera_Stream &stream) {
      return stream.number == number && stream.relayed();
    });
  }

  void run() {
    g_main_loop_run(loop_.get());
    const std::lock_guard lock(mutex_);
    if (failure_) std::rethrow_exception(failure_);
  }

  // Ends run, which throws the first failure.
  void stop() noexcept { g_main_loop_quit(loop_.get()); }
  void fail(std::exception_ptr failure) noexcept {
    {
      const std::lock_guard lock(mutex_);
      if (!failure_) failure_ = std::move(failure);
    }
    stop();
  }

private:
  const std::string uri_;
  const std::vector<Camera_Stream> streams_;
  const boost::intrusive_ptr<GMainLoop> loop_;
  std::mutex mutex_;
  std::exception_ptr failure_;
};

using Shared_State = std::shared_ptr<Relay_State>;

// Runs what the framework called; what it throws ends the relay instead of crossing C code.
template <typename Body>
void guarded(gpointer state, Body &&body) noexcept {
  auto &relay = *static_cast<Relay_State *>(state);
  try {
    body(relay);
  } catch (...) {
    relay.fail(std::current_exception());
  }
}

// Keeps the state alive as long as an object lives, and finds it again there.
const char *const state_key = "relay-state";

void keep_state(gpointer object, const Shared_State &state) {
  g_object_set_data_full(G_OBJECT(object), state_key, new Shared_State(state),
                         [](gpointer kept) { delete static_cast<Shared_State *>(kept); });
}

const Shared_State &kept_state(gpointer object) {
  return *static_cast<Shared_State *>(g_object_get_data(G_OBJECT(object), state_key));
}

std::string depayloader_name(guint number) {
  return "depayloader_" + std::to_string(number);
}

gboolean select_stream(GstElement *, guint number, GstCaps *, gpointer state) noexcept {
  return static_cast<Relay_State *>(state)->relays(number);
}

// The source names its pads recv_rtp_src_, the stream's number, and more.
guint stream_number(GstPad *pad) {
  const std::unique_ptr<char, Emancipator<char>> name(gst_object_get_name(GST_OBJECT(pad)));
  const std::string text = name.get();
  const std::string prefix = "recv_rtp_src_";
  if (text.compare(0, prefix.size(), prefix) != 0)
    throw Bus_Error(GST_RESOURCE_ERROR_FAILED, "no stream of the camera is named " + text);
  return static_cast<guint>(std::stoul(text.substr(prefix.size())));
}

void link_stream(GstElement *source, GstPad *pad, gpointer state) noexcept {
  guarded(state, [&](Relay_State &) {
    const boost::intrusive_ptr<GstElement> bin(
        Media_Helper::gst_element_get_parent_or_throw(source), false);
    const boost::intrusive_ptr<GstElement> depayloader(
        Media_Helper::gst_bin_get_by_name_or_throw(GST_BIN(bin.get()),
                                                   depayloader_name(stream_number(pad))),
        false);
    Media_Helper::link_pad_to_element_or_throw(pad, depayloader.get());
  });
}

// Nobody ends a live stream but the camera: a viewer who leaves stops the elements without this.
GstPadProbeReturn watch_for_end(GstPad *, GstPadProbeInfo *info, gpointer state) noexcept {
  guarded(state, [&](Relay_State &) {
    if (GST_EVENT_TYPE(gst_pad_probe_info_get_event(info)) == GST_EVENT_EOS)
      throw Bus_Error(GST_RESOURCE_ERROR_READ, "the camera ended its stream");
  });
  return GST_PAD_PROBE_OK;
}

void add_branch(GstElement *bin, const Camera_Stream &stream, guint index, Relay_State *state) {
  GstElement *const depayloader = Media_Helper::create_and_add_element_to_bin(
      stream.depayloader, bin, depayloader_name(stream.number));
  // The server serves the payloaders named pay0, pay1 and so on.
  GstElement *const payloader = Media_Helper::create_and_add_element_to_bin(
      stream.payloader, bin, "pay" + std::to_string(index));
  gint payload_type = 0;
  if (gst_structure_get_int(gst_caps_get_structure(stream.caps.get(), 0), "payload", &payload_type))
    g_object_set(payloader, "pt", static_cast<guint>(payload_type), nullptr);
  // Who begins to watch later needs the parameter sets too, before each key frame.
  if (stream.payloader == "rtph264pay") g_object_set(payloader, "config-interval", -1, nullptr);
  // While no viewer wants this stream, its payloader leads nowhere; without a tee that does not
  // mind the stream would stop for good.
  GstElement *const tee = Media_Helper::create_and_add_element_to_bin("tee", bin, "");
  g_object_set(tee, "allow-not-linked", TRUE, nullptr);
  Media_Helper::gst_element_link_many_or_throw(depayloader, tee, nullptr);
  Media_Helper::link_tee_to_element(tee, payloader);
  Media_Helper::add_probe_to_sink_pad_or_throw(depayloader, GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM,
                                               watch_for_end, state, nullptr);
}

// Makes the elements of the relay: the camera's source, and a branch for each stream. Returns the
// bin with its floating reference.
GstElement *make_elements(const Shared_State &state) {
  std::unique_ptr<GstElement, decltype(&gst_object_unref)> bin(gst_bin_new("relay"),
                                                               gst_object_unref);
  keep_state(bin.get(), state);
  Camera_Options options;
  options.address = parse_camera_address(state->uri());
  GstElement *const source = add_camera_source(bin.get(), options, Transport::tcp);
  Media_Helper::g_signal_connect_or_throw(source, "select-stream", G_CALLBACK(select_stream),
                                          state.get());
  Media_Helper::g_signal_connect_or_throw(source, "pad-added", G_CALLBACK(link_stream),
                                          state.get());
  guint index = 0;
  for (const Camera_Stream &stream : state->streams())
    if (stream.relayed()) add_branch(bin.get(), stream, index++, state.get());
  return bin.release();
}

GstElement *create_element(GstRTSPMediaFactory *factory, const GstRTSPUrl *) noexcept {
  const Shared_State &state = kept_state(factory);
  GstElement *elements = nullptr;
  guarded(state.get(), [&](Relay_State &) { elements = make_elements(state); });
  return elements;
}

// A factory of media whose elements are made with the library's checks.
GType factory_type() {
  static const GType type = g_type_register_static_simple(
      GST_TYPE_RTSP_MEDIA_FACTORY, "TavrenRelayFactory", sizeof(GstRTSPMediaFactoryClass),
      [](gpointer factory_class, gpointer) {
        static_cast<GstRTSPMediaFactoryClass *>(factory_class)->create_element = create_element;
      },
      sizeof(GstRTSPMediaFactory), nullptr, static_cast<GTypeFlags>(0));
  return type;
}

void end_with_error(GstBus *, GstMessage *message, gpointer state) noexcept {
  guarded(state, [&](Relay_State &) { throw Bus_Error(message); });
}

// The media reads its bus itself; its errors are seen on their way there.
void watch_media(GstRTSPMediaFactory *, GstRTSPMedia *media, gpointer state) noexcept {
  guarded(state, [&](Relay_State &) {
    const boost::intrusive_ptr<GstElement> bin(gst_rtsp_media_get_element(media), false);
    const boost::intrusive_ptr<GstElement> pipeline(
        Media_Helper::gst_element_get_parent_or_throw(bin.get()), false);
    const boost::intrusive_ptr<GstBus> bus(
        Media_Helper::gst_element_get_bus_or_throw(pipeline.get()), false);
    keep_state(bus.get(), kept_state(bin.get()));
    gst_bus_enable_sync_message_emission(bus.get());
    g_signal_connect(bus.get(), "sync-message::error", G_CALLBACK(end_with_error), state);
  });
}

// Without viewers there is no session that would break when the camera goes away.
gboolean check_camera(gpointer state) noexcept {
  guarded(state, [](Relay_State &relay) { check_camera_answers(relay.uri()); });
  return G_SOURCE_CONTINUE;
}

gboolean stop_relay(gpointer state) noexcept {
  static_cast<Relay_State *>(state)->stop();
  return G_SOURCE_CONTINUE;
}

// A call every so many seconds from the default main context.
class Timer {
public:
  Timer(guint seconds, GSourceFunc call, gpointer data)
      : source_(g_timeout_add_seconds(seconds, call, data)) {}
  ~Timer() { g_source_remove(source_); }
  Timer(const Timer &) = delete;
  Timer &operator=(const Timer &) = delete;

private:
  guint source_;
};

GstRTSPFilterResult remove_client(GstRTSPServer *, GstRTSPClient *, gpointer) noexcept {
  return GST_RTSP_FILTER_REMOVE;
}

}  // namespace

class Stream_Relay::Server {
public:
  Server(const std::string &camera_uri, std::vector<Camera_Stream> streams, int port)
      : state_(std::make_shared<Relay_State>(camera_uri, std::move(streams))),
        server_(gst_rtsp_server_new(), false) {
    mount();
    listen(port);
  }

  ~Server() {
    g_source_destroy(listener_.get());
    gst_rtsp_server_client_filter(server_.get(), remove_client, nullptr);
  }

  Server(const Server &) = delete;
  Server &operator=(const Server &) = delete;

  const std::string &uri() const noexcept { return uri_; }

  void run(int seconds) {
    const Signal_Watch signals([this] { state_->stop(); });
    const Timer checks(check_interval, check_camera, state_.get());
    std::optional<Timer> end;
    if (seconds > 0) end.emplace(static_cast<guint>(seconds), stop_relay, state_.get());
    state_->run();
  }

private:
  void mount() {
    auto *const factory = static_cast<GstRTSPMediaFactory *>(g_object_new(factory_type(), nullptr));
    keep_state(factory, state_);
    gst_rtsp_media_factory_set_shared(factory, TRUE);
    g_signal_connect(factory, "media-configure", G_CALLBACK(watch_media), state_.get());
    const boost::intrusive_ptr<GstRTSPMountPoints> mounts(
        gst_rtsp_server_get_mount_points(server_.get()), false);
    gst_rtsp_mount_points_add_factory(mounts.get(), "/relay", factory);
  }

  void listen(int port) {
    gst_rtsp_server_set_address(server_.get(), "127.0.0.1");
    gst_rtsp_server_set_service(server_.get(), std::to_string(port).c_str());
    GError *error = nullptr;
    listener_ = {gst_rtsp_server_create_source(server_.get(), nullptr, &error), false};
    const std::unique_ptr<GError, decltype(&g_error_free)> owned(error, g_error_free);
    if (!listener_)
      throw Bus_Error(GST_RESOURCE_ERROR_OPEN_READ_WRITE,
                      "cannot listen on 127.0.0.1 port " + std::to_string(port) + ": " +
                          (error != nullptr ? error->message : "unknown reason"));
    g_source_attach(listener_.get(), nullptr);
    uri_ = "rtsp://127.0.0.1:" + std::to_string(gst_rtsp_server_get_bound_port(server_.get())) +
           "/relay";
  }

  Shared_State state_;
  boost::intrusive_ptr<GstRTSPServer> server_;
  boost::intrusive_ptr<GSource> listener_;
  std::string uri_;
};

Stream_Relay::Stream_Relay(const std::string &camera_uri, std::vector<Camera_Stream> streams,
                           int port) {
  if (std::none_of(streams.begin(), streams.end(),
                   [](const Camera_Stream &stream) { return stream.relayed(); }))
    throw Bus_Error(GST_RESOURCE_ERROR_NOT_FOUND, "none of the camera's streams can be relayed");
  server_ = std::make_unique<Server>(camera_uri, std::move(streams), port);
}

Stream_Relay::~Stream_Relay() = default;

const std::string &Stream_Relay::uri() const noexcept {
  return server_->uri();
}

void Stream_Relay::run(int seconds) {
  server_->run(seconds);
}

}  // namespace kel::tavren::programs
