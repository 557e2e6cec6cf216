#include <sstream>

#include <gst/app/gstappsink.h>

#include "../operations.h"

namespace kel::tavren::tests {

Scene::Scene()
    : pipeline(make_element("pipeline", "pipeline")), recording(make_bin("recording")),
      camera(make_element("fakesrc", "camera")), format(make_element("capsfilter", "format")),
      split(make_element("tee", "split")), parser(make_element("identity", "parser")),
      file(make_element("fakesink", "file")), buffer(make_element("queue", "buffer")),
      streams(make_element("multiqueue", "streams")), deep(make_element("identity", "deep")),
      snapshots(make_element("appsink", "snapshots")), loose(make_element("identity", "loose")),
      jpeg(make_caps("image/jpeg")),
      raw(make_caps("video/x-raw, width=640, height=480, framerate=30/1")),
      rtp(make_caps("application/x-rtp, media=audio, payload=0, clock-rate=8000, "
                    "encoding-name=PCMU")) {
  g_object_set(format.get(), "caps", jpeg.get(), nullptr);
  gst_app_sink_set_caps(GST_APP_SINK_CAST(snapshots.get()), raw.get());
  gst_bin_add_many(bin(), camera.get(), format.get(), split.get(), parser.get(), file.get(),
                   buffer.get(), streams.get(), recording.get(), nullptr);
  gst_bin_add_many(recording_bin(), deep.get(), snapshots.get(), nullptr);
  gst_element_link_many(camera.get(), format.get(), split.get(), parser.get(), file.get(), nullptr);
  split_src = static_pad(split, "src_0");
  streams_sink = request_pad(streams.get(), "sink_0");
  streams_src = static_pad(streams, "src_0");
  bus = boost::intrusive_ptr<GstBus>(gst_element_get_bus(pipeline.get()), false);
  // Nothing reads the bus, and its messages would keep their source elements alive.
  gst_bus_set_flushing(bus.get(), TRUE);
  counts_ = reference_counts(objects());
  caps_counts_ = {reference_count(jpeg.get()), reference_count(raw.get()),
                  reference_count(rtp.get())};
}

// A pipeline and its elements must be in the NULL state when they are destroyed.
Scene::~Scene() {
  gst_element_set_state(pipeline.get(), GST_STATE_NULL);
}

std::vector<gpointer> Scene::objects() const {
  return {pipeline.get(),  recording.get(),    camera.get(),      format.get(),
          split.get(),     parser.get(),       file.get(),        buffer.get(),
          streams.get(),   deep.get(),         snapshots.get(),   loose.get(),
          split_src.get(), streams_sink.get(), streams_src.get(), bus.get()};
}

std::string Scene::changed_counts() const {
  std::ostringstream changes;
  const std::vector<gpointer> counted = objects();
  for (std::size_t i = 0; i < counted.size(); ++i)
    if (const guint count = reference_count(counted[i]); count != counts_[i])
      changes << GST_OBJECT_NAME(counted[i]) << " has " << count << " references and had "
              << counts_[i] << "; ";
  GstCaps *const caps[] = {jpeg.get(), raw.get(), rtp.get()};
  for (std::size_t i = 0; i < caps_counts_.size(); ++i)
    if (const gint count = reference_count(caps[i]); count != caps_counts_[i])
      changes << GST_STR_NULL(gst_structure_get_name(gst_caps_get_structure(caps[i], 0)))
              << " caps have " << count << " references and had " << caps_counts_[i] << "; ";
  return changes.str();
}

}  // namespace kel::tavren::tests
