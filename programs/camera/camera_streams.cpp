#include "camera_streams.h"

#include <memory>
#include <tuple>

#include <gst/rtp/gstrtppayloads.h>
#include <tavren/capture/media_helper.h>

namespace kel::tavren::programs {

using capture::Media_Helper;
using Caps = boost::intrusive_ptr<GstCaps>;

namespace {

using Factories = std::unique_ptr<GList, decltype(&gst_plugin_feature_list_free)>;

// Returns the name of the first installed factory of the given type that passes the test; empty if
// there is none.
template <typename Test>
std::string find_factory(GstElementFactoryListType type, Test accepts) {
  const Factories factories(gst_element_factory_list_get_elements(type, GST_RANK_MARGINAL),
                            gst_plugin_feature_list_free);
  for (const GList *node = factories.get(); node != nullptr; node = node->next) {
    GstElementFactory *const factory = GST_ELEMENT_FACTORY(node->data);
    if (accepts(factory)) return gst_plugin_feature_get_name(GST_PLUGIN_FEATURE(factory));
  }
  return {};
}

// Returns the caps fields that the payloader's packets must share with the stream's packets.
Caps payload_caps(GstCaps *rtp_caps) {
  const char *const media = gst_structure_get_string(gst_caps_get_structure(rtp_caps, 0), "media");
  return Caps(gst_caps_new_simple("application/x-rtp", "encoding-name", G_TYPE_STRING,
                                  encoding_name_of(rtp_caps).c_str(), "media", G_TYPE_STRING,
                                  media != nullptr ? media : "", nullptr),
              false);
}

// Finds a payloader that turns the depayloader's output back into the stream's packets.
std::string find_payloader(GstCaps *rtp_caps, const std::string &depayloader) {
  const Caps packets = payload_caps(rtp_caps);
  const Caps media = template_caps(depayloader, GST_PAD_SRC);
  return find_factory(GST_ELEMENT_FACTORY_TYPE_PAYLOADER, [&](GstElementFactory *factory) {
    return gst_element_factory_can_src_any_caps(factory, packets.get()) &&
           gst_element_factory_can_sink_any_caps(factory, media.get());
  });
}

// Chooses elements from the registry for a stream that is not in the library's tables. Returns
// false if there are none.
bool find_elements(Camera_Stream &stream) {
  stream.depayloader = find_depayloader(stream.caps.get());
  if (!stream.depayloader.empty())
    stream.payloader = find_payloader(stream.caps.get(), stream.depayloader);
  if (stream.payloader.empty()) stream.depayloader.clear();
  return stream.relayed();
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

std::string find_depayloader(const GstCaps *rtp_caps) {
  return find_factory(GST_ELEMENT_FACTORY_TYPE_DEPAYLOADER, [&](GstElementFactory *factory) {
    return gst_element_factory_can_sink_all_caps(factory, rtp_caps);
  });
}

boost::intrusive_ptr<GstCaps> offered_rtp_caps(GstCaps *offered) {
  boost::intrusive_ptr<GstCaps> caps(gst_caps_copy(offered), false);
  gst_structure_set_name(gst_caps_get_structure(caps.get(), 0), "application/x-rtp");
  return caps;
}

std::string encoding_name_of(GstCaps *rtp_caps) {
  std::string name = Media_Helper::get_encoding_name_from_caps(rtp_caps);
  if (!name.empty()) return name;
  int type = -1;
  gst_structure_get_int(gst_caps_get_structure(rtp_caps, 0), "payload", &type);
  const bool is_static = type >= 0 && GST_RTP_PAYLOAD_IS_DYNAMIC(type) == 0;
  const GstRTPPayloadInfo *const info =
      is_static ? gst_rtp_payload_info_for_pt(static_cast<guint8>(type)) : nullptr;
  return info != nullptr ? info->encoding_name : "payload type " + std::to_string(type);
}

Camera_Stream describe_stream(guint number, GstCaps *offered) {
  Camera_Stream stream{number, offered_rtp_caps(offered), {}, {}, {}};
  GstCaps *const caps = stream.caps.get();
  if (Media_Helper::get_media_type(caps) == capture::RTP_METADATA) {
    stream.obstacle = "metadata is not media";
    return stream;
  }
  try {
    std::tie(stream.depayloader, stream.payloader) = Media_Helper::select_proxy_elements(caps);
  } catch (const Backend_Error<std::runtime_error> &error) {
    if (error.code() != TEC::NO_PROXY_ELEMENTS_FOR_CAPS) throw;
    if (!find_elements(stream)) stream.obstacle = error.what();
  }
  return stream;
}

}  // namespace kel::tavren::programs
