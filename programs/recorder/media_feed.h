// A stream that the program pushes into a pipeline.

#ifndef TAVREN_PROGRAMS_MEDIA_FEED_H
#define TAVREN_PROGRAMS_MEDIA_FEED_H

#include <memory>
#include <string>

#include <gst/gst.h>
#include <tavren/handles/reference_adapters.h>

namespace kel::tavren::programs {

// A source pad without a parent element that feeds the "sink" pad of one element. The element must
// be a queue, so that the program's thread never waits for the elements downstream. If a buffer or
// event is refused, it is dropped, and the element that refused it reports the reason on the bus.
class Media_Feed {
public:
  // Links the pad. Propagates the library's exception if the element refuses the caps.
  Media_Feed(GstElement *queue, const boost::intrusive_ptr<GstCaps> &caps);
  // Unlinks the pad.
  ~Media_Feed();

  Media_Feed(const Media_Feed &) = delete;
  Media_Feed &operator=(const Media_Feed &) = delete;

  // Announces the stream; `start`, in ns, corresponds to running time 0. Call this once, after the
  // elements have been started.
  void begin(const std::string &stream_id, GstClockTime start);
  // Adds a buffer (transfer full), which flush() pushes.
  void add(GstBuffer *buffer) noexcept;
  // Pushes the added buffers together, which wakes the thread of the queue only once.
  void flush() noexcept;
  void set_caps(const boost::intrusive_ptr<GstCaps> &caps) noexcept;
  // Flushes and ends the stream. Call this once.
  void end() noexcept;

private:
  struct Release {
    void operator()(GstBufferList *buffers) const noexcept { gst_buffer_list_unref(buffers); }
  };

  boost::intrusive_ptr<GstPad> pad_;
  std::unique_ptr<GstBufferList, Release> buffers_;  // null: there are none
  boost::intrusive_ptr<GstCaps> caps_;
};

}  // namespace kel::tavren::programs

#endif
