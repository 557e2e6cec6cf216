// Requests that keep an RTSP session open.

#ifndef TAVREN_PROGRAMS_KEEP_ALIVE_H
#define TAVREN_PROGRAMS_KEEP_ALIVE_H

#include <optional>
#include <string>

#include <gst/rtsp/gstrtspmessage.h>

namespace kel::tavren::programs {

// Tells when the next request is due, and which. The camera states the timeout of the session and
// the methods that it knows.
class Keep_Alive {
public:
  struct Request {
    GstRTSPMethod method = GST_RTSP_OPTIONS;
    std::string address;
  };

  // Notes what the camera has answered to a request of rtspsrc.
  void note_answer(const GstRTSPMessage *request, const GstRTSPMessage *answer);
  // The request that is due now, if one is; the next one is due half a timeout later.
  std::optional<Request> take_request();

private:
  void note_timeout(const GstRTSPMessage *answer);

  Request request_;          // no address: nothing plays
  gint64 interval_ = 0;      // us
  gint64 next_request_ = 0;  // on the monotonic clock, us
};

}  // namespace kel::tavren::programs

#endif
