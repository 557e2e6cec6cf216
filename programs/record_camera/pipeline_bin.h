// A part of a pipeline that is stopped and removed with its owner.

#ifndef TAVREN_PROGRAMS_PIPELINE_BIN_H
#define TAVREN_PROGRAMS_PIPELINE_BIN_H

#include <string>
#include <utility>

#include <gst/gst.h>
#include <tavren/handles/reference_adapters.h>

namespace kel::tavren::programs {

class Pipeline_Bin {
public:
  // Adds an empty bin to the pipeline, which must outlive this object.
  Pipeline_Bin(GstElement *pipeline, const std::string &name);
  // Stops the bin and removes it.
  ~Pipeline_Bin();

  Pipeline_Bin(const Pipeline_Bin &) = delete;
  Pipeline_Bin &operator=(const Pipeline_Bin &) = delete;

  GstElement *element() const noexcept { return bin_.get(); }

  // Makes an element in the bin (transfer none).
  GstElement *add(const std::string &factory, const std::string &name = "") const;

  // Brings the bin to the pipeline's state. Throws the Bus_Error of the element that could not
  // start, if it reported one, otherwise what the library throws.
  void start() const;

  // Stops the bin; nothing calls back afterwards.
  void stop() const noexcept { gst_element_set_state(bin_.get(), GST_STATE_NULL); }

  // Whether an element of the bin, or the bin, posted a message.
  bool posted(GstMessage *message) const;

private:
  boost::intrusive_ptr<GstMessage> take_error() const;

  GstElement *pipeline_;
  boost::intrusive_ptr<GstElement> bin_;
};

// The message of an element that a bin with "message-forward" has posted; null for another message.
boost::intrusive_ptr<GstMessage> forwarded_message(GstMessage *message);

}  // namespace kel::tavren::programs

#endif
