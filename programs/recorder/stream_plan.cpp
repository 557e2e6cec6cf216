#include "stream_plan.h"

#include <iomanip>
#include <memory>
#include <optional>
#include <sstream>

#include <tavren/capture/media_helper.h>

#include "camera/camera_streams.h"

namespace kel::tavren::programs {

using capture::Media_Helper;
using capture::MediaType;
using Caps = boost::intrusive_ptr<GstCaps>;

namespace {

using Factories = std::unique_ptr<GList, decltype(&gst_plugin_feature_list_free)>;

std::string factory_name(gpointer factory) {
  return gst_plugin_feature_get_name(GST_PLUGIN_FEATURE(factory));
}

Factories installed(GstElementFactoryListType type) {
  return Factories(gst_element_factory_list_get_elements(type, GST_RANK_MARGINAL),
                   gst_plugin_feature_list_free);
}

bool is_installed(const std::string &factory) {
  return gst_registry_check_feature_version(gst_registry_get(), factory.c_str(), 0, 0, 0) != FALSE;
}

bool intersect(const Caps &one, const Caps &other) {
  return gst_caps_can_intersect(one.get(), other.get()) != FALSE;
}

bool is_named(const Caps &caps, const char *name) {
  return gst_structure_has_name(gst_caps_get_structure(caps.get(), 0), name) != FALSE;
}

std::string describe_refusal(TEC::Tavren_Error_Code code, const std::string &text) {
  std::ostringstream refusal;
  refusal << "0x" << std::hex << std::uppercase << code << ": " << text;
  return refusal.str();
}

std::string text_field(const GstCaps *caps, const char *field) {
  const char *const text = gst_structure_get_string(gst_caps_get_structure(caps, 0), field);
  return text != nullptr ? text : "";
}

//! [choose a depayloader]
// Sets the depayloader or the obstacle.
void choose_depayloader(Stream_Plan &plan, const GstCaps *rtp_caps) {
  try {
    plan.depayloader = Media_Helper::select_proxy_elements(rtp_caps).first;
  } catch (const Backend_Error<std::runtime_error> &error) {
    if (error.code() != TEC::NO_PROXY_ELEMENTS_FOR_CAPS) throw;
    plan.depayloader = find_depayloader(rtp_caps);
    if (plan.depayloader.empty()) plan.obstacle = describe_refusal(error.code(), error.what());
  }
}
//! [choose a depayloader]

// Some depayloaders produce several kinds of media: the camera announces the kind.
bool is_of_media(const Caps &caps, const std::string &media) {
  const std::string name = gst_structure_get_name(gst_caps_get_structure(caps.get(), 0));
  if (media == "video") return name.rfind("video/", 0) == 0 || name.rfind("image/", 0) == 0;
  return media != "audio" || name.rfind("audio/", 0) == 0;
}

std::string select_parser(MediaType kind) {
  const bool is_known = Media_Helper::is_video(kind, false) || Media_Helper::is_audio(kind, false);
  return is_known ? Media_Helper::select_parser(kind) : std::string();
}

// Returns whether a parser accepts the media and can convert it to a format that the container
// supports.
bool leads_to(const std::string &parser, const Caps &media, const Container &container) {
  return intersect(media, template_caps(parser, GST_PAD_SINK)) &&
         intersect(template_caps(parser, GST_PAD_SRC), container.formats);
}

// The headers of these formats are part of the stream. Only a parser moves them to the caps, where
// a muxer expects them. Muxers do not accept audio/ac3, which a parser renames to audio/x-ac3.
bool needs_parser(const Caps &media) {
  return is_named(media, "audio/ac3") || is_named(media, "audio/x-speex") ||
         is_named(media, "audio/x-vorbis") || is_named(media, "video/x-theora");
}

//! [choose a parser]
// Returns the name of the parser for the media; empty if none is needed, nothing if there is none
// that fits.
std::optional<std::string> find_parser(MediaType kind, const Caps &media,
                                       const Container &container) {
  const std::string selected = select_parser(kind);
  const bool passes_unparsed = intersect(media, container.formats) && !needs_parser(media);
  if (selected == "identity")
    return passes_unparsed ? std::optional<std::string>("") : std::nullopt;
  if (!selected.empty() && leads_to(selected, media, container)) return selected;
  const Factories factories = installed(GST_ELEMENT_FACTORY_TYPE_PARSER);
  for (const GList *node = factories.get(); node != nullptr; node = node->next)
    if (leads_to(factory_name(node->data), media, container)) return factory_name(node->data);
  return passes_unparsed ? std::optional<std::string>("") : std::nullopt;
}
//! [choose a parser]

// Returns the element that adds decoding times for a codec that sends frames out of display order,
// if the container stores them.
std::string find_timestamper(const Caps &media, const Container &container) {
  const std::string factory = is_named(media, "video/x-h264")   ? "h264timestamper"
                              : is_named(media, "video/x-h265") ? "h265timestamper"
                                                                : "";
  return container.has_times && is_installed(factory) ? factory : "";
}

// Sets the parser and the fields that depend on the media, or the obstacle.
void choose_parser(Stream_Plan &plan, const Container &container) {
  std::string formats;
  const Caps made = template_caps(plan.depayloader, GST_PAD_SRC);
  for (guint i = 0; i < gst_caps_get_size(made.get()); ++i) {
    const Caps media(gst_caps_copy_nth(made.get(), i), false);
    if (!is_of_media(media, plan.media)) continue;
    const MediaType kind = Media_Helper::get_media_type(media.get());
    if (const auto parser = find_parser(kind, media, container)) {
      plan.parser = *parser;
      plan.has_access_units = is_named(media, "video/x-h264") || is_named(media, "video/x-h265");
      plan.timestamper = find_timestamper(media, container);
      plan.kind = kind;
      return;
    }
    formats = gst_structure_get_name(gst_caps_get_structure(media.get(), 0));
    if (needs_parser(media)) formats += " without a parser";
  }
  plan.obstacle =
      describe_refusal(TEC::ELEMENT_LINK_FAILED, container.name() + " does not hold " +
                                                     (formats.empty() ? plan.encoding : formats));
}

}  // namespace

Stream_Plan plan_stream(GstCaps *rtp_caps, const Container &container) {
  Stream_Plan plan;
  plan.media = text_field(rtp_caps, "media");
  plan.encoding = encoding_name_of(rtp_caps);
  plan.is_metadata = Media_Helper::get_media_type(rtp_caps) == capture::RTP_METADATA;
  if (plan.is_metadata)
    plan.obstacle = "metadata";
  else
    choose_depayloader(plan, rtp_caps);
  if (plan.is_recorded()) choose_parser(plan, container);
  return plan;
}

}  // namespace kel::tavren::programs
