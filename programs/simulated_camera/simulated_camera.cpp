#include "simulated_camera.h"

#include <stdexcept>

#include "main_loop/loop_thread.h"
#include "misbehaving_server.h"
#include "rtsp_server/live_media.h"
#include "rtsp_server/loopback_server.h"

namespace kel::tavren::programs {

namespace {

const char *const path = "/camera";

GstRTSPLowerTrans protocols_of(const std::string &transport) {
  if (transport == "tcp") return GST_RTSP_LOWER_TRANS_TCP;
  if (transport == "udp") return GST_RTSP_LOWER_TRANS_UDP;
  if (transport == "any")
    return static_cast<GstRTSPLowerTrans>(GST_RTSP_LOWER_TRANS_TCP | GST_RTSP_LOWER_TRANS_UDP);
  throw std::invalid_argument("--transport takes any, tcp or udp, not \"" + transport + '"');
}

}  // namespace

class Simulated_Camera::Server {
public:
  Server(const Camera_Streams &streams, const Camera_Service &service)
      : context_(g_main_context_new(), false),
        elements_(make_camera_elements(streams, context_.get())),
        server_(context_.get(), service.port), uri_(server_.uri(path)),
        misbehaviour_(context_.get(), server_, service.misbehaviour),
        media_(server_, path, elements_.bin), loop_(context_.get()) {
    misbehaviour_.guard(elements_);
    g_signal_connect(server_.get(), "client-connected", G_CALLBACK(on_client), this);
    const GstRTSPLowerTrans protocols = protocols_of(service.transport);
    media_.start();
    gst_rtsp_media_set_protocols(media_.media(), protocols);
  }

  ~Server() {
    loop_.stop();
    misbehaviour_.stop();
  }

  Server(const Server &) = delete;
  Server &operator=(const Server &) = delete;

  const std::string &uri() const noexcept { return uri_; }

private:
  static void on_client(GstRTSPServer *, GstRTSPClient *client, gpointer server) noexcept {
    g_signal_connect(client, "play-request", G_CALLBACK(on_play), server);
  }

  static void on_play(GstRTSPClient *, GstRTSPContext *, gpointer server) noexcept {
    request_key_frame(static_cast<Server *>(server)->elements_);
    g_main_context_invoke(
        static_cast<Server *>(server)->context_.get(),
        [](gpointer data) -> gboolean {
          static_cast<Server *>(data)->misbehaviour_.start();
          return G_SOURCE_REMOVE;
        },
        server);
  }

  const boost::intrusive_ptr<GMainContext> context_;
  const Camera_Elements elements_;
  Loopback_Server server_;
  const std::string uri_;
  Misbehaving_Server misbehaviour_;
  Live_Media media_;
  Loop_Thread loop_;
};

Simulated_Camera::Simulated_Camera(const Camera_Streams &streams, const Camera_Service &service)
    : server_(std::make_unique<Server>(streams, service)) {}

Simulated_Camera::~Simulated_Camera() = default;

const std::string &Simulated_Camera::uri() const noexcept {
  return server_->uri();
}

}  // namespace kel::tavren::programs
