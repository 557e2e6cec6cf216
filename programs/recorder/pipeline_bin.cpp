#include "pipeline_bin.h"

#include <vector>

#include <tavren/capture/media_helper.h>

#include "command_line/program.h"

namespace kel::tavren::programs {

using capture::Media_Helper;
using Message = boost::intrusive_ptr<GstMessage>;

Pipeline_Bin::Pipeline_Bin(GstElement *pipeline, const std::string &name)
    : pipeline_(pipeline),
      bin_(Media_Helper::create_and_add_element_to_pipeline("bin", pipeline, name)) {}

Pipeline_Bin::~Pipeline_Bin() {
  stop();
  gst_bin_remove(GST_BIN(pipeline_), bin_.get());
}

GstElement *Pipeline_Bin::add(const std::string &factory, const std::string &name) const {
  return Media_Helper::create_and_add_element_to_bin(factory, bin_.get(), name);
}

//! [start the elements]
// An element that fails to start has already posted the reason on the bus.
void Pipeline_Bin::start() const {
  try {
    Media_Helper::gst_element_sync_state_with_parent_or_throw(bin_.get());
  } catch (const Backend_Error<std::runtime_error> &) {
    if (const Message reason = take_error()) throw Bus_Error(reason.get());
    throw;
  }
}
//! [start the elements]

// Takes the first error of this bin from the bus. The other messages remain there.
Message Pipeline_Bin::take_error() const {
  const boost::intrusive_ptr<GstBus> bus(Media_Helper::gst_element_get_bus_or_throw(pipeline_),
                                         false);
  Message error;
  std::vector<Message> others;
  while (const Message message{gst_bus_pop(bus.get()), false}) {
    const bool is_wanted =
        !error && GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_ERROR && posted(message.get());
    if (is_wanted)
      error = message;
    else
      others.push_back(message);
  }
  for (const Message &message : others)
    gst_bus_post(bus.get(), gst_message_ref(message.get()));
  return error;
}

bool Pipeline_Bin::posted(GstMessage *message) const {
  GstObject *const source = GST_MESSAGE_SRC(message);
  return source != nullptr && (source == GST_OBJECT_CAST(bin_.get()) ||
                               gst_object_has_as_ancestor(source, GST_OBJECT_CAST(bin_.get())));
}

Message forwarded_message(GstMessage *message) {
  if (GST_MESSAGE_TYPE(message) != GST_MESSAGE_ELEMENT) return nullptr;
  const GstStructure *const structure = gst_message_get_structure(message);
  if (structure == nullptr || !gst_structure_has_name(structure, "GstBinForwarded")) return nullptr;
  GstMessage *forwarded = nullptr;
  gst_structure_get(structure, "message", GST_TYPE_MESSAGE, &forwarded, nullptr);
  return Message(forwarded, false);
}

}  // namespace kel::tavren::programs
