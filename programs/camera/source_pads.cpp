#include "source_pads.h"

#include <memory>
#include <string>

#include <tavren/capture/media_helper.h>

#include "command_line/program.h"

namespace kel::tavren::programs {

namespace {

struct Pad_Name {
  guint stream = 0;
  guint ssrc = 0;
};

// The source names its pads recv_rtp_src_NUMBER_SSRC_PAYLOADTYPE.
Pad_Name parse_name(GstPad *pad) {
  const std::unique_ptr<char, Emancipator<char>> name(gst_object_get_name(GST_OBJECT(pad)));
  const std::string text = name.get();
  const std::string prefix = "recv_rtp_src_";
  if (text.compare(0, prefix.size(), prefix) != 0)
    throw Bus_Error(GST_RESOURCE_ERROR_FAILED, "no stream of the camera is named " + text);
  const std::string numbers = text.substr(prefix.size());
  std::size_t length = 0;
  const auto stream = static_cast<guint>(std::stoul(numbers, &length));
  return {stream, static_cast<guint>(std::stoul(numbers.substr(length + 1)))};
}

}  // namespace

guint stream_number(GstPad *pad) {
  return parse_name(pad).stream;
}

void remove_source_pad(GstPad *pad) {
  const Pad_Name name = parse_name(pad);
  const boost::intrusive_ptr<GstPad> inner(gst_ghost_pad_get_target(GST_GHOST_PAD(pad)), false);
  if (!inner) return;
  const boost::intrusive_ptr<GstElement> manager(gst_pad_get_parent_element(inner.get()), false);
  if (!manager || g_signal_lookup("clear-ssrc", G_OBJECT_TYPE(manager.get())) == 0) return;
  g_signal_emit_by_name(manager.get(), "clear-ssrc", name.stream, name.ssrc);
  // The source removes only the newest pad of each stream, and only when it stops.
  const boost::intrusive_ptr<GstElement> source(gst_pad_get_parent_element(pad), false);
  if (!source) return;
  gst_pad_set_active(pad, FALSE);
  gst_element_remove_pad(source.get(), pad);
}

}  // namespace kel::tavren::programs
