// The file names of a recording, and the disk space that it may use.

#ifndef TAVREN_PROGRAMS_RECORDING_FILES_H
#define TAVREN_PROGRAMS_RECORDING_FILES_H

#include <memory>
#include <string>
#include <vector>

#include <glib.h>

namespace kel::tavren::programs {

// A file that only this process writes. It exists and is locked while this object exists.
class Reserved_File {
public:
  // Throws Bus_Error if the file exists and must not be overwritten, if another recorder is writing
  // it, or if it cannot be written. Accepts regular files only: other kinds could block the
  // recording.
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

// Names the files of a recording: NAME.EXT, NAME-0001.EXT and so on, or NAME-20261231T235959Z.EXT
// with the UTC time at which the file begins.
class Recording_Files {
public:
  // Reserves the first file if its name does not depend on the time, so that an invalid name is
  // reported first. Throws the exceptions of Reserved_File.
  Recording_Files(std::string output, bool overwrite, bool named_by_time);

  // Reserves the next file. Throws the exceptions of Reserved_File.
  std::unique_ptr<Reserved_File> next();

  // Removes the oldest files of the recording until the given number of bytes is free on their file
  // system. If files are named by time, this includes files of earlier runs. Does not remove files
  // that are in use. Returns the removed paths.
  std::vector<std::string> keep_free(guint64 bytes, const std::vector<std::string> &in_use);

private:
  std::string numbered(const std::string &suffix) const;
  std::vector<std::string> oldest_first() const;

  std::string stem_;       // with the folder
  std::string extension_;  // with the dot
  bool overwrite_;
  bool named_by_time_;
  unsigned int count_ = 0;
  std::unique_ptr<Reserved_File> first_;
  std::vector<std::string> written_;
};

}  // namespace kel::tavren::programs

#endif
