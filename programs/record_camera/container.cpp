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

// The caps of the parsers name no size or frame rate before the stream runs.
Caps without_picture_fields(const Caps &caps) {
  Caps plain(gst_caps_copy(caps.get()), false);
  for (guint i = 0; i < gst_caps_get_size(plain.get()); ++i)
    gst_structure_remove_fields(gst_caps_get_structure(plain.get(), i), "width", "height",
                                "framerate", nullptr);
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

Container choose_container(const std::string &file) {
  Container container;
  container.muxer = select_muxer(file);
  container.extension = file.substr(file.rfind('.'));
  container.accepted = without_picture_fields(template_caps(container.muxer, GST_PAD_SINK));
  container.has_times = container.muxer != "avimux";
  return container;
}

}  // namespace kel::tavren::programs
