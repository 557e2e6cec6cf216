#include "media_files.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

#include <gst/gst.h>
#include <gtest/gtest.h>

#include "elements.h"

namespace kel::tavren::tests {

namespace {

using Text = std::unique_ptr<char, decltype(&g_free)>;

}  // namespace

Media_Folder::Media_Folder() {
  const Text folder(g_dir_make_tmp("media-XXXXXX", nullptr), g_free);
  if (folder == nullptr) throw std::runtime_error("cannot create a folder for media");
  folder_ = folder.get();
}

Media_Folder::~Media_Folder() {
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

std::string Media_Folder::path(const std::string &file) const {
  return folder_ + "/" + file;
}

std::string Media_Folder::uri(const std::string &file) const {
  return Text(gst_filename_to_uri(path(file).c_str(), nullptr), g_free).get();
}

void Media_Folder::record(const std::string &file, const std::string &pipeline) const {
  GstElement *const parsed = gst_parse_launch(pipeline.c_str(), nullptr);
  ASSERT_NE(parsed, nullptr) << pipeline;
  const Element playing = own(parsed);
  const Element sink(gst_bin_get_by_name(as_bin(playing), "file"), false);
  ASSERT_TRUE(sink) << pipeline;
  g_object_set(sink.get(), "location", path(file).c_str(), nullptr);
  ASSERT_EQ(play_to_end(playing), GST_MESSAGE_EOS) << pipeline;
}

void Media_Folder::write(const std::string &file, const std::string &contents) const {
  std::ofstream stream(path(file), std::ios::binary);
  stream << contents;
  ASSERT_TRUE(stream.flush()) << file;
}

std::string Media_Folder::read(const std::string &file) const {
  std::ostringstream contents;
  contents << std::ifstream(path(file), std::ios::binary).rdbuf();
  return contents.str();
}

void Media_Folder::record_video_and_audio(const std::string &file) const {
  record(file,
         "matroskamux name=mux ! filesink name=file "
         "videotestsrc num-buffers=20 ! video/x-raw,width=64,height=48,framerate=10/1 "
         "! jpegenc ! mux. "
         "audiotestsrc num-buffers=20 samplesperbuffer=800 ! audio/x-raw,rate=8000,channels=1 "
         "! mulawenc ! mux.");
}

void Media_Folder::record_two_videos(const std::string &file) const {
  record(file, "matroskamux name=mux ! filesink name=file "
               "videotestsrc num-buffers=20 ! video/x-raw,width=64,height=48,framerate=10/1 "
               "! jpegenc ! mux. "
               "videotestsrc num-buffers=20 ! video/x-raw,width=32,height=16,framerate=10/1 "
               "! jpegenc ! mux.");
}

void Media_Folder::record_audio(const std::string &file) const {
  record(file,
         "audiotestsrc num-buffers=20 samplesperbuffer=800 ! audio/x-raw,rate=8000,channels=1 "
         "! mulawenc ! matroskamux ! filesink name=file");
}

void Media_Folder::record_image(const std::string &file) const {
  record(file, "videotestsrc num-buffers=1 ! video/x-raw,width=64,height=48 "
               "! pngenc ! filesink name=file");
}

}  // namespace kel::tavren::tests
