// The names of a recording's files, and the space that they may take.

#ifndef TAVREN_PROGRAMS_RECORDING_FILES_H
#define TAVREN_PROGRAMS_RECORDING_FILES_H

#include <memory>
#include <string>
#include <vector>

#include <glib.h>

namespace kel::tavren::programs {

// A file that this process alone writes: it exists and is locked from now on.
class Reserved_File {
public:
  // Throws Bus_Error if the file exists and must not be overwritten, if another recorder writes it,
  // or if it cannot be written. Only plain files are written: another could block the recording.
  Reserved_File(std::string path, bool overwrite);
  // Releases the lock, and removes the file if it was created here and is still empty.
  ~Reserved_File();

  Reserved_File(const Reserved_File &) = delete;
  Reserved_File &operator=(const Reserved_File &) = delete;

  const std::string &path() const noexcept { return path_; }

private:
  std::string path_;
  bool created_ = false;
  int descriptor_ = -1;
};

// Names the files of a recording: NAME.EXT, NAME-0001.EXT and so on, or with the UTC time at which
// each begins, NAME-20261231T235959Z.EXT.
class Recording_Files {
public:
  // Reserves the first file if its name does not depend on the time, so that a bad name is reported
  // before anything else is done. Throws what Reserved_File throws.
  Recording_Files(std::string output, bool overwrite, bool named_by_time);

  // Reserves the next file. Throws what Reserved_File throws.
  std::unique_ptr<Reserved_File> next();

  // Removes the oldest files of the recording, those of earlier runs included if they are named by
  // time, until so many bytes are free on their file system. Returns the paths removed. The files
  // in use stay.
  std::vector<std::string> keep_free(guint64 bytes, const std::vector<std::string> &in_use);

private:
  std::string numbered(const std::string &suffix) const;
  std::vector<std::string> oldest_first() const;

  std::string stem_;       // with its folder
  std::string extension_;  // with its dot
  bool overwrite_;
  bool named_by_time_;
  unsigned int count_ = 0;
  std::unique_ptr<Reserved_File> first_;
  std::vector<std::string> written_;
};

}  // namespace kel::tavren::programs

#endif
