// The addresses used to set up the streams of an RTSP camera.

#ifndef TAVREN_PROGRAMS_STREAM_ADDRESSES_H
#define TAVREN_PROGRAMS_STREAM_ADDRESSES_H

#include <map>
#include <string>

#include <gst/rtsp/gstrtspmessage.h>
#include <gst/sdp/gstsdpmessage.h>

namespace kel::tavren::programs {

// Appends a stream's relative address to the camera's address if the camera specifies no base
// address. rtspsrc resolves the address as a relative reference, which replaces the last segment of
// the path. Other players append it, and some cameras support only the longer address and close the
// connection, or terminate, on a request for the resolved one. If the camera does not find the
// longer address, rtspsrc sends another request, which uses the resolved address.
class Stream_Addresses {
public:
  // Records the address of the description, and whether the response specifies a base address.
  void note_answer(const GstRTSPMessage *request, const GstRTSPMessage *answer);
  void note_description(const GstSDPMessage *description);
  // Replaces the address of a request before rtspsrc sends it.
  void rewrite(GstRTSPMessage *request);

private:
  void add(const std::string &control);

  std::string description_;
  bool has_base_ = false;
  std::map<std::string, std::string> appended_;  // keyed by the address that rtspsrc resolves
  std::map<std::string, std::string> substitutes_;
};

}  // namespace kel::tavren::programs

#endif
