// Relays a camera's streams over RTSP without decoding them.

#ifndef TAVREN_PROGRAMS_STREAM_RELAY_H
#define TAVREN_PROGRAMS_STREAM_RELAY_H

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "camera/camera_source.h"
#include "camera/camera_streams.h"
#include "camera/retry_schedule.h"
#include "camera_feed.h"
#include "relay_media.h"
#include "rtsp_server/loopback_server.h"
#include "running_time.h"

namespace kel::tavren::programs {

struct Relay_Options {
  Camera_Options camera;
  int port = 0;      // 0: the system chooses
  int duration = 0;  // s, after viewers can first be served; 0: until stopped
  int retry = 0;     // time during which an unavailable camera is retried, in s
};

// Keeps a session with the camera and serves it to any number of viewers on 127.0.0.1, from the
// default main context.
class Stream_Relay {
public:
  // Called when viewers can be served, with the address and all the camera's streams. Called again
  // if the camera returns with different streams.
  using On_Serving = std::function<void(const std::string &, const std::vector<Camera_Stream> &)>;

  // Throws Bus_Error if the relay cannot listen.
  Stream_Relay(const Relay_Options &options, On_Serving on_serving);
  ~Stream_Relay() = default;

  Stream_Relay(const Stream_Relay &) = delete;
  Stream_Relay &operator=(const Stream_Relay &) = delete;

  // Runs the default main context until the duration is over or a signal arrives. Throws the error
  // that ended the relay, usually that the camera has disconnected.
  void run();

private:
  // The reason and the start of the camera's absence.
  struct Absence {
    std::string reason;
    gint64 since = 0;  // UTC in us
  };

  void on_tick() noexcept;
  void tick();
  void connect();
  void check_feed();
  void note_return();
  static void show_gap(const Absence &absence);
  void lose_camera(const std::exception_ptr &failure);
  void retry_later(const std::exception_ptr &failure);
  bool is_ready() const;
  void serve();

  const Relay_Options options_;
  const On_Serving on_serving_;
  const Running_Time time_;
  const boost::intrusive_ptr<GMainLoop> loop_;
  Loopback_Server server_;
  Retry_Schedule retries_;
  std::vector<Transport> transports_;  // the first one is in use, the others have not been tried
  Refused_Streams refused_;
  std::unique_ptr<Relay_Media> media_;
  std::unique_ptr<Camera_Feed> feed_;
  Relayed_Streams streams_;    // streams that the media serves, and streams that are not relayed
  bool has_received_ = false;  // in this session
  gint64 connected_at_ = 0;    // all times are in us of the monotonic clock
  gint64 reconnect_at_ = 0;    // 0: not waiting to connect again
  gint64 end_at_ = 0;          // 0: nothing is served yet, or no duration is set
  std::optional<Absence> absence_;
  std::exception_ptr failure_;
};

}  // namespace kel::tavren::programs

#endif
