#include "media_files.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

#include <gst/gst.h>
#include <gtest/gtest.h>

#include "references.h"

namespace kel::tavren::tests {

namespace {

using Text = std::unique_ptr<char, decltype(&g_free)>;

// Waits until a pipeline has reached EOS; any other end fails the test.
void play_to_end(GstElement *pipeline) {
  const boost::intrusive_ptr<GstBus> bus(gst_element_get_bus(pipeline), false);
  ASSERT_NE(gst_element_set_state(pipeline, GST_STATE_PLAYING), GST_STATE_CHANGE_FAILURE);
  const std::unique_ptr<GstMessage, decltype(&gst_message_unref)> message(
      gst_bus_timed_pop_filtered(bus.get(), 30 * GST_SECOND,
                                 static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)),
      gst_message_unref);
  gst_element_set_state(pipeline, GST_STATE_NULL);
  ASSERT_NE(message, nullptr) << "the pipeline did not come to its end";
  ASSERT_EQ(GST_MESSAGE_TYPE(message.get()), GST_MESSAGE_EOS);
}

}  // namespace

Media_Folder::Media_Folder() {
  const Text folder(g_dir_make_tmp("media-XXXXXX", nullptr), g_free);
  if (folder == nullptr) throw std::runtime_error("no folder for media");
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
  const Element owned(GST_ELEMENT_CAST(gst_object_ref_sink(parsed)), false);
  const Element sink(gst_bin_get_by_name(GST_BIN(owned.get()), "file"), false);
  ASSERT_TRUE(sink) << pipeline;
  g_object_set(sink.get(), "location", path(file).c_str(), nullptr);
  ASSERT_NO_FATAL_FAILURE(play_to_end(owned.get())) << pipeline;
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
