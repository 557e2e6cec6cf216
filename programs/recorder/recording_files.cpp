#include "recording_files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <regex>

#include <glib/gstdio.h>
#include <tavren/handles/emancipator.h>

#include "command_line/program.h"
#include "file_names.h"

namespace kel::tavren::programs {

namespace {

using Text = std::unique_ptr<char, Emancipator<char>>;

constexpr mode_t default_mode = 0666;

[[noreturn]] void refuse(const std::string &path, const std::string &reason) {
  throw Bus_Error(GST_RESOURCE_ERROR_OPEN_WRITE, "cannot write " + path + ": " + reason);
}

bool exists(const std::string &path) {
  return g_file_test(path.c_str(), G_FILE_TEST_EXISTS) != FALSE;
}

std::string folder_of(const std::string &path) {
  return Text(g_path_get_dirname(path.c_str())).get();
}

guint64 free_bytes(const std::string &folder) {
  struct statvfs status = {};
  if (statvfs(folder.c_str(), &status) != 0) return G_MAXUINT64;
  return guint64{status.f_bavail} * status.f_frsize;
}

// Another recorder may be writing to the file.
bool remove_unless_locked(const std::string &path) {
  const int descriptor = g_open(path.c_str(), O_RDONLY | O_CLOEXEC, 0);
  if (descriptor == -1) return false;
  const bool removed = flock(descriptor, LOCK_EX | LOCK_NB) == 0 && g_remove(path.c_str()) == 0;
  close(descriptor);
  return removed;
}

}  // namespace

Reserved_File::Reserved_File(std::string path, bool overwrite) : path_(std::move(path)) {
  const bool existed = exists(path_);
  if (existed && g_file_test(path_.c_str(), G_FILE_TEST_IS_REGULAR) == FALSE)
    refuse(path_, "not a plain file");
  const int flags = O_RDWR | O_CREAT | O_CLOEXEC | (overwrite ? 0 : O_EXCL);
  descriptor_ = g_open(path_.c_str(), flags, default_mode);
  if (descriptor_ == -1)
    refuse(path_,
           errno == EEXIST ? "it exists already; --overwrite replaces it" : g_strerror(errno));
  created_ = !existed;
  if (flock(descriptor_, LOCK_EX | LOCK_NB) == 0) return;
  const std::string reason =
      errno == EWOULDBLOCK ? "another recorder writes it" : g_strerror(errno);
  close(descriptor_);
  refuse(path_, reason);
}

Reserved_File::~Reserved_File() {
  struct stat status = {};
  if (created_ && fstat(descriptor_, &status) == 0 && status.st_size == 0) g_remove(path_.c_str());
  close(descriptor_);
}

Recording_Files::Recording_Files(std::string output, bool overwrite, bool named_by_time)
    : stem_(output.substr(0, output.rfind('.'))), extension_(output.substr(stem_.size())),
      overwrite_(overwrite), named_by_time_(named_by_time) {
  if (!named_by_time_)
    first_ = std::make_unique<Reserved_File>(output, overwrite_);
  else if (g_access(folder_of(output).c_str(), W_OK) != 0)
    refuse(output, g_strerror(errno));
}

std::string Recording_Files::numbered(const std::string &suffix) const {
  return stem_ + suffix + extension_;
}

std::unique_ptr<Reserved_File> Recording_Files::next() {
  std::unique_ptr<Reserved_File> file = std::move(first_);
  if (!file) {
    const std::string prefix = named_by_time_ ? "-" + utc_now_in_name() : "";
    std::string path = named_by_time_ ? numbered(prefix) : numbered("-" + four_digits(++count_));
    // Two files may begin within the same second.
    for (unsigned int i = 1; exists(path) && (named_by_time_ || !overwrite_); ++i)
      path = numbered(prefix + "-" + four_digits(named_by_time_ ? i : ++count_));
    file = std::make_unique<Reserved_File>(path, overwrite_);
  }
  if (!named_by_time_) written_.push_back(file->path());
  return file;
}

// Files that are named by time are searched in the folder, so a restarted recorder continues the
// sequence.
std::vector<std::string> Recording_Files::oldest_first() const {
  if (!named_by_time_) return written_;
  const std::string folder = folder_of(stem_);
  const Text base(g_path_get_basename(stem_.c_str()));
  const std::regex ending(time_ending_pattern);
  std::vector<std::string> names;
  const std::unique_ptr<GDir, decltype(&g_dir_close)> listing(
      g_dir_open(folder.c_str(), 0, nullptr), g_dir_close);
  while (const char *const entry = listing ? g_dir_read_name(listing.get()) : nullptr) {
    const std::string name = entry;
    const std::string start = base.get();
    if (name.size() <= start.size() + extension_.size() || name.rfind(start, 0) != 0 ||
        name.compare(name.size() - extension_.size(), extension_.size(), extension_) != 0)
      continue;
    const std::string middle =
        name.substr(start.size(), name.size() - start.size() - extension_.size());
    if (std::regex_match(middle, ending)) names.push_back(numbered(middle));
  }
  // Compare names without the extension, so that NAME-TIME sorts before NAME-TIME-0001.
  const std::size_t ending_size = extension_.size();
  std::sort(names.begin(), names.end(),
            [ending_size](const std::string &one, const std::string &other) {
              return one.substr(0, one.size() - ending_size) <
                     other.substr(0, other.size() - ending_size);
            });
  return names;
}

std::vector<std::string> Recording_Files::keep_free(guint64 bytes,
                                                    const std::vector<std::string> &in_use) {
  std::vector<std::string> removed;
  const std::string folder = folder_of(stem_);
  if (free_bytes(folder) >= bytes) return removed;
  for (const std::string &path : oldest_first()) {
    if (std::find(in_use.begin(), in_use.end(), path) != in_use.end()) continue;
    if (remove_unless_locked(path)) removed.push_back(path);
    if (free_bytes(folder) >= bytes) break;
  }
  written_.erase(std::remove_if(written_.begin(), written_.end(),
                                [&removed](const std::string &path) {
                                  return std::find(removed.begin(), removed.end(), path) !=
                                         removed.end();
                                }),
                 written_.end());
  return removed;
}

}  // namespace kel::tavren::programs
