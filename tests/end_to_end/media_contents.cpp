#include "media_contents.h"

#include <sstream>

#include <gtest/gtest.h>

#include "child_process.h"

namespace kel::tavren::tests {

Contents read_back(const std::string &file) {
  const Outcome outcome =
      run({"ffprobe", "-v", "error", "-count_frames", "-show_entries",
           "stream=codec_name,nb_read_frames:format=duration", "-of", "default=nw=1", file});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  Contents contents;
  std::string codec;
  std::istringstream lines(outcome.out);
  for (std::string line; std::getline(lines, line);) {
    const std::string key = line.substr(0, line.find('='));
    const std::string value = line.substr(line.find('=') + 1);
    if (key == "codec_name") codec = value;
    if (key == "nb_read_frames")
      contents.frames[codec] = g_ascii_strtoll(value.c_str(), nullptr, 10);
    if (key == "duration") contents.duration = g_ascii_strtod(value.c_str(), nullptr);
  }
  return contents;
}

}  // namespace kel::tavren::tests
