// A frame of one of the camera's streams, with complete times.

#ifndef TAVREN_PROGRAMS_FRAME_H
#define TAVREN_PROGRAMS_FRAME_H

#include <optional>

#include <gst/gst.h>
#include <tavren/handles/reference_adapters.h>

namespace kel::tavren::programs {

struct Frame {
  boost::intrusive_ptr<GstSample> sample;  // the buffer and its caps
  gint64 pts = 0;                          // running times in ns
  gint64 dts = 0;
  GstClockTime duration = 0;  // in ns; 0 if unknown
  bool is_key = false;        // decoding can begin here
  gint64 arrival = 0;         // UTC in us

  GstCaps *caps() const { return gst_sample_get_caps(sample.get()); }
};

// Completes the times of one stream's frames as muxers require: each frame has a presentation and a
// decoding time, and decoding times increase.
class Frame_Times {
public:
  // Makes a frame from a sample (transfer none). Returns nothing if the first frames have no
  // timestamp at all.
  std::optional<Frame> make_frame(GstSample *sample);

  // Returns the usual time between two frames in ns; 0 until it is known.
  GstClockTime interval() const noexcept { return interval_; }

private:
  std::optional<gint64> last_pts_;
  std::optional<gint64> last_dts_;
  GstClockTime last_duration_ = 0;
  GstClockTime interval_ = 0;
};

}  // namespace kel::tavren::programs

#endif
