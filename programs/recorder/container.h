// The container selected by a file name, and the media formats that it supports.

#ifndef TAVREN_PROGRAMS_CONTAINER_H
#define TAVREN_PROGRAMS_CONTAINER_H

#include <string>

#include <gst/gst.h>
#include <tavren/handles/reference_adapters.h>

namespace kel::tavren::programs {

struct Container {
  std::string extension;  // with the dot
  std::string muxer;      // name of the element factory
  // The media that the muxer accepts.
  boost::intrusive_ptr<GstCaps> accepted;
  // The same without the fields that only a running stream provides: size, rates and channels.
  boost::intrusive_ptr<GstCaps> formats;
  // AVI stores frames at a fixed rate: it has no timestamps, and no parameter sets outside the
  // stream.
  bool has_times = true;

  // The name used in messages: .mp4 (mp4mux).
  std::string name() const { return extension + " (" + muxer + ')'; }
};

// Selects the container by the extension of the file name. Propagates the library's exception if
// the extension is unknown, with the supported ones added to the text, or if the muxer is missing.
Container choose_container(const std::string &file);

// Returns whether the container needs a frame rate that the caps of the running stream lack.
bool needs_frame_rate(const Container &container, const GstCaps *caps);

// Returns the caps of a running stream, completed with the fields that the muxer requires and the
// camera did not announce. `interval` is the usual time between two frames in ns; 0: unknown.
boost::intrusive_ptr<GstCaps> complete_caps(const Container &container,
                                            const boost::intrusive_ptr<GstCaps> &caps,
                                            GstClockTime interval);

}  // namespace kel::tavren::programs

#endif
