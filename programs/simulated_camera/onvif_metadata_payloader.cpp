#include "onvif_metadata_payloader.h"

#include <algorithm>

#include <gst/rtp/rtp.h>

namespace {

gboolean set_caps(GstRTPBasePayload *payloader, GstCaps *) {
  gst_rtp_base_payload_set_options(payloader, "application", TRUE, "VND.ONVIF.METADATA", 90000);
  return gst_rtp_base_payload_set_outcaps(payloader, nullptr);
}

// Splits a document into packets. The marker bit is set on the last one.
GstFlowReturn handle_buffer(GstRTPBasePayload *payloader, GstBuffer *document) {
  const gsize size = gst_buffer_get_size(document);
  const gsize payload_size =
      gst_rtp_buffer_calc_payload_len(GST_RTP_BASE_PAYLOAD_MTU(payloader), 0, 0);
  GstBufferList *const packets = gst_buffer_list_new();
  for (gsize offset = 0; offset < size; offset += payload_size) {
    const gsize length = std::min(payload_size, size - offset);
    GstBuffer *packet = gst_rtp_base_payload_allocate_output_buffer(payloader, 0, 0, 0);
    GstRTPBuffer rtp = GST_RTP_BUFFER_INIT;
    gst_rtp_buffer_map(packet, GST_MAP_WRITE, &rtp);
    gst_rtp_buffer_set_marker(&rtp, offset + length == size);
    gst_rtp_buffer_unmap(&rtp);
    packet = gst_buffer_append(
        packet, gst_buffer_copy_region(document, GST_BUFFER_COPY_MEMORY, offset, length));
    GST_BUFFER_PTS(packet) = GST_BUFFER_PTS(document);
    gst_buffer_list_add(packets, packet);
  }
  gst_buffer_unref(document);
  return gst_rtp_base_payload_push_list(payloader, packets);
}

void init_class(gpointer type, gpointer) {
  GstElementClass *const element_class = GST_ELEMENT_CLASS(type);
  const auto add_template = [element_class](const char *name, GstPadDirection direction,
                                            const char *description) {
    GstCaps *const caps = gst_caps_from_string(description);
    gst_element_class_add_pad_template(element_class,
                                       gst_pad_template_new(name, direction, GST_PAD_ALWAYS, caps));
    gst_caps_unref(caps);
  };
  add_template("sink", GST_PAD_SINK, "application/x-onvif-metadata");
  add_template("src", GST_PAD_SRC,
               "application/x-rtp, media=application, payload=[96,127], clock-rate=90000, "
               "encoding-name=VND.ONVIF.METADATA");
  gst_element_class_set_static_metadata(
      element_class, "ONVIF metadata payloader", "Codec/Payloader/Network/RTP",
      "Sends ONVIF metadata documents over RTP", "The simulated camera");
  GstRTPBasePayloadClass *const payload_class = GST_RTP_BASE_PAYLOAD_CLASS(type);
  payload_class->set_caps = set_caps;
  payload_class->handle_buffer = handle_buffer;
}

GType payloader_type() {
  static const GType type = g_type_register_static_simple(
      GST_TYPE_RTP_BASE_PAYLOAD, "OnvifMetadataPayloader", sizeof(GstRTPBasePayloadClass),
      init_class, sizeof(GstRTPBasePayload), nullptr, static_cast<GTypeFlags>(0));
  return type;
}

}  // namespace

namespace kel::tavren::programs {

void register_onvif_metadata_payloader() {
  gst_element_register(nullptr, "onvifmetadatapay", GST_RANK_NONE, payloader_type());
}

}  // namespace kel::tavren::programs
