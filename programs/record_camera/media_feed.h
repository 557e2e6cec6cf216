// A stream of media that the program pushes into a pipeline.

#ifndef TAVREN_PROGRAMS_MEDIA_FEED_H
#define TAVREN_PROGRAMS_MEDIA_FEED_H

#include <string>

#include <gst/gst.h>
#include <tavren/handles/reference_adapters.h>

namespace kel::tavren::programs {

// A source pad that belongs to no element and feeds one element's "sink" pad. The element must be a
// queue: the program's thread never waits for what is behind it. A refused buffer or event is
// dropped; the element that refused it reports why on the bus.
class Media_Feed {
public:
  // Links the pad. Throws what the library throws if the element refuses the caps.
  Media_Feed(GstElement *queue, const boost::intrusive_ptr<GstCaps> &caps);
  // Unlinks the pad.
  ~Media_Feed();

  Media_Feed(const Media_Feed &) = delete;
  Media_Feed &operator=(const Media_Feed &) = delete;

  // Announces the stream, whose running time 0 is at start in ns. Once, after the elements have
  // been started.
  void begin(const std::string &stream_id, GstClockTime start);
  // Pushes a buffer (transfer full).
  void push(GstBuffer *buffer) noexcept { gst_pad_push(pad_.get(), buffer); }
  void set_caps(const boost::intrusive_ptr<GstCaps> &caps) noexcept;
  // Ends the stream; once.
  void end() noexcept { gst_pad_push_event(pad_.get(), gst_event_new_eos()); }

private:
  boost::intrusive_ptr<GstPad> pad_;
  boost::intrusive_ptr<GstCaps> caps_;
};

}  // namespace kel::tavren::programs

#endif
