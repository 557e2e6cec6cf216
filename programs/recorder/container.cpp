#include "container.h"

#include <memory>

#include <tavren/capture/media_helper.h>

#include "camera/camera_streams.h"

namespace kel::tavren::programs {

using capture::Media_Helper;
using Caps = boost::intrusive_ptr<GstCaps>;

namespace {

std::string select_muxer(const std::string &file) {
  try {
    return Media_Helper::select_muxer(file);
  } catch (const Backend_Error<std::runtime_error> &error) {
    throw Backend_Error<std::runtime_error>(error.code(), std::string(error.what()) + " for \"" +
                                                              file +
                                                              "\"; use .mkv, .mp4, .avi or .mov");
  }
}

// Removes the fields that are known only after the first key frame: a parser sends caps before it
// has parsed one.
Caps without_stream_fields(const Caps &caps) {
  Caps plain(gst_caps_copy(caps.get()), false);
  for (guint i = 0; i < gst_caps_get_size(plain.get()); ++i)
    gst_structure_remove_fields(gst_caps_get_structure(plain.get(), i), "width", "height",
                                "framerate", "rate", "channels", "profile", "chroma-format",
                                nullptr);
  return plain;
}

bool accepts(const Caps &formats, const char *media) {
  const Caps caps(gst_caps_new_empty_simple(media), false);
  return gst_caps_can_intersect(formats.get(), caps.get()) != FALSE;
}

bool is_mpeg1_audio(const GstStructure *structure) {
  int version = 0;
  return gst_structure_has_name(structure, "audio/mpeg") != FALSE &&
         gst_structure_get_int(structure, "mpegversion", &version) != FALSE && version == 1;
}

void set_frame_rate(GstStructure *structure, GstClockTime interval) {
  constexpr int default_rate = 25;
  int numerator = default_rate;
  int denominator = 1;
  if (interval != 0)
    gst_util_double_to_fraction(static_cast<double>(GST_SECOND) / static_cast<double>(interval),
                                &numerator, &denominator);
  gst_structure_set(structure, "framerate", GST_TYPE_FRACTION, numerator, denominator, nullptr);
}

}  // namespace

Caps complete_caps(const Container &container, const Caps &caps, GstClockTime interval) {
  Caps complete(gst_caps_copy(caps.get()), false);
  GstStructure *const structure = gst_caps_get_structure(complete.get(), 0);
  if (gst_structure_has_name(structure, "audio/x-opus") != FALSE &&
      gst_structure_has_field(structure, "rate") == FALSE)
    gst_structure_set(structure, "rate", G_TYPE_INT, 48000, nullptr);
  // mp4mux reads this field without a check.
  if (gst_structure_has_name(structure, "video/x-vp9") != FALSE &&
      gst_structure_has_field(structure, "chroma-site") == FALSE)
    gst_structure_set(structure, "chroma-site", G_TYPE_STRING, "mpeg2", nullptr);
  // avimux drops every frame of parsed MPEG-1 audio.
  if (!container.has_times && is_mpeg1_audio(structure))
    gst_structure_set(structure, "parsed", G_TYPE_BOOLEAN, FALSE, nullptr);
  if (needs_frame_rate(container, caps.get())) set_frame_rate(structure, interval);
  return complete;
}

bool needs_frame_rate(const Container &container, const GstCaps *caps) {
  const GstStructure *const structure = gst_caps_get_structure(caps, 0);
  const std::string media = gst_structure_get_name(structure);
  if (container.has_times || media.rfind("audio/", 0) == 0) return false;
  int numerator = 0;
  int denominator = 1;
  return gst_structure_get_fraction(structure, "framerate", &numerator, &denominator) == FALSE ||
         numerator <= 0;
}

Container choose_container(const std::string &file) {
  Container container;
  container.muxer = select_muxer(file);
  container.extension = file.substr(file.rfind('.'));
  container.accepted = template_caps(container.muxer, GST_PAD_SINK);
  container.formats = without_stream_fields(container.accepted);
  // ac3parse accepts audio/ac3, which the depayloader produces, only if the next element does.
  if (accepts(container.formats, "audio/x-ac3"))
    container.formats.reset(
        gst_caps_merge_structure(container.formats.detach(), gst_structure_new_empty("audio/ac3")),
        false);
  container.has_times = container.muxer != "avimux";
  return container;
}

}  // namespace kel::tavren::programs
