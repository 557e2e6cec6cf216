// Reads media files with an independent program.

#ifndef TAVREN_TESTS_MEDIA_CONTENTS_H
#define TAVREN_TESTS_MEDIA_CONTENTS_H

#include <map>
#include <string>
#include <vector>

#include <glib.h>

namespace kel::tavren::tests {

// The contents of a file.
struct Contents {
  std::map<std::string, gint64> frames;  // decoded frames of each codec
  double duration = 0;                   // s

  std::vector<std::string> codecs() const {
    std::vector<std::string> names;
    for (const auto &stream : frames)
      names.push_back(stream.first);
    return names;
  }
};

Contents read_back(const std::string &file);

}  // namespace kel::tavren::tests

#endif
