#include "media_file.h"

#include <algorithm>

#include <glib/gstdio.h>
#include <tavren/capture/media_helper.h>

namespace kel::tavren::programs {

using capture::Media_Helper;

namespace {

// Added to all times: a decoding time may be earlier than running time 0.
constexpr gint64 epoch = gint64{3600} * GST_SECOND;

GstClockTime stamp(gint64 running_time) {
  return static_cast<GstClockTime>(std::max<gint64>(0, epoch + running_time));
}

bool has_property(GstElement *element, const char *name) {
  return g_object_class_find_property(G_OBJECT_GET_CLASS(element), name) != nullptr;
}

// Makes an MP4 or QuickTime file playable while it is written. Until it is finished, it consists of
// fragments of one second.
void write_fragments(GstElement *muxer) {
  if (!has_property(muxer, "fragment-duration")) return;
  g_object_set(muxer, "fragment-duration", 1000U, nullptr);
  if (has_property(muxer, "fragment-mode"))
    gst_util_set_object_arg(G_OBJECT(muxer), "fragment-mode", "first-moov-then-finalise");
}

bool fields_are_equal(const GstStructure *one, const GstStructure *other, const char *field) {
  const GValue *const first = gst_structure_get_value(one, field);
  const GValue *const second = gst_structure_get_value(other, field);
  if (first == nullptr || second == nullptr) return true;
  return gst_value_compare(first, second) == GST_VALUE_EQUAL;
}

// Returns whether a muxer that was given the first caps can continue with the second. The frame
// rate and similar fields may change, and a stream may lack fields of the track's caps.
bool can_go_on(const GstCaps *begun, const GstCaps *now) {
  const GstStructure *const one = gst_caps_get_structure(begun, 0);
  const GstStructure *const other = gst_caps_get_structure(now, 0);
  const auto fields = {"width", "height", "codec_data", "stream-format", "rate", "channels"};
  return gst_structure_has_name(other, gst_structure_get_name(one)) &&
         std::all_of(fields.begin(), fields.end(),
                     [&](const char *field) { return fields_are_equal(one, other, field); });
}

}  // namespace

Media_File::Media_File(GstElement *pipeline, const Container &container, std::string path,
                       std::vector<Track> tracks, gint64 start)
    : path_(std::move(path)), start_(start), tracks_(std::move(tracks)), bin_(pipeline, "") {
  g_object_set(bin_.element(), "message-forward", TRUE, nullptr);
  GstElement *const muxer = bin_.add(container.muxer, "muxer");
  write_fragments(muxer);
  GstElement *const sink = bin_.add("filesink", "file");
  g_object_set(sink, "location", path_.c_str(), "async", FALSE, nullptr);
  gst_util_set_object_arg(G_OBJECT(sink), "buffer-mode", "unbuffered");
  Media_Helper::gst_element_link_many_or_throw(muxer, sink, nullptr);
  add_tracks(muxer);
  bin_.start();
  for (std::size_t i = 0; i < tracks_.size(); ++i)
    feeds_[i]->begin("stream-" + std::to_string(tracks_[i].stream), stamp(start_));
}

//! [add the tracks]
void Media_File::add_tracks(GstElement *muxer) {
  for (Track &track : tracks_) {
    track.begin = track.end = start_;
    GstElement *const queue = bin_.add("queue", "queue_" + std::to_string(track.stream));
    g_object_set(queue, "max-size-buffers", 0U, "max-size-bytes", 0U, "max-size-time", guint64{0},
                 nullptr);
    feeds_.push_back(std::make_unique<Media_Feed>(queue, track.caps));
    Media_Helper::gst_element_link_many_or_throw(queue, muxer, nullptr);
    queues_.push_back(queue);
  }
}
//! [add the tracks]

std::size_t Media_File::index_of(guint stream) const noexcept {
  const auto track = std::find_if(tracks_.begin(), tracks_.end(), [stream](const Track &candidate) {
    return candidate.stream == stream;
  });
  return static_cast<std::size_t>(track - tracks_.begin());
}

bool Media_File::takes(guint stream, const GstCaps *caps) const {
  const std::size_t index = index_of(stream);
  return index < tracks_.size() && !tracks_[index].has_ended &&
         can_go_on(tracks_[index].caps.get(), caps);
}

void Media_File::write(guint stream, const Frame &frame) {
  const std::size_t index = index_of(stream);
  Track &track = tracks_.at(index);
  GstBuffer *const buffer = gst_buffer_copy(gst_sample_get_buffer(frame.sample.get()));
  GST_BUFFER_PTS(buffer) = stamp(frame.is_key ? std::max(frame.pts, start_) : frame.pts);
  GST_BUFFER_DTS(buffer) = stamp(frame.dts);
  GST_BUFFER_DURATION(buffer) = frame.duration != 0 ? frame.duration : GST_CLOCK_TIME_NONE;
  feeds_[index]->add(buffer);
  if (track.frames++ == 0) track.begin = frame.pts;
  track.end = std::max(track.end, frame.pts + static_cast<gint64>(frame.duration));
}

void Media_File::flush() noexcept {
  for (const auto &feed : feeds_)
    feed->flush();
}

void Media_File::end_track(guint stream) noexcept {
  const std::size_t index = index_of(stream);
  if (index == tracks_.size() || tracks_[index].has_ended) return;
  tracks_[index].has_ended = true;
  feeds_[index]->end();
}

void Media_File::end() noexcept {
  for (const Track &track : tracks_)
    end_track(track.stream);
}

bool Media_File::has_ended() const noexcept {
  return std::all_of(tracks_.begin(), tracks_.end(),
                     [](const Track &track) { return track.has_ended; });
}

GstClockTime Media_File::duration() const noexcept {
  GstClockTime longest = 0;
  for (const Track &track : tracks_)
    if (track.frames > 0)
      longest = std::max(longest, static_cast<GstClockTime>(track.end - start_));
  return longest;
}

guint64 Media_File::bytes() const {
  GStatBuf status;
  return g_stat(path_.c_str(), &status) == 0 ? static_cast<guint64>(status.st_size) : 0;
}

guint64 Media_File::waiting_bytes() const {
  guint64 sum = 0;
  for (GstElement *const queue : queues_) {
    guint bytes = 0;
    g_object_get(queue, "current-level-bytes", &bytes, nullptr);
    sum += bytes;
  }
  return sum;
}

std::vector<Queue_Level> Media_File::queue_levels() const {
  std::vector<Queue_Level> levels;
  for (std::size_t i = 0; i < queues_.size(); ++i) {
    Queue_Level &level = levels.emplace_back();
    level.stream = tracks_[i].name;
    g_object_get(queues_[i], "current-level-buffers", &level.buffers, "current-level-bytes",
                 &level.bytes, "current-level-time", &level.time, nullptr);
  }
  return levels;
}

std::vector<std::string> Media_File::queue_reports() const {
  std::vector<std::string> reports;
  for (GstElement *const queue : queues_)
    reports.push_back(Media_Helper::generate_queue_stats_report(queue));
  return reports;
}

//! [finish the file]
// The bin forwards the messages of its elements. EOS reaches the file sink last.
void Media_File::handle(GstMessage *message) {
  const boost::intrusive_ptr<GstMessage> forwarded = forwarded_message(message);
  if (forwarded && GST_MESSAGE_TYPE(forwarded.get()) == GST_MESSAGE_EOS) finished_ = true;
}
//! [finish the file]

}  // namespace kel::tavren::programs
