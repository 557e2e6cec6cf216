// Records a camera, from the first connection to the last file.

#ifndef TAVREN_PROGRAMS_CAMERA_RECORDER_H
#define TAVREN_PROGRAMS_CAMERA_RECORDER_H

#include <exception>
#include <memory>
#include <string>
#include <vector>

#include <gst/gst.h>

#include "camera/camera_source.h"
#include "camera_connection.h"
#include "progress_display.h"
#include "recording.h"
#include "viewer.h"

namespace kel::tavren::programs {

struct Recorder_Options {
  Camera_Options camera;
  Recording_Options recording;
  gint64 retry = 0;      // how long an absent camera is tried again, in us
  bool view = false;     // show the pictures
  bool verbose = false;  // show how full the queues are, and what elements warn about
  bool quiet = false;    // show nothing but failures
  std::string graph;     // the file to draw the pipeline to; empty: none
};

// One recording, on the default main context.
class Camera_Recorder {
public:
  // Throws what the library throws if the container is not known or an element is missing, and
  // Bus_Error if the file cannot be written.
  explicit Camera_Recorder(const Recorder_Options &options);
  ~Camera_Recorder();

  Camera_Recorder(const Camera_Recorder &) = delete;
  Camera_Recorder &operator=(const Camera_Recorder &) = delete;

  // Records until the duration is over, stop() is called or something fails. In every case a file
  // that was begun is finished first. Throws what ended the recording early.
  void record();

  // Ends the recording; if called again while a file is not finished after a moment, at once. From
  // the main context only.
  void stop() noexcept;

  // The recording's file if it has only one, which is finished; otherwise empty.
  std::string only_file() const {
    const File_Set &files = recording_.files();
    return files.finished() == 1 ? files.last_finished() : std::string();
  }

private:
  static gboolean on_message(GstBus *, GstMessage *message, gpointer recorder) noexcept;
  static gboolean on_tick(gpointer recorder) noexcept;
  template <typename Step>
  void guarded(Step step) noexcept;

  void handle(GstMessage *message);
  void handle_viewer_error(const std::string &text);
  void tick();
  void end_as_asked();
  void finish_at_duration();
  void finish();
  void fail(std::exception_ptr failure) noexcept;
  void show_progress();
  void note_frame();
  void show(guint number, const Stream_Plan &plan, GstSample *sample);
  void take_graph();
  void take_graph_of_failure();
  void report();

  Recorder_Options options_;
  Progress_Display display_;
  boost::intrusive_ptr<GMainLoop> loop_;
  boost::intrusive_ptr<GstElement> pipeline_;
  boost::intrusive_ptr<GSource> bus_watch_;
  Recording recording_;
  Camera_Connection connection_;
  std::unique_ptr<Viewer> viewer_;
  bool may_view_ = false;
  guint viewed_stream_ = 0;
  bool is_finishing_ = false;
  bool ends_at_duration_ = false;
  gint64 finishing_since_ = 0;  // on the monotonic clock in us
  gint64 graph_due_ = 0;        // likewise; 0: the recording has not begun
  gint64 queues_shown_ = 0;     // likewise
  std::exception_ptr failure_;
  std::string graph_;  // empty until it is taken
  bool graph_is_of_failure_ = false;
};

}  // namespace kel::tavren::programs

#endif
