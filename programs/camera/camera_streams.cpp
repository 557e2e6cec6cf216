#include "camera_streams.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <tuple>

#include <gst/rtsp/rtsp.h>
#include <tavren/capture/media_helper.h>

#include "camera_source.h"
#include "command_line/program.h"

namespace kel::tavren::programs {

using capture::Media_Helper;

namespace {

constexpr gint64 longest_wait = gint64{10} * G_USEC_PER_SEC;
constexpr gint64 shortest_wait = gint64{3} * G_USEC_PER_SEC;  // while others wait too

void check(GstRTSPResult result) {
  if (result == GST_RTSP_OK) return;
  const std::unique_ptr<char, Emancipator<char>> reason(gst_rtsp_strresult(result));
  throw Bus_Error(GST_RESOURCE_ERROR_READ,
                  "the camera does not answer: " + std::string(reason.get()));
}

// A connection to the camera beside the sessions.
class Connection {
public:
  explicit Connection(const std::string &uri) {
    GstRTSPUrl *url = nullptr;
    check(gst_rtsp_url_parse(uri.c_str(), &url));
    const std::unique_ptr<GstRTSPUrl, decltype(&gst_rtsp_url_free)> owned(url, gst_rtsp_url_free);
    // Without the user's name and password, which have no place in a request.
    request_uri_.reset(gst_rtsp_url_get_request_uri(url));
    check(gst_rtsp_connection_create(url, &connection_));
  }
  ~Connection() { gst_rtsp_connection_free(connection_); }
  Connection(const Connection &) = delete;
  Connection &operator=(const Connection &) = delete;

  // Any answer will do, a refusal too.
  void ask_for_options() {
    check(gst_rtsp_connection_connect_usec(connection_, shortest_wait));
    Message request;
    Message response;
    check(gst_rtsp_message_init_request(request.get(), GST_RTSP_OPTIONS, request_uri_.get()));
    check(gst_rtsp_connection_send_usec(connection_, request.get(), shortest_wait));
    check(gst_rtsp_connection_receive_usec(connection_, response.get(), shortest_wait));
  }

private:
  class Message {
  public:
    Message() = default;
    ~Message() { gst_rtsp_message_unset(&message_); }
    Message(const Message &) = delete;
    Message &operator=(const Message &) = delete;
    GstRTSPMessage *get() noexcept { return &message_; }

  private:
    GstRTSPMessage message_ = {};
  };

  std::unique_ptr<char, Emancipator<char>> request_uri_;
  GstRTSPConnection *connection_ = nullptr;
};

// What a session tells; its streams are filled in from a thread of the source.
struct Answer {
  std::mutex mutex;
  std::vector<Camera_Stream> streams;
  std::exception_ptr failure;
};

Camera_Stream choose_elements(guint number, GstCaps *offered) {
  Camera_Stream stream{number, offered_rtp_caps(offered), {}, {}, {}};
  GstCaps *const caps = stream.caps.get();
  if (Media_Helper::get_media_type(caps) == capture::RTP_METADATA) {
    stream.obstacle = "metadata is no media";
    return stream;
  }
  try {
    std::tie(stream.depayloader, stream.payloader) = Media_Helper::select_proxy_elements(caps);
  } catch (const Backend_Error<std::runtime_error> &error) {
    if (error.code() != TEC::NO_PROXY_ELEMENTS_FOR_CAPS) throw;
    stream.obstacle = error.what();
  }
  return stream;
}

gboolean note_stream(GstElement *, guint number, GstCaps *caps, gpointer data) noexcept {
  Answer &answer = *static_cast<Answer *>(data);
  const std::lock_guard lock(answer.mutex);
  try {
    answer.streams.push_back(choose_elements(number, caps));
    return answer.streams.back().relayed();
  } catch (...) {
    answer.failure = std::current_exception();
    return FALSE;
  }
}

bool says_opened(GstMessage *message) {
  if (GST_MESSAGE_TYPE(message) != GST_MESSAGE_PROGRESS) return false;
  GstProgressType type = GST_PROGRESS_TYPE_START;
  gchar *code = nullptr;
  gst_message_parse_progress(message, &type, &code, nullptr);
  const std::unique_ptr<char, Emancipator<char>> owned(code);
  return type == GST_PROGRESS_TYPE_COMPLETE && g_str_equal(code, "open");
}

// Waits until the session is open. Returns the error that came instead, or null.
boost::intrusive_ptr<GstMessage> wait_until_open(GstBus *bus) {
  const gint64 deadline = g_get_monotonic_time() + longest_wait;
  for (gint64 left = longest_wait; left > 0; left = deadline - g_get_monotonic_time()) {
    boost::intrusive_ptr<GstMessage> message(
        gst_bus_timed_pop_filtered(
            bus, static_cast<GstClockTime>(left) * GST_USECOND,
            static_cast<GstMessageType>(GST_MESSAGE_ERROR | GST_MESSAGE_PROGRESS)),
        false);
    if (!message) break;
    if (GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_ERROR) return message;
    if (says_opened(message.get())) return nullptr;
  }
  throw Bus_Error(GST_RESOURCE_ERROR_READ, "the camera did not describe its streams in time");
}

}  // namespace

boost::intrusive_ptr<GstCaps> offered_rtp_caps(GstCaps *offered) {
  boost::intrusive_ptr<GstCaps> caps(gst_caps_copy(offered), false);
  gst_structure_set_name(gst_caps_get_structure(caps.get(), 0), "application/x-rtp");
  return caps;
}

std::vector<Camera_Stream> ask_for_streams(const std::string &uri) {
  Answer answer;
  const boost::intrusive_ptr<GstElement> pipeline(
      GST_ELEMENT_CAST(gst_object_ref_sink(gst_pipeline_new("question"))), false);
  Camera_Options options;
  options.address = parse_camera_address(uri);
  GstElement *const source = add_camera_source(pipeline.get(), options, Transport::tcp);
  Media_Helper::g_signal_connect_or_throw(source, "select-stream", G_CALLBACK(note_stream),
                                          &answer);
  const boost::intrusive_ptr<GstBus> bus(Media_Helper::gst_element_get_bus_or_throw(pipeline.get()),
                                         false);

  boost::intrusive_ptr<GstMessage> error;
  {
    Scope_Exit_Guard end_session;
    arm(end_session, [&pipeline] { gst_element_set_state(pipeline.get(), GST_STATE_NULL); });
    Media_Helper::gst_element_set_state_or_throw(pipeline.get(), GST_STATE_PAUSED,
                                                 "asking the camera for its streams");
    error = wait_until_open(bus.get());
  }
  if (answer.failure) std::rethrow_exception(answer.failure);
  // That all its streams were turned down is an error to the source, and an answer here.
  const bool all_turned_down =
      !answer.streams.empty() && std::none_of(answer.streams.begin(), answer.streams.end(),
                                              [](const auto &stream) { return stream.relayed(); });
  if (error && !all_turned_down) throw Bus_Error(error.get());
  return std::move(answer.streams);
}

void check_camera_answers(const std::string &uri) {
  Connection(uri).ask_for_options();
}

}  // namespace kel::tavren::programs
