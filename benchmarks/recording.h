// A camera's recording, built in the same way as in record_camera.

#ifndef TAVREN_BENCHMARKS_RECORDING_H
#define TAVREN_BENCHMARKS_RECORDING_H

#include <string>
#include <vector>

#include <gst/gst.h>

#include "owned.h"
#include "raw_calls.h"

namespace kel::tavren::benchmarks {

// The recorded streams of a camera.
enum class Streams { video, video_and_audio };

// Builds recording branches into a running pipeline: depayloader, parser, for video a tee and a
// frame-rate element, multiqueue, queue; one muxer and one file sink. Application sources provide
// the camera's streams.
template <typename Calls>
class Recording {
public:
  explicit Recording(Streams streams = Streams::video_and_audio) {
    g_object_set(Calls::object(file_), "location", "/dev/null", "async", FALSE, nullptr);
    Calls::link(muxer_, file_);

    build_video_branch();
    if (streams == Streams::video_and_audio) build_audio_branch();
    for (const Element &element : elements_)
      Calls::sync_state_with_parent(element);
  }

  ~Recording() {
    Calls::set_state(pipeline_, GST_STATE_NULL);
    for (Pad &pad : pads_)
      Calls::drop(pad);
  }

  Recording(const Recording &) = delete;
  Recording &operator=(const Recording &) = delete;

  const typename Calls::Element &pipeline() const { return pipeline_; }
  GstElement *bin() const { return owned_pipeline_.get(); }

  // Owned by the pipeline.
  GstElement *video_source() const { return GST_ELEMENT_CAST(Calls::object(video_source_)); }

private:
  using Element = typename Calls::Element;
  using Pad = typename Calls::Pad;

  // Called before any branch is built.
  static Element started(Element pipeline) {
    Calls::set_state(pipeline, GST_STATE_PLAYING);
    return pipeline;
  }

  void build_video_branch() {
    video_source_ = make_source("application/x-rtp, media=video, clock-rate=90000, "
                                "encoding-name=H264");
    const Element parser = Calls::make_and_add(bin_, Calls::select_parser(true));
    const Element depayloader = Calls::make_and_add(bin_, "rtph264depay");
    const Element tee = Calls::make_and_add(bin_, "tee");
    const Element rate = make_video_rate();
    Calls::link(depayloader, parser);
    Calls::link(parser, tee);
    Calls::link_tee(tee, rate);
    lead_into_file(rate, {rate, tee, parser, depayloader}, video_source_, depayloader);
  }

  void build_audio_branch() {
    const Element source = make_source("application/x-rtp, media=audio, clock-rate=8000, "
                                       "encoding-name=PCMU");
    const Element parser = Calls::make_and_add(bin_, Calls::select_parser(false));
    const Element depayloader = Calls::make_and_add(bin_, "rtppcmudepay");
    Calls::link(depayloader, parser);
    lead_into_file(parser, {parser, depayloader}, source, depayloader);
  }

  Element make_source(const char *description) {
    const Owned_Caps caps = owned(gst_caps_from_string(description));
    Element source = Calls::make_and_add(bin_, "appsrc");
    g_object_set(Calls::object(source), "caps", caps.get(), "format", GST_FORMAT_TIME, "is-live",
                 TRUE, nullptr);
    return source;
  }

  // The element of the wider system, if it is installed.
  Element make_video_rate() {
    const auto wanted = Calls::select_video_rate();
    const gboolean is_installed = gst_registry_check_feature_version(
        gst_registry_get(), std::string(wanted).c_str(), 0, 0, 0);
    return is_installed ? Calls::make_and_add(bin_, wanted) : Calls::make_and_add(bin_, "identity");
  }

  void lead_into_file(const Element &last, std::vector<Element> branch, const Element &source,
                      const Element &depayloader) {
    const Element queue = Calls::make_and_add(bin_, "queue");
    auto [sink_pad, src_pad] = Calls::new_stream(multiqueue_);
    Calls::link_element_to_pad(last, sink_pad);
    Calls::link_pad_to_element(src_pad, queue);
    Calls::link(queue, muxer_);
    Calls::add_probe(queue);
    Pad camera_pad = Calls::static_pad(source, "src");
    Calls::link_pad_to_element(camera_pad, depayloader);
    pads_.insert(pads_.end(), {sink_pad, src_pad, camera_pad});
    elements_.push_back(queue);
    elements_.insert(elements_.end(), branch.begin(), branch.end());
    elements_.push_back(source);
  }

  Owned_Element owned_pipeline_ = owned(gst_pipeline_new(nullptr));
  Element pipeline_ = started(Calls::see(owned_pipeline_.get()));
  typename Calls::Bin bin_ = Calls::see_bin(owned_pipeline_.get());
  Element file_ = Calls::make_and_add(bin_, "filesink");
  Element muxer_ = Calls::make_and_add(bin_, Calls::select_muxer());
  Element multiqueue_ = Calls::make_and_add(bin_, "multiqueue");
  Element video_source_{};
  std::vector<Element> elements_ = {file_, muxer_, multiqueue_};  // downstream elements first
  std::vector<Pad> pads_;
};

}  // namespace kel::tavren::benchmarks

#endif
