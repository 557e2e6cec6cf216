// A folder for the files of one test.

#ifndef TAVREN_TESTS_SCRATCH_FOLDER_H
#define TAVREN_TESTS_SCRATCH_FOLDER_H

#include <filesystem>
#include <string>
#include <vector>

#include <glib.h>

namespace kel::tavren::tests {

// Removed with its contents at the end of the test.
class Scratch_Folder {
public:
  Scratch_Folder() {
    char *const path = g_dir_make_tmp("tavren_XXXXXX", nullptr);
    path_ = path;
    g_free(path);
  }
  ~Scratch_Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  Scratch_Folder(const Scratch_Folder &) = delete;
  Scratch_Folder &operator=(const Scratch_Folder &) = delete;

  std::string file(const std::string &name) const { return path_ + "/" + name; }

  // Returns the current files.
  std::vector<std::string> list() const {
    std::vector<std::string> files;
    for (const auto &entry : std::filesystem::directory_iterator(path_))
      files.push_back(entry.path().string());
    return files;
  }

private:
  std::string path_;
};

}  // namespace kel::tavren::tests

#endif
