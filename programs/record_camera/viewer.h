// Shows a recording's pictures in a window.

#ifndef TAVREN_PROGRAMS_VIEWER_H
#define TAVREN_PROGRAMS_VIEWER_H

#include <atomic>
#include <memory>

#include <gst/gst.h>
#include <tavren/capture/media_type.h>

#include "media_feed.h"
#include "pipeline_bin.h"

namespace kel::tavren::programs {

// A bin in the pipeline that decodes frames and shows them. It has no link to the recording: it can
// fail without any effect there, and it drops frames if it cannot keep up. Without a display the
// pictures are decoded only.
class Viewer {
public:
  // Throws what the library throws if it has no decoder for the kind, or if an element is missing.
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
