// The streams that a simulated camera sends.

#ifndef TAVREN_PROGRAMS_CAMERA_MEDIA_H
#define TAVREN_PROGRAMS_CAMERA_MEDIA_H

#include <string>

#include <gst/gst.h>
#include <tavren/handles/reference_adapters.h>

namespace kel::tavren::programs {

struct Camera_Streams {
  std::string video = "h264";  // h264, jpeg, mpeg4, vp8 or none
  std::string audio = "aac";   // aac, mulaw, opus or none
  bool metadata = false;       // adds an ONVIF metadata stream
  int slices = 1;              // of each h264 picture
  bool noise = false;          // noise instead of a moving ball: 1 MB/s or more with jpeg
};

struct Camera_Elements {
  boost::intrusive_ptr<GstElement> bin;
  // The names of the payloaders in the bin; empty if there is none.
  std::string video;
  std::string audio;
  std::string metadata;
};

// Creates the elements that produce the streams and payload them into RTP. The main context
// produces the metadata documents. Throws std::invalid_argument for an unknown stream. Propagates
// the library's exception if an element is missing.
Camera_Elements make_camera_elements(const Camera_Streams &streams, GMainContext *context);

// Makes the next picture a key frame, as a camera does for a new viewer. Thread-safe.
void request_key_frame(const Camera_Elements &elements) noexcept;

}  // namespace kel::tavren::programs

#endif
