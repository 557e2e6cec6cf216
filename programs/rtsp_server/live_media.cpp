#include "live_media.h"

#include <exception>
#include <mutex>
#include <utility>
#include <vector>

#include <gst/app/gstappsrc.h>
#include <tavren/capture/media_helper.h>

#include "command_line/program.h"

namespace kel::tavren::programs {

using capture::Media_Helper;

namespace {

const char *const bin_key = "live-media-bin";

using Element = boost::intrusive_ptr<GstElement>;
using Factory = boost::intrusive_ptr<GstRTSPMediaFactory>;
template <typename T>
using Object = std::unique_ptr<T, decltype(&g_object_unref)>;

// Returns the factory's bin. Only the first call succeeds.
GstElement *create_element(GstRTSPMediaFactory *factory, const GstRTSPUrl *) noexcept {
  return static_cast<GstElement *>(g_object_steal_data(G_OBJECT(factory), bin_key));
}

// All addresses of the factory share one media.
gchar *gen_key(GstRTSPMediaFactory *, const GstRTSPUrl *) noexcept {
  return g_strdup("");
}

GType factory_type() {
  static const GType type = g_type_register_static_simple(
      GST_TYPE_RTSP_MEDIA_FACTORY, "TavrenLiveMediaFactory", sizeof(GstRTSPMediaFactoryClass),
      [](gpointer factory_class, gpointer) {
        auto *const methods = static_cast<GstRTSPMediaFactoryClass *>(factory_class);
        methods->create_element = create_element;
        methods->gen_key = gen_key;
      },
      sizeof(GstRTSPMediaFactory), nullptr, static_cast<GTypeFlags>(0));
  return type;
}

Factory make_factory(GstElement *bin) {
  Factory factory(static_cast<GstRTSPMediaFactory *>(g_object_new(factory_type(), nullptr)), false);
  gst_rtsp_media_factory_set_shared(factory.get(), TRUE);
  g_object_set_data(G_OBJECT(factory.get()), bin_key, bin);
  return factory;
}

Object<GstRTSPMedia> construct_media(GstRTSPMediaFactory *factory, const std::string &uri) {
  GstRTSPUrl *url = nullptr;
  gst_rtsp_url_parse(uri.c_str(), &url);
  const std::unique_ptr<GstRTSPUrl, decltype(&gst_rtsp_url_free)> owned(url, gst_rtsp_url_free);
  Object<GstRTSPMedia> media(gst_rtsp_media_factory_construct(factory, url), g_object_unref);
#if GST_CHECK_VERSION(1, 24, 0)
  // Since this version, the media is returned locked, and viewers wait for the lock.
  if (media) gst_rtsp_media_unlock(media.get());
#endif
  return media;
}

// A viewer that asks to play from the start would flush a live source that supports seeking, and so
// reset the RTP clock of all viewers.
GstPadProbeReturn refuse_to_seek(GstPad *, GstPadProbeInfo *info, gpointer) noexcept {
  GstQuery *const query = gst_pad_probe_info_get_query(info);
  if (GST_QUERY_TYPE(query) != GST_QUERY_SEEKING) return GST_PAD_PROBE_OK;
  gst_query_set_seeking(query, GST_FORMAT_TIME, FALSE, 0, -1);
  return GST_PAD_PROBE_HANDLED;
}

// Receivers over TCP send their reports through an appsrc. Without caps, its segment would precede
// the caps of reports that later arrive over UDP, and GStreamer would warn about this.
void set_caps_of_reports(GstBin *, GstBin *, GstElement *element, gpointer) noexcept {
  if (!GST_IS_APP_SRC(element)) return;
  const boost::intrusive_ptr<GstCaps> caps(gst_caps_new_empty_simple("application/x-rtcp"), false);
  gst_app_src_set_caps(GST_APP_SRC(element), caps.get());
}

// A stream that has both a packet and a report to send continues after the first of them only if
// it is notified that this was sent.
template <typename Data>
gboolean discard(Data *, guint8, gpointer receiver) noexcept {
  gst_rtsp_stream_transport_message_sent(static_cast<GstRTSPStreamTransport *>(receiver));
  return TRUE;
}

// A transport over TCP that discards what it is sent.
Object<GstRTSPStreamTransport> make_discarding_receiver(GstRTSPStream *stream) {
  GstRTSPTransport *transport = nullptr;
  gst_rtsp_transport_new(&transport);
  transport->lower_transport = GST_RTSP_LOWER_TRANS_TCP;
  // The stream compares the destinations of its transports, so the destination must be set.
  transport->destination = g_strdup("nowhere");
  Object<GstRTSPStreamTransport> receiver(gst_rtsp_stream_transport_new(stream, transport),
                                          g_object_unref);
  gst_rtsp_stream_transport_set_callbacks(receiver.get(), discard<GstBuffer>, discard<GstBuffer>,
                                          receiver.get(), nullptr);
  gst_rtsp_stream_transport_set_list_callbacks(receiver.get(), discard<GstBufferList>,
                                               discard<GstBufferList>, receiver.get(), nullptr);
  return receiver;
}

// One receiver for each stream of a media.
//
// The framework sends a stream over TCP only while at least one of its receivers can accept data.
// If no receiver can, because the client processes are stopped, the stream stops for everyone,
// including receivers over UDP. A payloader without any receiver also stops. A receiver that
// discards its data prevents both. The framework limits the backlog of a receiver that does not
// read.
class Discarding_Receivers {
public:
  explicit Discarding_Receivers(GstRTSPMedia *media) : media_(media) {
    const std::unique_ptr<GPtrArray, decltype(&g_ptr_array_unref)> transports(g_ptr_array_new(),
                                                                              g_ptr_array_unref);
    for (guint i = 0; i < gst_rtsp_media_n_streams(media); ++i) {
      receivers_.push_back(make_discarding_receiver(gst_rtsp_media_get_stream(media, i)));
      g_ptr_array_add(transports.get(), receivers_.back().get());
    }
    if (!gst_rtsp_media_complete_pipeline(media, transports.get()))
      throw Bus_Error(GST_RESOURCE_ERROR_FAILED, "the streams cannot be served over TCP");
  }
  // A stream can be removed from its media only without receivers.
  ~Discarding_Receivers() {
    for (guint i = 0; i < receivers_.size(); ++i)
      gst_rtsp_stream_remove_transport(gst_rtsp_media_get_stream(media_, i), receivers_[i].get());
  }
  Discarding_Receivers(const Discarding_Receivers &) = delete;
  Discarding_Receivers &operator=(const Discarding_Receivers &) = delete;

private:
  GstRTSPMedia *media_;
  std::vector<Object<GstRTSPStreamTransport>> receivers_;
};

}  // namespace

class Live_Media::State {
public:
  State(Loopback_Server &server, std::string path, const Element &bin)
      : server_(server), path_(std::move(path)), bin_(bin), factory_(make_factory(bin.get())),
        media_(construct_media(factory_.get(), server.uri(path_))) {
    if (!media_) throw Bus_Error(GST_RESOURCE_ERROR_FAILED, "the server makes no media");
    pipeline_ = {Media_Helper::gst_element_get_parent_or_throw(bin.get()), false};
    for (guint i = 0; i < gst_rtsp_media_n_streams(media_.get()); ++i) {
      const Element payloader(
          Media_Helper::gst_bin_get_by_name_or_throw(GST_BIN(bin.get()), "pay" + std::to_string(i)),
          false);
      Media_Helper::add_probe_to_sink_pad_or_throw(
          payloader.get(), GST_PAD_PROBE_TYPE_QUERY_UPSTREAM, refuse_to_seek, nullptr, nullptr);
    }
    Media_Helper::g_signal_connect_or_throw(pipeline_.get(), "deep-element-added",
                                            G_CALLBACK(set_caps_of_reports), nullptr);
    watch_errors();
  }

