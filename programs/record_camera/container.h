// The container that a file name chooses, and the media it holds.

#ifndef TAVREN_PROGRAMS_CONTAINER_H
#define TAVREN_PROGRAMS_CONTAINER_H

#include <string>

#include <gst/gst.h>
#include <tavren/handles/reference_adapters.h>

namespace kel::tavren::programs {

struct Container {
  std::string extension;  // with its dot
  std::string muxer;      // the name of its factory
  // The media that the muxer takes.
  boost::intrusive_ptr<GstCaps> accepted;
  // The same without what only a running stream knows: size, rates and channels.
  boost::intrusive_ptr<GstCaps> formats;
  // AVI stores frames at a fixed rate: it has no times, and no parameter sets beside the stream.
  bool has_times = true;

  // How messages name it: .mp4 (mp4mux).
  std::string name() const { return extension + " (" + muxer + ')'; }
};

// Chooses the container by the file name's extension. Throws what the library throws if it does not
// know the extension, with the choices added to the text, or if the muxer is missing.
Container choose_container(const std::string &file);

// Whether the caps of a running stream lack a frame rate without which the container cannot begin.
bool needs_frame_rate(const Container &container, const GstCaps *caps);

// The caps of a running stream, completed with what the muxer has to know and the camera did not
// announce. Interval is the usual time between two frames in ns; 0: unknown.
boost::intrusive_ptr<GstCaps> complete_caps(const Container &container,
                                            const boost::intrusive_ptr<GstCaps> &caps,
                                            GstClockTime interval);

}  // namespace kel::tavren::programs

#endif
