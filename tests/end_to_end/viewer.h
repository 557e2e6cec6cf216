// A viewer that inspects the RTP packets of one stream.

#ifndef TAVREN_TESTS_VIEWER_H
#define TAVREN_TESTS_VIEWER_H

#include <mutex>
#include <string>
#include <vector>

#include <gst/gst.h>

#include "references.h"

namespace kel::tavren::tests {

struct Packet {
  guint16 number = 0;     // sequence number
  guint32 timestamp = 0;  // in units of the stream's clock
  guint8 first_byte = 0;  // of the payload
  gint64 arrival = 0;     // on the monotonic clock in us

  int h264_unit_type() const { return first_byte & 0x1f; }
};

class Viewer {
public:
  // Plays only the streams of one kind, such as "video".
  Viewer(const std::string &uri, std::string media, const std::string &transport = "tcp");
  ~Viewer();
  Viewer(const Viewer &) = delete;
  Viewer &operator=(const Viewer &) = delete;

  // Waits for the given number of further packets. Returns false after a timeout.
  bool sees(std::size_t packets) const;

  // Returns the error that ended the stream; empty if there is none.
  std::string error() const;

  // Waits until the stream ends in any way. Returns false after a timeout.
  bool sees_end() const;

  std::vector<Packet> packets() const;

  // Returns the steps between the RTP timestamps of the received frames.
  std::vector<gint32> timestamp_steps() const;

private:
  static gboolean select(GstElement *, guint, GstCaps *caps, gpointer viewer) noexcept;
  static void note_packet(GstElement *, GstBuffer *packet, GstPad *, gpointer viewer) noexcept;
  Element element(const char *name) const;
  std::size_t count() const;

  const std::string media_;
  mutable std::mutex mutex_;
  std::vector<Packet> packets_;
  Element pipeline_;
};

}  // namespace kel::tavren::tests

#endif
