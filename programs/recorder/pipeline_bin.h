// A part of a pipeline that its owner stops and removes.

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

  // Creates an element in the bin (transfer none).
  GstElement *add(const std::string &factory, const std::string &name = "") const;

  // Sets the bin to the pipeline's state. If that fails, throws Bus_Error with the error that an
  // element posted, otherwise propagates the library's exception.
  void start() const;

  // Stops the bin. No callback is called afterwards.
  void stop() const noexcept { gst_element_set_state(bin_.get(), GST_STATE_NULL); }

  // Returns whether the bin or one of its elements posted a message.
  bool posted(GstMessage *message) const;

private:
  boost::intrusive_ptr<GstMessage> take_error() const;

  GstElement *pipeline_;
  boost::intrusive_ptr<GstElement> bin_;
};

// Returns the message that a bin with "message-forward" has forwarded, or null if the message is
// not a forwarded one.
boost::intrusive_ptr<GstMessage> forwarded_message(GstMessage *message);

}  // namespace kel::tavren::programs

#endif
