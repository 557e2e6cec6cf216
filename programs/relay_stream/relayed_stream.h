// One of the camera's streams as it is relayed to viewers.

#ifndef TAVREN_PROGRAMS_RELAYED_STREAM_H
#define TAVREN_PROGRAMS_RELAYED_STREAM_H

#include <memory>
#include <mutex>
#include <vector>

#include <gst/gst.h>
#include <tavren/handles/reference_adapters.h>

#include "camera/camera_streams.h"
#include "key_frame_gate.h"

namespace kel::tavren::programs {

// Receives a stream's frames from consecutive sessions with the camera, and passes them to the
// media that viewers watch. Thread-safe.
class Relayed_Stream {
public:
  explicit Relayed_Stream(Camera_Stream description) : description_(std::move(description)) {}

  const Camera_Stream &description() const noexcept { return description_; }

  // Drops frames until the next key frame. Call this when a session with the camera begins.
  void restart() noexcept;
  // Records the arrival of an RTP packet with the given number of bytes.
  void note_packet(gsize size) noexcept;
  void take(boost::intrusive_ptr<GstSample> frame) noexcept;

  // Returns whether a frame has arrived that viewers can start with.
  bool started() const noexcept;
  // Returns the size of the largest RTP packet in bytes; 0 if none has arrived.
  guint largest_packet() const noexcept;
  // Returns the arrival time of the last frame, on the monotonic clock in us; 0 if none has
  // arrived.
  gint64 last_arrival() const noexcept;

  // Passes frames to an appsrc, beginning with the last key frame. Key frames pass the gate, if
  // there is one.
  void connect(const boost::intrusive_ptr<GstElement> &appsrc,
               std::shared_ptr<Key_Frame_Gate> gate) noexcept;
  void disconnect() noexcept;

private:
  std::shared_ptr<Key_Frame_Gate> gate() const noexcept;
  void pass_on(GstSample *frame) noexcept;

  const Camera_Stream description_;
  mutable std::mutex mutex_;
  boost::intrusive_ptr<GstSample> key_frame_;
  boost::intrusive_ptr<GstElement> appsrc_;
  std::shared_ptr<Key_Frame_Gate> gate_;
  bool waits_for_key_frame_ = true;
  guint largest_packet_ = 0;
  GstClockTime next_time_ = 0;  // for a frame without a timestamp
  gint64 last_arrival_ = 0;
};

using Relayed_Streams = std::vector<std::shared_ptr<Relayed_Stream>>;

}  // namespace kel::tavren::programs

#endif
