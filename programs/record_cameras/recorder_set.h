// The recorders of all cameras.

#ifndef TAVREN_PROGRAMS_RECORDER_SET_H
#define TAVREN_PROGRAMS_RECORDER_SET_H

#include <map>
#include <memory>
#include <string>

#include "camera_list.h"
#include "event_log.h"
#include "recorder_thread.h"

namespace kel::tavren::programs {

// Starts and stops recorders so that they match a list of cameras. For use in one thread.
class Recorder_Set {
public:
  explicit Recorder_Set(Event_Log &log) : log_(log) {}

  // Starts the cameras that are new in the list, and those that have failed, and ends those that
  // are not in it. A camera whose settings have changed is ended and started again. Other cameras
  // are not affected. Throws std::runtime_error, with the camera's name in the text, if a new
  // camera cannot be started; then nothing has changed.
  void apply(Camera_List cameras);

  // Ends all recordings. A second call does not wait for unfinished files.
  void stop();

  // Removes the recorders that have ended, and starts those that waited for their end. Call this
  // several times a second.
  void tick();

  // Returns whether all recordings have ended.
  bool has_ended() const;
  // Returns whether a recording ended with a failure.
  bool has_failed() const;

  // Returns the status of each camera by its name.
  std::map<std::string, Recorder_Status> statuses() const;

private:
  struct Entry {
    Listed_Camera camera;
    std::unique_ptr<Recorder_Thread> recorder;  // null: could not be created
    std::exception_ptr failure;                 // why

    bool has_ended() const { return !recorder || recorder->has_ended(); }
    bool has_failed() const { return !recorder || recorder->has_failed(); }
  };
  using Entries = std::map<std::string, Entry>;

  Entry make_entry(const Listed_Camera &camera);
  Entry make_entry_or_failure(const Listed_Camera &camera) noexcept;
  bool is_wanted(const std::string &name, const Entry &entry) const;
  bool is_blocked(const std::string &name, const Listed_Camera &camera) const;
  Entries make_new_entries();
  void remove_ended();
  void start_waiting();

  Event_Log &log_;
  Camera_List wanted_;
  Entries entries_;
  bool is_stopping_ = false;
  bool has_failed_ = false;  // one of the removed recorders
};

}  // namespace kel::tavren::programs

#endif
