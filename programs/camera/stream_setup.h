// Finds the stream that a camera refuses to set up.

#ifndef TAVREN_PROGRAMS_STREAM_SETUP_H
#define TAVREN_PROGRAMS_STREAM_SETUP_H

#include <map>
#include <mutex>
#include <string>

#include <gst/gst.h>

namespace kel::tavren::programs {

// The reasons why streams are not selected, by their numbers: the status with which the camera
// refused each of them, such as 404 Not Found.
using Refused_Streams = std::map<guint, std::string>;

// Observes how an RTSP source sets up its streams. rtspsrc ends the session if the camera refuses
// one of them: to receive the others, the program connects again and does not select this one.
class Stream_Setup {
public:
  // The source was created by add_camera_source() and must be stopped before this object is
  // destroyed.
  void observe(GstElement *source);

  // Must be called for each stream that the source offers for selection.
  void note_offer(guint number);

  // Adds the stream that the camera refused last, if it has refused one, and if the camera
  // describes streams that are not among those already refused. Returns whether it was added. Adds
  // none with GStreamer 1.18, which cannot omit a stream.
  bool add_refused(Refused_Streams &refused) const;

private:
  void note_response(guint status);
  static void on_description(GstElement *, gpointer description, gpointer setup) noexcept;

  mutable std::mutex mutex_;
  guint described_ = 0;  // number of video and audio streams
  guint offered_ = 0;    // the stream that was offered last
  guint status_ = 0;     // of the last response to SETUP
};

}  // namespace kel::tavren::programs

#endif
