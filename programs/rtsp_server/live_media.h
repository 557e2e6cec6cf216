// A media that plays with and without viewers.

#ifndef TAVREN_PROGRAMS_LIVE_MEDIA_H
#define TAVREN_PROGRAMS_LIVE_MEDIA_H

#include <memory>
#include <string>

#include <gst/rtsp-server/rtsp-server.h>
#include <tavren/handles/reference_adapters.h>

#include "loopback_server.h"

namespace kel::tavren::programs {

// Serves the payloaders pay0, pay1 and so on of a bin to all viewers of a path.
//
// The media is prepared once and plays until it is destroyed. So viewers do not wait for the
// streams to start, are not rejected while another viewer's departure ends the streams, and all
// share one RTP clock that none of them can change.
class Live_Media {
public:
  // Throws Bus_Error if the server cannot create a media from the bin.
  Live_Media(Loopback_Server &server, std::string path,
             const boost::intrusive_ptr<GstElement> &bin);
  // Disconnects all viewers.
  ~Live_Media();

  Live_Media(const Live_Media &) = delete;
  Live_Media &operator=(const Live_Media &) = delete;

  // The media and the pipeline that contains the bin (transfer none). The media must allow TCP
  // until it is started.
  GstRTSPMedia *media() const noexcept;
  GstPipeline *pipeline() const noexcept;

  // Plays, and serves viewers when each stream has data to send. Throws Bus_Error if that fails or
  // takes too long.
  void start();

  // Throws the error that ended the media, if any.
  void check() const;

private:
  class State;
  std::unique_ptr<State> state_;
};

}  // namespace kel::tavren::programs

#endif
