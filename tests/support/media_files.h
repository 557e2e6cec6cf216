// Real media for tests: the framework creates the files in a separate folder for each test.

#ifndef TAVREN_TESTS_MEDIA_FILES_H
#define TAVREN_TESTS_MEDIA_FILES_H

#include <string>

namespace kel::tavren::tests {

// A new folder that is removed with its contents.
class Media_Folder {
public:
  Media_Folder();
  ~Media_Folder();

  Media_Folder(const Media_Folder &) = delete;
  Media_Folder &operator=(const Media_Folder &) = delete;

  std::string path(const std::string &file) const;
  std::string uri(const std::string &file) const;

  // Runs a pipeline to EOS. Its element "file" is the sink that writes the file.
  void record(const std::string &file, const std::string &pipeline) const;
  void write(const std::string &file, const std::string &contents) const;
  std::string read(const std::string &file) const;

  // 2 s of a 64x48 picture as JPEG and one channel of mu-law, in Matroska.
  void record_video_and_audio(const std::string &file) const;
  // 2 s of two pictures of different sizes as JPEG, in Matroska.
  void record_two_videos(const std::string &file) const;
  // 2 s of one channel of mu-law, in Matroska.
  void record_audio(const std::string &file) const;
  // One picture of 64x48 as PNG.
  void record_image(const std::string &file) const;

private:
  std::string folder_;
};

}  // namespace kel::tavren::tests

#endif
