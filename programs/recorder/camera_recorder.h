// Records a camera, from the first connection to the last file.

#ifndef TAVREN_PROGRAMS_CAMERA_RECORDER_H
#define TAVREN_PROGRAMS_CAMERA_RECORDER_H

#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <gst/gst.h>

#include "camera/camera_source.h"
#include "camera_connection.h"
#include "diagnosis.h"
#include "recorder_log.h"
#include "recorder_status.h"
#include "recording.h"
#include "viewer.h"

namespace kel::tavren::programs {

struct Recorder_Options {
  std::string name = "camera";  // of the camera, in diagnoses
  Camera_Options camera;
  Recording_Options recording;
  gint64 retry = 0;      // time during which an unavailable camera is retried, in us
  bool view = false;     // show the pictures
  bool verbose = false;  // report the fill levels of the queues, and warnings of elements
  std::string graph;     // file for the drawing of the pipeline; empty: none
  std::shared_ptr<Diagnosis_Folder> diagnoses;  // null: failures are not diagnosed
};

// One recording, on a main context.
class Camera_Recorder {
public:
  // A null context means the default context. The log must outlive this object. Propagates the
  // library's exception if the container is unknown or an element is missing. Throws Bus_Error if
  // the file cannot be written.
  Camera_Recorder(const Recorder_Options &options, GMainContext *context, Recorder_Log &log);
  ~Camera_Recorder();

  Camera_Recorder(const Camera_Recorder &) = delete;
  Camera_Recorder &operator=(const Camera_Recorder &) = delete;

  // Runs the main context and records until the duration is over, stop() is called or an error
  // occurs. In all cases, finishes the open file first. Throws the error that ended the recording
  // early.
  void record();

  // Ends the recording. A later call ends it at once if a file is still unfinished some time after
  // the first call. Call this only from the main context.
  void stop() noexcept;

  // Returns whether anything has been recorded.
  bool has_begun() const noexcept { return recording_.has_begun(); }

  // Returns the status, which is at most a second old. Can be called from any thread.
  Recorder_Status status() const;

  // Returns the recording's file if it is finished and the only one; otherwise an empty string.
  std::string only_file() const {
    const File_Set &files = recording_.files();
    return files.finished() == 1 ? files.last_finished() : std::string();
  }

private:
  static gboolean on_message(GstBus *, GstMessage *message, gpointer recorder) noexcept;
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
  void examine(const std::exception_ptr &failure);
  void publish_status();
  void report();

  Recorder_Options options_;
  Recorder_Log &log_;
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
  gint64 finishing_since_ = 0;   // on the monotonic clock, in us
  gint64 graph_due_ = 0;         // same unit; 0: the recording has not begun
  gint64 progress_shown_ = 0;    // same unit
  gint64 queues_shown_ = 0;      // same unit
  gint64 status_published_ = 0;  // same unit
  std::exception_ptr failure_;
  std::string graph_;  // empty until the graph is taken
  bool graph_is_of_failure_ = false;
  Bus_History bus_history_;
  mutable std::mutex status_mutex_;
  Recorder_Status status_;  // guarded by the mutex
};

}  // namespace kel::tavren::programs

#endif
