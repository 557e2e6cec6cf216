// Requests that keep an RTSP session open.

#ifndef TAVREN_PROGRAMS_KEEP_ALIVE_H
#define TAVREN_PROGRAMS_KEEP_ALIVE_H

#include <optional>
#include <string>

#include <gst/rtsp/gstrtspmessage.h>

namespace kel::tavren::programs {

// Determines the time and the method of the next request. The camera announces the session timeout
// and the methods that it supports.
class Keep_Alive {
public:
  struct Request {
    GstRTSPMethod method = GST_RTSP_OPTIONS;
    std::string address;
  };

  // Records the camera's response to a request of rtspsrc.
  void note_answer(const GstRTSPMessage *request, const GstRTSPMessage *answer);
  // Returns the request that is due now, if any. The next one is due after half the timeout.
  std::optional<Request> take_request();

private:
  void note_timeout(const GstRTSPMessage *answer);

  Request request_;          // empty address: no stream is playing
  gint64 interval_ = 0;      // us
  gint64 next_request_ = 0;  // on the monotonic clock, us
};

}  // namespace kel::tavren::programs

#endif
