// The media that a relay serves.

#ifndef TAVREN_PROGRAMS_RELAY_MEDIA_H
#define TAVREN_PROGRAMS_RELAY_MEDIA_H

#include <memory>

#include "key_frame_gate.h"
#include "relayed_stream.h"
#include "rtsp_server/live_media.h"
#include "running_time.h"

namespace kel::tavren::programs {

// Viewers start with a key frame of the first video stream.
class Relay_Media {
public:
  // Serves streams that have started. Propagates the library's exception if an element is missing.
  // Throws Bus_Error if the streams cannot be served.
  Relay_Media(Loopback_Server &server, Relayed_Streams streams, const Running_Time &time);
  // Disconnects all viewers.
  ~Relay_Media();

  Relay_Media(const Relay_Media &) = delete;
  Relay_Media &operator=(const Relay_Media &) = delete;

  // Throws the error that ended the media, if any.
  void check() const { media_.check(); }

private:
  guint video_stream() const;
  void connect_streams() const;
  void admit_viewers();

  Loopback_Server &server_;
  const Relayed_Streams streams_;
  const std::shared_ptr<Key_Frame_Gate> gate_;  // of the first video stream
  const boost::intrusive_ptr<GstElement> bin_;
  Live_Media media_;
  gulong client_handler_ = 0;
};

}  // namespace kel::tavren::programs

#endif
