#include "container.h"

#include <memory>

#include <tavren/capture/media_helper.h>

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

Caps without_stream_fields(const Caps &caps) {
  Caps plain(gst_caps_copy(caps.get()), false);
  for (guint i = 0; i < gst_caps_get_size(plain.get()); ++i)
    gst_structure_remove_fields(gst_caps_get_structure(plain.get(), i), "width", "height",
                                "framerate", "rate", "channels", nullptr);
  return plain;
}

}  // namespace

Caps template_caps(const std::string &factory, GstPadDirection direction) {
  const std::unique_ptr<GstElementFactory, decltype(&gst_object_unref)> owned(
      Media_Helper::gst_element_factory_find_or_throw(factory), gst_object_unref);
  Caps all(gst_caps_new_empty(), false);
  for (const GList *node = gst_element_factory_get_static_pad_templates(owned.get());
       node != nullptr; node = node->next) {
    auto *const pad = static_cast<GstStaticPadTemplate *>(node->data);
    if (pad->direction != direction) continue;
    all.reset(gst_caps_merge(all.detach(), gst_static_pad_template_get_caps(pad)), false);
  }
  return all;
}

namespace {

bool is_mpeg1_audio(const GstStructure *structure) {
  int version = 0;
  return gst_structure_has_name(structure, "audio/mpeg") != FALSE &&
         gst_structure_get_int(structure, "mpegversion", &version) != FALSE && version == 1;
}

}  // namespace

Caps complete_caps(const Container &container, const Caps &caps, GstClockTime interval) {
  constexpr int opus_rate = 48000;
  constexpr int default_frame_rate = 25;
  const GstStructure *const structure = gst_caps_get_structure(caps.get(), 0);
  const bool lacks_rate = gst_structure_has_name(structure, "audio/x-opus") != FALSE &&
                          gst_structure_has_field(structure, "rate") == FALSE;
  const bool lacks_frame_rate = needs_frame_rate(container, caps.get());
  // avimux loses every frame of parsed MPEG-1 audio.
  const bool must_look_unparsed = !container.has_times && is_mpeg1_audio(structure);
  if (!lacks_rate && !lacks_frame_rate && !must_look_unparsed) return caps;

  Caps complete(gst_caps_copy(caps.get()), false);
  if (must_look_unparsed)
    gst_caps_set_simple(complete.get(), "parsed", G_TYPE_BOOLEAN, FALSE, nullptr);
  if (lacks_rate) gst_caps_set_simple(complete.get(), "rate", G_TYPE_INT, opus_rate, nullptr);
  if (!lacks_frame_rate) return complete;
  int numerator = default_frame_rate;
  int denominator = 1;
  if (interval != 0)
    gst_util_double_to_fraction(static_cast<double>(GST_SECOND) / static_cast<double>(interval),
                                &numerator, &denominator);
  gst_caps_set_simple(complete.get(), "framerate", GST_TYPE_FRACTION, numerator, denominator,
                      nullptr);
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
  container.has_times = container.muxer != "avimux";
  return container;
}

}  // namespace kel::tavren::programs
