// Whole recordings: construction time and throughput.

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <gst/app/gstappsink.h>
#include <gst/app/gstappsrc.h>

#include "gstreamermm_calls.h"
#include "library_calls.h"
#include "raw_calls.h"
#include "recording.h"
#include "trial.h"

namespace kel::tavren::benchmarks {

namespace {

// Builds and tears down the recordings of several cameras that exist at the same time.
template <typename Calls>
class Build_Recordings : public Trial {
public:
  explicit Build_Recordings(std::size_t cameras) : cameras_(cameras) {}

  void run() override {
    std::vector<std::unique_ptr<Recording<Calls>>> recordings;
    for (std::size_t i = 0; i < cameras_; ++i)
      recordings.push_back(std::make_unique<Recording<Calls>>());
  }

private:
  std::size_t cameras_;
};

// A minute of a camera's video as received from the network.
class Camera_Video {
public:
  Camera_Video() {
    const Owned_Element pipeline = owned(gst_parse_launch(
        "videotestsrc num-buffers=1500 pattern=snow ! video/x-raw,width=640,height=360,"
        "framerate=25/1 ! x264enc speed-preset=ultrafast bitrate=2000 key-int-max=25 "
        "tune=zerolatency ! rtph264pay "
        "config-interval=1 ! appsink name=packets sync=false",
        nullptr));
    const Owned_Element sink(gst_bin_get_by_name(GST_BIN_CAST(pipeline.get()), "packets"), false);
    gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
    while (GstSample *const pulled = gst_app_sink_pull_sample(GST_APP_SINK(sink.get()))) {
      samples_.emplace_back(pulled, false);
      bytes_ += gst_buffer_get_size(gst_sample_get_buffer(pulled));
    }
    gst_element_set_state(pipeline.get(), GST_STATE_NULL);
    require(!samples_.empty(), "encoding a video");
  }

  std::size_t bytes() const { return bytes_; }

  void send_to(GstAppSrc *source) const {
    for (const auto &sample : samples_)
      require(gst_app_src_push_sample(source, sample.get()) == GST_FLOW_OK, "sending a packet");
    require(gst_app_src_end_of_stream(source) == GST_FLOW_OK, "ending a stream");
  }

private:
  std::vector<boost::intrusive_ptr<GstSample>> samples_;
  std::size_t bytes_ = 0;
};

// Shared by all trials; encoded on first use.
const Camera_Video &camera_video() {
  static const Camera_Video video;
  return video;
}

template <typename Calls>
class Record_Video : public Trial {
public:
  void prepare() override {
    recording_ = std::make_unique<Recording<Calls>>(Streams::video);
    g_object_set(recording_->video_source(), "block", TRUE, nullptr);
  }
  void run() override {
    video_.send_to(GST_APP_SRC(recording_->video_source()));
    const boost::intrusive_ptr<GstBus> bus(gst_element_get_bus(recording_->bin()), false);
    const boost::intrusive_ptr<GstMessage> end(
        gst_bus_timed_pop_filtered(bus.get(), patience, end_of_recording), false);
    require(end && GST_MESSAGE_TYPE(end.get()) == GST_MESSAGE_EOS, "recording a video");
  }
  void clean_up() override { recording_.reset(); }

  std::size_t bytes() const override { return video_.bytes(); }

private:
  static constexpr GstClockTime patience = 60 * GST_SECOND;
  static constexpr auto end_of_recording =
      static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR);

  const Camera_Video &video_ = camera_video();
  std::unique_ptr<Recording<Calls>> recording_;
};

}  // namespace

void add_recording(Programme &programme) {
  for (const std::size_t cameras : {1U, 10U, 100U, 1000U})
    programme.add<Build_Recordings, Raw_Calls, Library_Calls, Gstreamermm_Calls>(
        "recording/a recording built and torn down, cameras at once/" + std::to_string(cameras),
        static_cast<int>(cameras), cameras);

  programme.add<Record_Video, Raw_Calls, Library_Calls>("recording/a minute of video recorded", 1);
}

}  // namespace kel::tavren::benchmarks
