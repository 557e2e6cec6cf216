// The addresses that the streams of an RTSP camera are set up with.

#ifndef TAVREN_PROGRAMS_STREAM_ADDRESSES_H
#define TAVREN_PROGRAMS_STREAM_ADDRESSES_H

#include <map>
#include <string>

#include <gst/rtsp/gstrtspmessage.h>
#include <gst/sdp/gstsdpmessage.h>

namespace kel::tavren::programs {

// Appends a stream's relative address to the camera's address if the camera names no base address.
// rtspsrc resolves it as a relative reference, which replaces the last segment of the path. Other
// players append, and there are cameras that know only the longer address and close the connection,
// or end, when asked for the other one. If a camera does not find the longer address, rtspsrc asks
// again, and the resolved address is used.
class Stream_Addresses {
public:
  // Notes the address of the description, and whether the answer names a base address.
  void note_answer(const GstRTSPMessage *request, const GstRTSPMessage *answer);
  void note_description(const GstSDPMessage *description);
  // Replaces the address of a request that rtspsrc is about to send.
  void rewrite(GstRTSPMessage *request);

private:
  void add(const std::string &control);

  std::string description_;
  bool has_base_ = false;
  std::map<std::string, std::string> appended_;  // by the address that rtspsrc resolves
  std::map<std::string, std::string> substitutes_;
};

}  // namespace kel::tavren::programs

#endif