  ~State() {
    server_.unmount(path_);
    server_.disconnect_clients();
    receivers_.reset();
    gst_rtsp_media_unprepare(media_.get());
    g_signal_handler_disconnect(bus_.get(), error_handler_);
  }

  State(const State &) = delete;
  State &operator=(const State &) = delete;

  GstRTSPMedia *media() const noexcept { return media_.get(); }
  GstPipeline *pipeline() const noexcept { return GST_PIPELINE(pipeline_.get()); }

  void start() {
    const Object<GstRTSPThreadPool> threads(gst_rtsp_server_get_thread_pool(server_.get()),
                                            g_object_unref);
    GstRTSPThread *const thread =
        gst_rtsp_thread_pool_get_thread(threads.get(), GST_RTSP_THREAD_TYPE_MEDIA, nullptr);
    if (!gst_rtsp_media_prepare(media_.get(), thread)) {
      check();
      throw Bus_Error(GST_RESOURCE_ERROR_FAILED, "the streams cannot be served");
    }
    receivers_ = std::make_unique<Discarding_Receivers>(media_.get());
    gst_rtsp_media_set_pipeline_state(media_.get(), GST_STATE_PLAYING);
    server_.mount(path_, factory_);
  }

  void check() const {
    const std::lock_guard lock(mutex_);
    if (failure_) std::rethrow_exception(failure_);
  }

private:
  // The media reads its bus itself, so intercept the errors before it does.
  void watch_errors() {
    bus_ = {Media_Helper::gst_element_get_bus_or_throw(pipeline_.get()), false};
    gst_bus_enable_sync_message_emission(bus_.get());
    error_handler_ =
        g_signal_connect(bus_.get(), "sync-message::error", G_CALLBACK(on_error), this);
  }

  static void on_error(GstBus *, GstMessage *message, gpointer state) noexcept {
    auto &self = *static_cast<State *>(state);
    const std::lock_guard lock(self.mutex_);
    if (!self.failure_) self.failure_ = std::make_exception_ptr(Bus_Error(message));
  }

  Loopback_Server &server_;
  const std::string path_;
  const Element bin_;
  const Factory factory_;
  const Object<GstRTSPMedia> media_;
  Element pipeline_;
  boost::intrusive_ptr<GstBus> bus_;
  gulong error_handler_ = 0;
  std::unique_ptr<Discarding_Receivers> receivers_;
  mutable std::mutex mutex_;
  std::exception_ptr failure_;
};

Live_Media::Live_Media(Loopback_Server &server, std::string path, const Element &bin)
    : state_(std::make_unique<State>(server, std::move(path), bin)) {}

Live_Media::~Live_Media() = default;

GstRTSPMedia *Live_Media::media() const noexcept {
  return state_->media();
}

GstPipeline *Live_Media::pipeline() const noexcept {
  return state_->pipeline();
}

void Live_Media::start() {
  state_->start();
}

void Live_Media::check() const {
  state_->check();
}

}  // namespace kel::tavren::programs
