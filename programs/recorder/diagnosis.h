// Diagnoses of failures, for recorders that nobody watches.

#ifndef TAVREN_PROGRAMS_DIAGNOSIS_H
#define TAVREN_PROGRAMS_DIAGNOSIS_H

#include <deque>
#include <exception>
#include <map>
#include <mutex>
#include <string>

#include <gst/gst.h>

#include "camera/camera_address.h"

namespace kel::tavren::programs {

// The last messages on a pipeline's bus.
class Bus_History {
public:
  // Adds a message (transfer none). Omits changes of states and the application's messages, which
  // are frequent.
  void add(GstMessage *message);
  // Returns one line for each message, the oldest first.
  std::string text() const;

private:
  std::deque<std::string> lines_;
};

// The texts of a diagnosis by their file names.
using Diagnosis = std::map<std::string, std::string>;

// Describes a failure and the current state of the pipeline: the error, the last messages, the
// graph, the fill levels of queues, the caps of the streams, and the versions of the plugins.
Diagnosis diagnose(GstBin *pipeline, const std::exception_ptr &failure, const Bus_History &history);

// A folder with a folder for each of the last failures. Can be used from any thread.
class Diagnosis_Folder {
public:
  // Creates the folder if necessary. `limit` is the number of diagnoses to keep. Throws
  // std::runtime_error if the folder is not writable.
  Diagnosis_Folder(std::string path, unsigned int limit);

  // Writes a diagnosis to a folder NAME-TIME, without the credentials of the address, and removes
  // the oldest diagnoses. Returns the path of the new folder. Throws std::runtime_error if it
  // cannot be written.
  std::string write(const std::string &name, const Diagnosis &diagnosis,
                    const Camera_Address &address);

private:
  std::string make_folder(const std::string &name) const;
  void remove_oldest() const;

  std::string path_;
  unsigned int limit_;
  std::mutex mutex_;
};

}  // namespace kel::tavren::programs

#endif
