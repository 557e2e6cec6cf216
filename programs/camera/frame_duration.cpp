#include "frame_duration.h"

namespace kel::tavren::programs {

namespace {

GstClockTime aac_frame_duration(const GstCaps *caps) noexcept {
  constexpr guint64 samples_per_frame = 1024;
  const GstStructure *const structure = gst_caps_get_structure(caps, 0);
  int version = 0;
  int rate = 0;
  if (!gst_structure_has_name(structure, "audio/mpeg") ||
      !gst_structure_get(structure, "mpegversion", G_TYPE_INT, &version, "rate", G_TYPE_INT, &rate,
                         nullptr) ||
      version == 1 || rate <= 0)
    return 0;
  return gst_util_uint64_scale(samples_per_frame, GST_SECOND, static_cast<guint64>(rate));
}

}  // namespace

GstClockTime frame_duration(GstSample *frame) noexcept {
  GstBuffer *const buffer = gst_sample_get_buffer(frame);
  return GST_BUFFER_DURATION_IS_VALID(buffer) ? GST_BUFFER_DURATION(buffer)
                                              : aac_frame_duration(gst_sample_get_caps(frame));
}

}  // namespace kel::tavren::programs
