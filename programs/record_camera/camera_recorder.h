// Records a camera's RTSP stream into a file.

#ifndef TAVREN_PROGRAMS_CAMERA_RECORDER_H
#define TAVREN_PROGRAMS_CAMERA_RECORDER_H

#include <memory>
#include <string>

#include <gst/gst.h>

namespace kel::tavren::programs {

// What to record and where to.
struct Recording_Options {
  std::string uri;            // the camera's, rtsp://…
  std::string output;         // the file; its extension chooses the container
  GstClockTime duration = 0;  // of the recording in ns; 0: until stopped
  bool verbose = false;       // tell how full the queues are, and what elements warn about
  std::string graph;          // where to draw the running pipeline; empty: nowhere
};

// What became of a recording.
struct Recording_Result {
  GstClockTime duration = 0;         // of what was recorded, in ns
  guint64 bytes = 0;                 // written to the file
  unsigned int viewed_pictures = 0;  // decoded for the viewer that joined meanwhile
};

// One recording, from the main context of the thread that makes it.
//
// The pipeline: each of the camera's streams is depayloaded and parsed; video goes through a tee,
// on which the recording branch hangs and, once the recording runs, a viewer; all streams meet in a
// multiqueue and end in one muxer and one file.
class Camera_Recorder {
public:
  // Throws what the library throws when the file's container is not known or an element is missing.
  explicit Camera_Recorder(const Recording_Options &options);
  ~Camera_Recorder();

  Camera_Recorder(const Camera_Recorder &) = delete;
  Camera_Recorder &operator=(const Camera_Recorder &) = delete;

  // Records until the duration is over, stop() is called or something fails. Whatever happens, a
  // file that was begun is finished before this returns. Throws nothing of what happened to the
  // camera: see rethrow_failure().
  void record();

  // Ends the recording properly; when called again and the file is still not finished after a
  // moment, at once. From the main context only.
  void stop() noexcept;

  // Throws what ended the recording before its time, if anything did.
  void rethrow_failure() const;

  // What became of the recording; of use once record() has returned.
  Recording_Result result() const;

private:
  class Session;
  std::unique_ptr<Session> session_;
};

}  // namespace kel::tavren::programs

#endif
