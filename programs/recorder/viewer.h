// Shows the pictures of a recording in a window.

#ifndef TAVREN_PROGRAMS_VIEWER_H
#define TAVREN_PROGRAMS_VIEWER_H

#include <atomic>
#include <memory>

#include <gst/gst.h>
#include <tavren/capture/media_type.h>

#include "media_feed.h"
#include "pipeline_bin.h"

namespace kel::tavren::programs {

// A bin in the pipeline that decodes and shows frames. It is not linked to the recording, so its
// failures do not affect the recording, and it drops frames if it cannot keep up. Without a
// display, it only decodes.
class Viewer {
public:
  // Propagates the library's exception if there is no decoder for the media kind, or if an element
  // is missing.
  Viewer(GstElement *pipeline, capture::MediaType kind, GstSample *first);

  void show(GstSample *sample);
  unsigned int pictures() const noexcept { return pictures_; }
  bool owns(GstMessage *message) const { return bin_.posted(message); }

private:
  static GstPadProbeReturn on_picture(GstPad *, GstPadProbeInfo *, gpointer viewer) noexcept;

  std::atomic<unsigned int> pictures_{0};
  Pipeline_Bin bin_;
  boost::intrusive_ptr<GstCaps> caps_;
  std::unique_ptr<Media_Feed> feed_;
};

}  // namespace kel::tavren::programs

#endif
