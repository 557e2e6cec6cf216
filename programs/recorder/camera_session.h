// One connection to a camera.

#ifndef TAVREN_PROGRAMS_CAMERA_SESSION_H
#define TAVREN_PROGRAMS_CAMERA_SESSION_H

#include <condition_variable>
#include <deque>
#include <exception>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include <gst/app/gstappsink.h>
#include <gst/gst.h>

#include "camera/camera_source.h"
#include "camera/stream_clock.h"
#include "camera/stream_setup.h"
#include "pipeline_bin.h"
#include "stream_plan.h"

namespace kel::tavren::programs {

// An event of a session. Events are reported in the order in which they occur.
struct Camera_Event {
  enum class Kind {
    offered,    // the camera offers a stream: number and plan
    frame,      // number and sample
    restarted,  // the stream restarts with another SSRC: number
    ended,      // the camera ended a stream: number
    failed      // failure
  };
  Kind kind = Kind::failed;
  guint number = 0;  // of the stream, as the camera describes it
  Stream_Plan plan;
  boost::intrusive_ptr<GstSample> sample;
  std::exception_ptr failure;
};

// A bin in the pipeline with the RTSP source and, for each stream, a depayloader, a parser and an
// appsink.
//
// The threads of the bin report events. The main context fetches them several times a second:
// waking it for each frame would cost more than the rest of the recording. For other events, the
// threads also post an application message with the name below, so that they are fetched at once.
class Camera_Session {
public:
  static constexpr const char *events_message = "camera-events";

  // Does not select the streams that the camera refused before. Propagates exceptions of the
  // library. Throws Bus_Error if a certificate file cannot be read.
  Camera_Session(GstElement *pipeline, const Camera_Options &options, Transport transport,
                 const Container &container, Refused_Streams refused);
  // Ends the session with the camera.
  ~Camera_Session();

  Camera_Session(const Camera_Session &) = delete;
  Camera_Session &operator=(const Camera_Session &) = delete;

  // Connects. Later failures are reported as events or as messages on the bus.
  void start() { bin_.start(); }

  std::deque<Camera_Event> take_events();

  // After a failure, adds the stream that caused it; see Stream_Setup::add_refused().
  bool add_refused(Refused_Streams &refused) const { return setup_.add_refused(refused); }

  // Removes the branches of the stream that were replaced, except for the newest.
  void remove_old_branches(guint number);

  // While the session is held back, its threads block before they deliver a frame.
  void hold_back(bool held) noexcept;

  // Returns whether a message is about this session.
  bool owns(GstMessage *message) const { return bin_.posted(message); }

private:
  // The elements from a stream's source pad to its appsink. A new SSRC gets a new branch.
  struct Branch {
    Camera_Session *session = nullptr;
    guint number = 0;
    bool is_current = true;
    bool is_built = false;
    bool is_removed = false;
    std::shared_ptr<Shared_Stream_Clock> clock;
    boost::intrusive_ptr<GstPad> source;  // the camera's, linked to the depayloader
    std::vector<GstElement *> elements;   // owned by the bin, downstream elements first
  };

  static gboolean on_select_stream(GstElement *, guint number, GstCaps *caps,
                                   gpointer session) noexcept;
  static void on_pad_added(GstElement *, GstPad *pad, gpointer session) noexcept;
  static GstFlowReturn on_sample(GstAppSink *sink, gpointer data) noexcept;
  static void on_end(GstAppSink *, gpointer data) noexcept;

  bool select_stream(guint number, GstCaps *offered);
  void add_branch(GstPad *pad);
  void build_branch(Branch &branch, const Stream_Plan &plan);
  void configure_parser(GstElement *parser) const;
  GstElement *add_frame_sink(Branch &branch);
  void add_event(Camera_Event event);
  void deliver(Branch &branch, Camera_Event event);
  bool takes_over(Branch &branch);
  void add_restart(guint number);
  template <typename Step>
  void guarded(Step step) noexcept;

  GstElement *pipeline_;
  const Container &container_;
  const Refused_Streams refused_;
  Stream_Setup setup_;
  Pipeline_Bin bin_;
  GstElement *source_;  // the bin owns it

  std::mutex mutex_;  // guards all that follows
  std::condition_variable released_;
  bool held_back_ = false;
  bool closing_ = false;
  std::map<guint, Stream_Plan> plans_;
  std::map<guint, std::shared_ptr<Shared_Stream_Clock>> clocks_;
  std::list<Branch> branches_;
  std::map<guint, gint64> delivered_at_;  // a stream's last event, on the monotonic clock in us
  std::deque<Camera_Event> events_;
};

}  // namespace kel::tavren::programs

#endif
