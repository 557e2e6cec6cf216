// A file with the status of all cameras.

#ifndef TAVREN_PROGRAMS_STATUS_FILE_H
#define TAVREN_PROGRAMS_STATUS_FILE_H

#include <string>
#include <utility>

#include "event_log.h"

namespace kel::tavren::programs {

class Status_File {
public:
  // Writes the first text. The log must outlive this object. Throws std::runtime_error if the file
  // cannot be written.
  Status_File(std::string path, const std::string &text, Event_Log &log);

  // Replaces the file: a reader sees the old or the new text. Logs the first of several failures.
  void write(const std::string &text);

private:
  void replace(const std::string &text) const;

  std::string path_;
  Event_Log &log_;
  bool has_failed_ = false;
};

}  // namespace kel::tavren::programs

#endif
