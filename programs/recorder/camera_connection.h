// Feeds a recording with a camera's streams.

#ifndef TAVREN_PROGRAMS_CAMERA_CONNECTION_H
#define TAVREN_PROGRAMS_CAMERA_CONNECTION_H

#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gst/gst.h>

#include "camera/camera_source.h"
#include "camera/retry_schedule.h"
#include "camera_session.h"
#include "recorder_log.h"
#include "recorder_status.h"
#include "recording.h"

namespace kel::tavren::programs {

// Connects to a camera. Uses another transport if the camera rejects the first one, and reconnects
// after a delay if the camera is unreachable or disconnects. For use in the main context only.
//
// The function that detects a permanent failure throws it.
class Camera_Connection {
public:
  // Callbacks of the owner.
  struct Hooks {
    // Called before a failed session is ended, with the failure.
    std::function<void(const std::exception_ptr &)> session_fails;
    // Called for each frame, with the number of its stream.
    std::function<void(guint, const Stream_Plan &, GstSample *)> frame_arrives;
  };

  // `retry` is the time in us during which the program retries an unavailable camera.
  Camera_Connection(GstElement *pipeline, const Camera_Options &options, gint64 retry,
                    Recording &recording, Recorder_Log &log, Hooks hooks);

  void connect();
  // Ends the session and stops recording.
  void close() noexcept { session_.reset(); }

  // Handles a message about the connection. Returns whether the message is about it.
  bool handle(GstMessage *message);
  // Handles timeouts. Call this several times a second.
  void tick();

  // If the camera is away, prints the gap up to now.
  void show_open_gap();

  // Returns why the camera is away; null if it is not.
  const std::exception_ptr &absence() const noexcept { return absence_; }
  // Returns the number of gaps up to now, and the last one.
  guint64 gaps() const noexcept { return gaps_; }
  const std::optional<Recorded_Gap> &last_gap() const noexcept { return last_gap_; }

private:
  void handle_events();
  void handle(const Camera_Event &event);
  void offer(const Camera_Event &event);
  void accept_frame(const Camera_Event &event);
  void end_stream(guint number);
  void end_session(const std::exception_ptr &failure);
  bool wants_any_stream() const;
  bool can_try_next_transport(const std::exception_ptr &failure) const;
  std::exception_ptr explain(const std::exception_ptr &failure) const;
  void check_session();
  void show_gap(const Recording_Tally::Gap &gap);

  GstElement *pipeline_;
  Camera_Options options_;
  Recording &recording_;
  Recorder_Log &log_;
  Hooks hooks_;
  std::vector<Transport> transports_;  // the first one is in use, the others have not been tried
  Retry_Schedule retries_;
  std::unique_ptr<Camera_Session> session_;
  std::map<guint, Stream_Plan> plans_;
  Refused_Streams refused_;
  std::map<guint, std::string> shown_;  // printed descriptions of streams
  bool has_received_ = false;           // in this session
  bool has_ever_received_ = false;
  gint64 held_back_at_ = 0;     // when the session was last held back, on the monotonic clock in us
  gint64 connected_at_ = 0;     // on the monotonic clock in us
  gint64 reconnect_at_ = 0;     // 0: not waiting to connect again
  std::exception_ptr absence_;  // why the camera is away
  guint64 gaps_ = 0;
  std::optional<Recorded_Gap> last_gap_;
  std::exception_ptr last_warning_;
};

}  // namespace kel::tavren::programs

#endif
