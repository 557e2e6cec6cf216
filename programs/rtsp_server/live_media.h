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
// The media is prepared once and plays until it is destroyed. So no viewer waits until the streams
// have started, none is turned away while another's leaving ends them, all see the same RTP clock,
// and none changes it.
class Live_Media {
public:
  // Throws Bus_Error if the server makes no media of the bin.
  Live_Media(Loopback_Server &server, std::string path,
             const boost::intrusive_ptr<GstElement> &bin);
  // Disconnects all viewers.
  ~Live_Media();

  Live_Media(const Live_Media &) = delete;
  Live_Media &operator=(const Live_Media &) = delete;

  // The media and the pipeline around the bin (transfer none). The media has to allow TCP until it
  // is started.
  GstRTSPMedia *media() const noexcept;
  GstPipeline *pipeline() const noexcept;

  // Plays, and serves once each stream has something to send. Throws Bus_Error if that fails or
  // takes too long.
  void start();

  // Throws what has ended the media.
  void check() const;

private:
  class State;
  std::unique_ptr<State> state_;
};

}  // namespace kel::tavren::programs

#endif
