// A session with the camera.

#ifndef TAVREN_PROGRAMS_CAMERA_FEED_H
#define TAVREN_PROGRAMS_CAMERA_FEED_H

#include <deque>
#include <exception>
#include <map>
#include <mutex>

#include <gst/app/gstappsink.h>

#include "camera/camera_source.h"
#include "camera/stream_setup.h"
#include "relayed_stream.h"
#include "running_time.h"

namespace kel::tavren::programs {

// Plays the camera and passes each frame to its relayed stream.
class Camera_Feed {
public:
  // Streams of an earlier session continue if the camera offers them again. Does not select the
  // streams that the camera refused before. Propagates the library's exception if an element is
  // missing. Throws Bus_Error if the certificate authorities cannot be read.
  Camera_Feed(const Camera_Options &camera, Transport transport, const Running_Time &time,
              Relayed_Streams known, Refused_Streams refused);
  // Ends the session.
  ~Camera_Feed();

  Camera_Feed(const Camera_Feed &) = delete;
  Camera_Feed &operator=(const Camera_Feed &) = delete;

  // Throws the error that ended the session, if any.
  void check();

  // After a failure, adds the stream that caused it; see Stream_Setup::add_refused().
  bool add_refused(Refused_Streams &refused) const { return setup_.add_refused(refused); }

  // Returns whether the camera has described all its streams.
  bool is_open() const noexcept { return is_open_; }
  // The streams that the camera has described so far.
  Relayed_Streams streams() const;

private:
  static gboolean on_select_stream(GstElement *, guint number, GstCaps *caps,
                                   gpointer data) noexcept;
  static void on_pad_added(GstElement *, GstPad *pad, gpointer data) noexcept;
  static GstPadProbeReturn on_source_packet(GstPad *pad, GstPadProbeInfo *, gpointer data) noexcept;
  static GstPadProbeReturn on_packet(GstPad *, GstPadProbeInfo *info, gpointer stream) noexcept;
  static GstFlowReturn on_frame(GstAppSink *sink, gpointer stream) noexcept;
  template <typename Step>
  void guarded(Step step) noexcept;

  bool select_stream(guint number, GstCaps *offered);
  std::shared_ptr<Relayed_Stream> find_known(const Camera_Stream &description) const;
  void link_stream(GstPad *pad);
  void link_again(GstPad *pad);
  void replace(GstPad *old, GstPad *pad);
  GstElement *add_branch(const std::shared_ptr<Relayed_Stream> &stream);
  GstElement *add_sink(const std::shared_ptr<Relayed_Stream> &stream);
  void handle(GstMessage *message);
  void remove_replaced_pads();
  bool is_silent(guint number) const;

  const Relayed_Streams known_;
  const Refused_Streams refused_;
  Stream_Setup setup_;
  const boost::intrusive_ptr<GstElement> pipeline_;
  GstElement *source_;  // the pipeline owns it
  const boost::intrusive_ptr<GstBus> bus_;
  bool is_open_ = false;

  std::mutex linking_;        // held while a pad is linked to its depayloader
  mutable std::mutex mutex_;  // guards all that follows
  Relayed_Streams streams_;
  std::exception_ptr failure_;
  // By the number of the stream, oldest first.
  std::map<guint, std::deque<boost::intrusive_ptr<GstPad>>> replaced_pads_;
};

}  // namespace kel::tavren::programs

#endif
