#include "operations.h"

#include <memory>
#include <sstream>
#include <stdexcept>
#include <utility>

#include <gst/app/gstappsink.h>

#include "depayloader_references.h"
#include "framework_version.h"

namespace kel::tavren::tests {

namespace {

using capture::Media_Helper;

// The first error of the running operation, for each thread.
thread_local std::string wrong;

void require(bool held, const char *what) {
  if (!held && wrong.empty()) wrong = what;
}

// An object that an operation creates. At the end, it must have no other owner.
template <typename T>
class Own {
public:
  explicit Own(boost::intrusive_ptr<T> object) : object_(std::move(object)) {}
  ~Own() { require(reference_count(get()) == 1, "kept what was the caller's"); }
  Own(const Own &) = delete;
  Own &operator=(const Own &) = delete;

  T *get() const { return object_.get(); }

private:
  boost::intrusive_ptr<T> object_;
};

// Watches an object that an operation passes on and must not keep.
class Gone_In_The_End {
public:
  explicit Gone_In_The_End(gpointer object) : watch_(object) {}
  ~Gone_In_The_End() { require(watch_.gone(), "left behind what it was handed"); }
  Gone_In_The_End(const Gone_In_The_End &) = delete;
  Gone_In_The_End &operator=(const Gone_In_The_End &) = delete;

private:
  Weak_Watch watch_;
};

// Sets an element to the NULL state before it is destroyed.
class Stopped_In_The_End {
public:
  explicit Stopped_In_The_End(GstElement *element) : element_(element) {}
  ~Stopped_In_The_End() { gst_element_set_state(element_, GST_STATE_NULL); }
  Stopped_In_The_End(const Stopped_In_The_End &) = delete;
  Stopped_In_The_End &operator=(const Stopped_In_The_End &) = delete;

private:
  GstElement *element_;
};

// Takes ownership of a reference that an operation returned.
template <typename T>
boost::intrusive_ptr<T> taken(T *object) {
  return boost::intrusive_ptr<T>(object, false);
}

unsigned long long type_of(const Element &element) {
  return G_OBJECT_TYPE(element.get());
}

// Runs the comparison function of a search with an element in a value.
template <typename Compare>
void with_value(const Element &element, Compare compare) {
  GValue value = G_VALUE_INIT;
  g_value_init(&value, GST_TYPE_ELEMENT);
  g_value_set_object(&value, element.get());
  compare(&value);
  g_value_unset(&value);
}

GstSegment time_segment() {
  GstSegment segment;
  gst_segment_init(&segment, GST_FORMAT_TIME);
  return segment;
}

// Bins, creation.

void add_and_remove(const Scene &scene) {
  const Own<GstElement> element(make_element("identity", "added"));
  Media_Helper::gst_bin_add_or_throw(scene.bin(), element.get());
  require(reference_count(element.get()) == 2, "the bin does not hold the element");
  gst_bin_remove(scene.bin(), element.get());
}

void add_element_of_taken_name(const Scene &scene) {
  GstElement *const element = gst_element_factory_make("identity", "parser");
  const Gone_In_The_End gone(element);
  Media_Helper::gst_bin_add_or_throw(scene.bin(), element);
}

void create_in_bin(const Scene &scene) {
  const Own<GstElement> element(Element(
      Media_Helper::create_and_add_element_to_bin("identity", scene.recording.get(), "added")));
  gst_bin_remove(scene.recording_bin(), element.get());
}

void create_in_pipeline(const Scene &scene) {
  const Own<GstElement> element(Element(
      Media_Helper::create_and_add_element_to_pipeline("identity", scene.pipeline.get(), "")));
  gst_bin_remove(scene.bin(), element.get());
}

void make_floating(const Scene &) {
  GstElement *const element = Media_Helper::gst_element_factory_make_or_throw("identity", "made");
  require(g_object_is_floating(element) != FALSE, "the element is not floating");
  const Own<GstElement> owned(taken(GST_ELEMENT_CAST(gst_object_ref_sink(element))));
}

void parse(const Scene &) {
  GstElement *const parsed =
      Media_Helper::gst_parse_launch_or_throw("identity name=a ! queue ! fakesink name=b");
  const Own<GstElement> owned(taken(GST_ELEMENT_CAST(gst_object_ref_sink(parsed))));
  const Element found(
      taken(Media_Helper::gst_bin_get_by_name_or_throw(GST_BIN_CAST(owned.get()), "b")));
  require(found != nullptr, "the parsed element is not found");
}

// State, bus, signals.

void start_and_stop(const Scene &scene) {
  const Stopped_In_The_End stopped(scene.buffer.get());
  require(Media_Helper::gst_element_set_state_or_throw(scene.buffer.get(), GST_STATE_READY, "") ==
              GST_STATE_CHANGE_SUCCESS,
          "the element is not ready");
}

void start_source_without_file(const Scene &) {
  const Own<GstElement> source(make_element("filesrc", "src0"));
  const Stopped_In_The_End stopped(source.get());
  Media_Helper::gst_element_set_state_or_throw(source.get(), GST_STATE_PLAYING, "starting capture");
}

void follow_parent(const Scene &scene) {
  Media_Helper::gst_element_sync_state_with_parent_or_throw(scene.deep.get());
}

void get_bus(const Scene &scene) {
  require(taken(Media_Helper::gst_element_get_bus_or_throw(scene.pipeline.get())) == scene.bus,
          "another bus");
}

void watch_bus(const Scene &) {
  const Own<GstBus> bus(taken(gst_bus_new()));
  const boost::intrusive_ptr<GSource> watch(
      taken(Media_Helper::gst_bus_create_watch_or_throw(bus.get())));
}

void watch_bus_twice(const Scene &) {
  const Own<GstBus> bus(taken(gst_bus_new()));
  const boost::intrusive_ptr<GSource> watch(taken(gst_bus_create_watch(bus.get())));
  Media_Helper::gst_bus_create_watch_or_throw(bus.get());
}

void get_parent(const Scene &scene) {
  require(taken(Media_Helper::gst_element_get_parent_or_throw(scene.deep.get())) == scene.recording,
          "another parent");
}

void connect(const Scene &scene) {
  const gulong handler = Media_Helper::g_signal_connect_or_throw(
      scene.pipeline.get(), "element-added", [] {}, nullptr);
  g_signal_handler_disconnect(scene.pipeline.get(), handler);
}

// Pads, links.

void list_pads(const Scene &scene) {
  const Media_Helper::Pad_List pads =
      Media_Helper::get_element_pads(scene.format.get(), gst_element_iterate_pads);
  require(pads.size() == 2, "not the two pads");
}

void list_sink_pads(const Scene &scene) {
  const Media_Helper::Pad_List pads = Media_Helper::get_element_sink_pads(scene.streams.get());
  require(pads == Media_Helper::Pad_List{scene.streams_sink}, "not the sink pad");
}

void list_src_pads(const Scene &scene) {
  const Media_Helper::Pad_List pads = Media_Helper::get_element_src_pads(scene.split.get());
  require(pads == Media_Helper::Pad_List{scene.split_src}, "not the source pad");
}

void link_and_unlink(const Scene &scene) {
  GstPad *const pad = scene.streams_src.get();
  require(Media_Helper::link_pad_to_element(pad, scene.buffer.get()), "not linked");
  require(!Media_Helper::link_pad_to_element(pad, scene.buffer.get()), "linked twice");
  require(Media_Helper::unlink_pad_from_element(pad, scene.buffer.get()), "not unlinked");
  require(!Media_Helper::unlink_pad_from_element(pad, scene.buffer.get()), "unlinked twice");
}

void link_element_to_pad(const Scene &scene) {
  GstPad *const pad = scene.streams_sink.get();
  require(Media_Helper::link_element_to_pad(scene.buffer.get(), pad), "not linked");
  require(!Media_Helper::link_element_to_pad(scene.buffer.get(), pad), "linked twice");
  gst_pad_unlink(static_pad(scene.buffer, "src").get(), pad);
}

void link_or_throw(const Scene &scene) {
  Media_Helper::link_pad_to_element_or_throw(scene.streams_src.get(), scene.buffer.get());
  gst_element_unlink(scene.streams.get(), scene.buffer.get());
}

void link_many(const Scene &) {
  const Own<GstElement> source(make_element("fakesrc"));
  const Own<GstElement> middle(make_element("identity"));
  const Own<GstElement> sink(make_element("fakesink"));
  Media_Helper::gst_element_link_many_or_throw(source.get(), middle.get(), sink.get(), nullptr);
}

void link_sources(const Scene &) {
  const Own<GstElement> first(make_element("fakesrc", "first"));
  const Own<GstElement> second(make_element("fakesrc", "second"));
  Media_Helper::gst_element_link_many_or_throw(first.get(), second.get(), nullptr);
}

void get_static_pad(const Scene &scene) {
  require(taken(Media_Helper::gst_element_get_static_pad_or_throw(scene.split.get(), "src_0")) ==
              scene.split_src,
          "another pad");
}

void add_probe(const Scene &) {
  int freed = 0;
  {
    const Own<GstElement> sink(make_element("fakesink"));
    Media_Helper::add_probe_to_sink_pad_or_throw(
        sink.get(), GST_PAD_PROBE_TYPE_BUFFER,
        [](GstPad *, GstPadProbeInfo *, gpointer) { return GST_PAD_PROBE_OK; }, &freed,
        [](gpointer data) { ++*static_cast<int *>(data); });
  }
  require(freed == 1, "the data of the probe is not freed once");
}

// An idle probe runs immediately on an idle pad. If it removes itself, it has no identifier
// afterwards.
void add_probe_that_removes_itself(const Scene &) {
  const Own<GstElement> sink(make_element("fakesink"));
  Media_Helper::add_probe_to_sink_pad_or_throw(
      sink.get(), GST_PAD_PROBE_TYPE_IDLE,
      [](GstPad *, GstPadProbeInfo *, gpointer) { return GST_PAD_PROBE_REMOVE; }, nullptr, nullptr);
}

// Tee branches, multiqueue streams.

void request_tee_pad(const Scene &scene) {
  const Own<GstPad> pad(taken(Media_Helper::get_tee_src_pad(scene.split.get())));
  gst_element_release_request_pad(scene.split.get(), pad.get());
}

// Has "src_%u" pads, but does not create them on request.
void request_src_pad_of_decodebin(const Scene &) {
  const Own<GstElement> decodebin(make_element("decodebin"));
  Media_Helper::get_tee_src_pad(decodebin.get());
}

void hang_branch(const Scene &scene) {
  Media_Helper::link_tee_to_element(scene.split.get(), scene.buffer.get());
  const Own<GstPad> pad(
      taken(Media_Helper::get_element_sink_peer_pad_or_throw(scene.buffer.get())));
  gst_element_release_request_pad(scene.split.get(), pad.get());
}

void hang_source_on_tee(const Scene &scene) {
  Media_Helper::link_tee_to_element(scene.split.get(), scene.camera.get());
}

void request_stream(const Scene &scene, const char *name) {
  const auto [sink_pad, src_pad] =
      Media_Helper::request_new_multiqueue_pads(scene.streams.get(), name, nullptr);
  const Own<GstPad> sink(taken(sink_pad));
  const Own<GstPad> src(taken(src_pad));
  gst_element_release_request_pad(scene.streams.get(), sink_pad);
}

void pair_pads(const Scene &scene) {
  require(taken(Media_Helper::get_corresponding_multiqueue_pad(scene.streams_sink.get())) ==
              scene.streams_src,
          "another source pad");
  require(taken(Media_Helper::get_corresponding_multiqueue_pad(scene.streams_src.get())) ==
              scene.streams_sink,
          "another sink pad");
}

void pair_pad_of_other_name(const Scene &) {
  const Own<GstElement> bin(make_element("bin"));
  const Pad pad = make_pad("left", GST_PAD_SRC);
  gst_element_add_pad(bin.get(), pad.get());
  Media_Helper::get_corresponding_multiqueue_pad(pad.get());
}

void pair_pad_without_parent(const Scene &) {
  const Own<GstPad> pad(make_pad("src_0", GST_PAD_SRC));
  Media_Helper::get_corresponding_multiqueue_pad(pad.get());
}

// Peers, ancestry.

void get_peers(const Scene &scene) {
  require(taken(Media_Helper::get_element_sink_peer_pad_or_throw(scene.parser.get())) ==
              scene.split_src,
          "another peer pad");
  require(taken(Media_Helper::get_element_sink_peer_or_throw(scene.split.get())) == scene.format,
          "another peer");
}

void get_most_parent(const Scene &scene) {
  require(taken(Media_Helper::get_most_parent(scene.deep.get())) == scene.pipeline,
          "another ancestor");
  require(Media_Helper::get_most_parent(scene.loose.get()) == nullptr, "an ancestor from nowhere");
}

void verify_ancestors(const Scene &scene) {
  Media_Helper::verify_element_top_parent(scene.deep.get(), scene.pipeline.get());
  Media_Helper::verify_element_top_parent(scene.loose.get(), scene.loose.get());
}

// Media kinds, selection, discovery.

void tell_kinds(const Scene &scene) {
  require(Media_Helper::get_media_type(scene.jpeg.get()) == capture::JPEG, "not JPEG");
  require(Media_Helper::get_media_type(scene.raw.get()) == capture::VIDEO_RAW, "not raw video");
  require(Media_Helper::get_media_type(scene.rtp.get()) == capture::RTP, "not RTP");
  require(Media_Helper::get_media_type_string(capture::MULAW) == "MULAW", "another name");
  require(Media_Helper::is_video(capture::JPEG, false), "no video");
  require(!Media_Helper::is_audio(capture::RTP, true), "audio");
}

void select_elements(const Scene &) {
  require(Media_Helper::select_muxer("/recordings/a.mp4") == "mp4mux", "another muxer");
  require(Media_Helper::select_demuxer("a.mkv") == "matroskademux", "another demuxer");
  require(Media_Helper::select_parser(capture::H264) == "h264parse", "another parser");
  require(Media_Helper::select_decoder(capture::JPEG) == "jpegdec", "another decoder");
  require(Media_Helper::select_payloader(capture::MULAW) == "rtppcmupay", "another payloader");
  require(Media_Helper::select_video_rate(capture::JPEG) == "identity", "another frame rate");
}

void select_proxies(const Scene &scene) {
  require(Media_Helper::select_proxy_elements(scene.rtp.get()) ==
              std::pair<std::string, std::string>("rtppcmudepay", "rtppcmupay"),
          "other proxies");
}

// A few bytes of mu-law in a WAVE file.
constexpr const char *media_uri = "data:audio/x-wav;base64,UklGRiwAAABXQVZFZm10IBAAAAAHAAEAQB8AAEAf"
                                  "AAABAAgAZGF0YQgAAAD//////////w==";

void discover(const Scene &) {
  const std::unique_ptr<capture::Media_Info> info =
      Media_Helper::get_media_info(media_uri, 30 * GST_SECOND);
  require(!info->audio_caps.empty() && info->video_caps.empty(), "not a file of audio");
  require(Media_Helper::get_media_type(info->audio_caps.at(0).get()) == capture::MULAW,
          "not mu-law");
}

// Caps.

void read_caps(const Scene &scene) {
  using Framerate = std::pair<long long, long long>;
  using Resolution = std::pair<unsigned long long, unsigned long long>;
  require(Media_Helper::get_framerate_from_caps(scene.raw.get()) == Framerate(30, 1),
          "another frame rate");
  require(Media_Helper::get_resolution_from_caps(scene.raw.get()) == Resolution(640, 480),
          "another resolution");
  require(Media_Helper::get_encoding_name_from_caps(scene.rtp.get()) == "PCMU", "another name");
  require(Media_Helper::calculate_resolution({320, 320}, {640, 480}) == Resolution(320, 240),
          "another fit");
}

void compare_caps(const Scene &scene) {
  require(Media_Helper::caps_equal({scene.raw, scene.rtp}, {scene.rtp, scene.raw}), "unequal");
  require(!Media_Helper::caps_equal({scene.raw, scene.rtp}, {scene.raw, scene.raw}), "equal");
}

template <auto Read>
void read_bad_caps(const char *text) {
  const Own<GstCaps> caps(make_caps(text));
  Read(caps.get());
}

// Searches.

void get_element_type(const Scene &scene) {
  require(Media_Helper::get_element_type("tee") == type_of(scene.split), "another type");
}

void search(const Scene &scene) {
  require(taken(Media_Helper::find_element_with_caps_and_type(scene.bin(), type_of(scene.split),
                                                              scene.jpeg.get())) == scene.split,
          "another element");
  require(taken(Media_Helper::find_tee_with_caps(scene.bin(), scene.jpeg.get())) == scene.split,
          "another tee");
  require(taken(Media_Helper::find_appsink_with_caps(scene.bin(), scene.raw.get())) ==
              scene.snapshots,
          "another appsink");
}

void search_in_vain(const Scene &scene) {
  require(Media_Helper::find_tee_with_caps(scene.bin(), scene.raw.get()) == nullptr, "a tee");
  require(Media_Helper::find_appsink_with_caps(scene.bin(), scene.jpeg.get()) == nullptr,
          "an appsink");
}

void find_all_appsinks(const Scene &scene) {
  const std::vector<Element> appsinks = Media_Helper::find_all_appsinks(scene.bin());
  require(appsinks == std::vector<Element>{scene.snapshots}, "not the one appsink");
}

void look_for_types(const Scene &scene) {
  require(Media_Helper::bin_has_element_type(scene.bin(), type_of(scene.deep)), "no identity");
  require(!Media_Helper::bin_has_element_type(scene.recording_bin(), type_of(scene.split)),
          "a tee");
}

void compare_elements(const Scene &scene) {
  Media_Helper::FindElementCapsTypeHelper wanted{type_of(scene.split), scene.jpeg.get()};
  unsigned long long type = type_of(scene.split);
  with_value(scene.split, [&](const GValue *value) {
    require(Media_Helper::caps_compare_func(value, &wanted) == 0, "the caps do not fit");
    require(Media_Helper::type_compare_func(value, &type) == 0, "another type");
  });
  with_value(scene.file, [&](const GValue *value) {
    require(Media_Helper::caps_compare_func(value, &wanted) == -1, "the sink is a tee");
    require(Media_Helper::type_compare_func(value, &type) == -1, "the sink is of its type");
  });
}

void get_by_name(const Scene &scene) {
  require(taken(Media_Helper::gst_bin_get_by_name_or_throw(scene.bin(), "deep")) == scene.deep,
          "another element");
}

// Checks, lookups, texts.

void pass_checks(const Scene &scene) {
  Media_Helper::is_element_or_throw(scene.camera.get(), "camera");
  Media_Helper::is_pad_or_throw(scene.split_src.get(), "pad");
  Media_Helper::is_bin_or_throw(scene.bin(), "bin");
  Media_Helper::is_bus_or_throw(scene.bus.get(), "bus");
  Media_Helper::is_caps_or_throw(scene.raw.get(), "caps");
  Media_Helper::is_valid_element_type_or_throw(type_of(scene.camera), "type");
  Media_Helper::gst_is_initialized_or_throw("not initialised");
}

void look_up(const Scene &) {
  require(Media_Helper::string_from_map_or_throw_<capture::MediaType>(
              capture::RTP, {{capture::RTP, "a text that fits into no short string"}}, "no row") ==
              "a text that fits into no short string",
          "another text");
  require(Media_Helper::string_from_map_or_throw_<std::string>("a", {{"a", "first"}}, "no row") ==
              "first",
          "another text");
}

void look_up_kind(const Scene &) {
  Media_Helper::string_from_map_or_throw_<capture::MediaType>(
      capture::RTP, {{capture::JPEG, "jpeg"}}, "no such kind: 100%");
}

void look_up_text(const Scene &) {
  Media_Helper::string_from_map_or_throw_<std::string>("b", {{"a", "first"}}, "no such text: 100%");
}

void find_tee_factory(const Scene &) {
  const Factory factory(Media_Helper::gst_element_factory_find_or_throw("tee"), gst_object_unref);
  require(g_strcmp0(GST_OBJECT_NAME(factory.get()), "tee") == 0, "another factory");
}

void name_enumerators(const Scene &) {
  require(Media_Helper::gst_state_to_string(GST_STATE_PAUSED) == "GST_STATE_PAUSED", "state");
  require(Media_Helper::gst_state_change_to_string(GST_STATE_CHANGE_NULL_TO_READY) ==
              "GST_STATE_CHANGE_NULL_TO_READY",
          "state change");
  require(Media_Helper::gst_enum_message(GST_STATE_CHANGE_SUCCESS) ==
              "GST_STATE_CHANGE_SUCCESS: the state change succeeded",
          "result of a state change");
  require(Media_Helper::gst_enum_message(GST_PAD_LINK_OK) == "GST_PAD_LINK_OK: link succeeded",
          "result of a link");
  require(Media_Helper::gst_enum_message(GST_STATE_PAUSED) == "Unknown GstState value",
          "meaning of a state");
  require(Media_Helper::gst_enum_message(GST_MESSAGE_EOS) == "GST_MESSAGE_EOS", "message");
  require(Media_Helper::gst_discoverer_result_to_string(GST_DISCOVERER_BUSY) ==
              "GST_DISCOVERER_BUSY",
          "result of a discovery");
}

void write_times(const Scene &) {
  require(Media_Helper::gst_time_to_string(3723000000001) == "1:02:03.000000001", "time");
  const GstSegment segment = time_segment();
  require(Media_Helper::gst_segment_to_string(&segment) ==
              "Segment :: Flags = 0, Rate = 1, Applied_Rate = 1, Base = 0:00:00.000000000, "
              "Offset = 0:00:00.000000000, Start = 0:00:00.000000000, Stop = 99:99:99.999999999, "
              "Time = 0:00:00.000000000, Position = 0:00:00.000000000, "
              "Duration = 99:99:99.999999999. ",
          "segment");
  require(Media_Helper::gst_segment_to_string(nullptr) == "NULL segment", "no segment");
}

void report_queue(const Scene &scene) {
  require(Media_Helper::generate_queue_stats_report(scene.buffer.get()) ==
              "buffer Stats : Num Buffers = 0, Num Bytes = 0, Num Seconds = 0",
          "queue");
  require(Media_Helper::generate_queue_stats_report(nullptr) == "queue == NULL", "no queue");
}

}  // namespace

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

namespace {

// Omits operations whose failure this version of the framework does not cause.
std::vector<Operation> possible(std::vector<Operation> all) {
  all.erase(std::remove_if(
                all.begin(), all.end(),
                [](const Operation &operation) { return !framework_can_cause(operation.code); }),
            all.end());
  return all;
}

}  // namespace

// clang-format off
const std::vector<Operation> operations = possible({
    {"argument checks", Operation::SHARED, 0, "", pass_checks},
    {"is_element_or_throw of nothing", Operation::SHARED, 0x15160, "camera is not a GstElement *.", [](const Scene &) { Media_Helper::is_element_or_throw(nullptr, "camera"); }},
    {"is_pad_or_throw of an element", Operation::SHARED, 0x15170, "camera is not a GstPad *.", [](const Scene &scene) { Media_Helper::is_pad_or_throw(GST_PAD_CAST(static_cast<gpointer>(scene.camera.get())), "camera"); }},
    {"is_bin_or_throw of an element", Operation::SHARED, 0x15180, "camera is not a GstBin *.", [](const Scene &scene) { Media_Helper::is_bin_or_throw(GST_BIN_CAST(scene.camera.get()), "camera"); }},
    {"is_bus_or_throw of nothing", Operation::SHARED, 0x15190, "camera is not a GstBus *.", [](const Scene &) { Media_Helper::is_bus_or_throw(nullptr, "camera"); }},
    {"is_caps_or_throw of nothing", Operation::SHARED, 0x15210, "camera is not a GstCaps *.", [](const Scene &) { Media_Helper::is_caps_or_throw(nullptr, "camera"); }},
    {"is_valid_element_type_or_throw of 0", Operation::SHARED, 0x15200, "camera is not a valid GType.", [](const Scene &) { Media_Helper::is_valid_element_type_or_throw(0, "camera"); }},
    {"string_from_map_or_throw_", Operation::SHARED, 0, "", look_up},
    {"string_from_map_or_throw_, no kind", Operation::SHARED, 0x15000, "no such kind: 100%", look_up_kind},
    {"string_from_map_or_throw_, no text", Operation::SHARED, 0x15000, "no such text: 100%", look_up_text},

    {"gst_element_factory_find_or_throw", Operation::SHARED, 0, "", find_tee_factory},
    {"gst_element_factory_find_or_throw in vain", Operation::SHARED, 0x151D0, "Could not find factory for \"nosuchfactory\" in gst_element_factory_find_or_throw", [](const Scene &) { Media_Helper::gst_element_factory_find_or_throw("nosuchfactory"); }},
    {"gst_element_factory_make_or_throw", Operation::OWN, 0, "", make_floating},
    {"gst_element_factory_make_or_throw in vain", Operation::OWN, 0x150C0, "Could not create nosuchfactory parser", [](const Scene &) { Media_Helper::gst_element_factory_make_or_throw("nosuchfactory", "parser"); }},
    {"gst_parse_launch_or_throw", Operation::OWN, 0, "", parse},
    {"gst_parse_launch_or_throw of nothing", Operation::OWN, 0x15120, "Could not create pipeline : ", [](const Scene &) { Media_Helper::gst_parse_launch_or_throw(""); }},
    {"gst_bin_get_by_name_or_throw", Operation::SHARED, 0, "", get_by_name},
    {"gst_bin_get_by_name_or_throw without bin", Operation::SHARED, 0x15130, "bin == NULL", [](const Scene &) { Media_Helper::gst_bin_get_by_name_or_throw(nullptr, "parser"); }},
    {"gst_bin_get_by_name_or_throw in vain", Operation::SHARED, 0x15140, "Could not retrieve element 'loose' from bin", [](const Scene &scene) { Media_Helper::gst_bin_get_by_name_or_throw(scene.bin(), "loose"); }},
    {"gst_bin_add_or_throw", Operation::OWN, 0, "", add_and_remove},
    {"gst_bin_add_or_throw of nothing", Operation::OWN, 0x15160, "element in call to gst_bin_add_or_throw is not a GstElement *.", [](const Scene &scene) { Media_Helper::gst_bin_add_or_throw(scene.bin(), nullptr); }},
    {"gst_bin_add_or_throw of a taken name", Operation::OWN, 0x150E0, "Failed to add element parser () to bin.", add_element_of_taken_name},
    {"gst_bin_add_or_throw of another's element", Operation::OWN, 0x150E0, "Failed to add element deep () to bin.", [](const Scene &scene) { Media_Helper::gst_bin_add_or_throw(scene.bin(), scene.deep.get()); }},
    {"create_and_add_element_to_bin", Operation::OWN, 0, "", create_in_bin},
    {"create_and_add_element_to_bin, no bin", Operation::OWN, 0x15180, "bin in create_and_add_element_to_bin is not a GstBin *.", [](const Scene &) { Media_Helper::create_and_add_element_to_bin("identity", nullptr, "added"); }},
    {"create_and_add_element_to_bin, taken name", Operation::OWN, 0x150E0, "Failed to add element parser () to bin.", [](const Scene &scene) { Media_Helper::create_and_add_element_to_bin("identity", scene.pipeline.get(), "parser"); }},
    {"create_and_add_element_to_pipeline", Operation::OWN, 0, "", create_in_pipeline},
    {"create_and_add_element_to_pipeline in vain", Operation::OWN, 0x150C0, "Could not create nosuchfactory ", [](const Scene &scene) { Media_Helper::create_and_add_element_to_pipeline("nosuchfactory", scene.pipeline.get(), ""); }},

    {"gst_element_set_state_or_throw", Operation::OWN, 0, "", start_and_stop},
    {"gst_element_set_state_or_throw, no file", Operation::OWN, 0x152E0, "Failed to set state GST_STATE_PLAYING on element src0 (), starting capture", start_source_without_file},
    {"gst_element_sync_state_with_parent_or_throw", Operation::OWN, 0, "", follow_parent},
    {"gst_element_sync_state_with_parent_or_throw, no parent", Operation::OWN, 0x150F0, "Failed to sync element loose () with parent.", [](const Scene &scene) { Media_Helper::gst_element_sync_state_with_parent_or_throw(scene.loose.get()); }},
    {"gst_element_get_bus_or_throw", Operation::SHARED, 0, "", get_bus},
    {"gst_element_get_bus_or_throw, no bus", Operation::SHARED, 0x151A0, "Could not retrieve pipeline bus for element \"loose\".", [](const Scene &scene) { Media_Helper::gst_element_get_bus_or_throw(scene.loose.get()); }},
    {"gst_bus_create_watch_or_throw", Operation::OWN, 0, "", watch_bus},
    {"gst_bus_create_watch_or_throw twice", Operation::OWN, 0x151B0, "Could not create bus watch in gst_bus_create_watch_or_throw", watch_bus_twice},
    {"gst_element_get_parent_or_throw", Operation::SHARED, 0, "", get_parent},
    {"gst_element_get_parent_or_throw, no parent", Operation::SHARED, 0x15110, "Failed to get parent for element loose ().", [](const Scene &scene) { Media_Helper::gst_element_get_parent_or_throw(scene.loose.get()); }},
    {"g_signal_connect_or_throw", Operation::OWN, 0, "", connect},
    {"g_signal_connect_or_throw, misspelt", Operation::OWN, 0x152D0, "Failed to connect to signal \"pad-adeddd\" on element \"loose\".", [](const Scene &scene) { Media_Helper::g_signal_connect_or_throw(scene.loose.get(), "pad-adeddd", [] {}, nullptr); }},

    {"get_element_pads", Operation::SHARED, 0, "", list_pads},
    {"get_element_pads of nothing", Operation::SHARED, 0x15160, "element in get_element_pads_with_iterator is not a GstElement *.", [](const Scene &) { Media_Helper::get_element_pads(nullptr, gst_element_iterate_pads); }},
    {"get_element_src_pads", Operation::SHARED, 0, "", list_src_pads},
    {"get_element_sink_pads", Operation::SHARED, 0, "", list_sink_pads},
    {"link_pad_to_element, unlink_pad_from_element", Operation::OWN, 0, "", link_and_unlink},
    {"link_element_to_pad", Operation::OWN, 0, "", link_element_to_pad},
    {"link_pad_to_element_or_throw", Operation::OWN, 0, "", link_or_throw},
    {"link_pad_to_element_or_throw, linked", Operation::OWN, 0x150B0, "Failed to link \"src_0\" pad from element \"streams\" with \"sink\" pad from element \"parser\" (GST_PAD_LINK_WAS_LINKED: pad was already linked).", [](const Scene &scene) { Media_Helper::link_pad_to_element_or_throw(scene.streams_src.get(), scene.parser.get()); }},
    {"link_pad_to_element_or_throw, other bin", Operation::OWN, 0x150B0, "Failed to link \"src_0\" pad from element \"streams\" with \"sink\" pad from element \"deep\" (GST_PAD_LINK_WRONG_HIERARCHY: pads have no common grandparent).", [](const Scene &scene) { Media_Helper::link_pad_to_element_or_throw(scene.streams_src.get(), scene.deep.get()); }},
    {"gst_element_link_many_or_throw", Operation::OWN, 0, "", link_many},
    {"gst_element_link_many_or_throw of sources", Operation::OWN, 0x151C0, "Failed to link element \"first\" and element \"second\".", link_sources},
    {"gst_element_get_static_pad_or_throw", Operation::SHARED, 0, "", get_static_pad},
    {"gst_element_get_static_pad_or_throw in vain", Operation::SHARED, 0x15100, "Failed to get static pad \"src\" for element file ().", [](const Scene &scene) { Media_Helper::gst_element_get_static_pad_or_throw(scene.file.get(), "src"); }},
    {"add_probe_to_sink_pad_or_throw", Operation::OWN, 0, "", add_probe},
    {"add_probe_to_sink_pad_or_throw, gone at once", Operation::OWN, 0x15150, "Failed to add timeout probe", add_probe_that_removes_itself},

    {"get_tee_src_pad", Operation::OWN, 0, "", request_tee_pad},
    {"get_tee_src_pad of a sink", Operation::OWN, 0x15030, "NULL src pad template", [](const Scene &scene) { Media_Helper::get_tee_src_pad(scene.file.get()); }},
    {"get_tee_src_pad of decodebin", Operation::OWN, 0x15040, "Failed to get src pad from tee", request_src_pad_of_decodebin},
    {"link_tee_to_element", Operation::OWN, 0, "", hang_branch},
    {"link_tee_to_element, no sink pad", Operation::OWN, 0x15020, "Failed to link tee to element", hang_source_on_tee},
    {"request_new_multiqueue_pads", Operation::OWN, 0, "", [](const Scene &scene) { request_stream(scene, ""); }},
    {"request_new_multiqueue_pads, named", Operation::OWN, 0, "", [](const Scene &scene) { request_stream(scene, "sink_7"); }},
    {"request_new_multiqueue_pads, taken name", Operation::OWN, 0x15055, "Error getting requested sink pad", [](const Scene &scene) { Media_Helper::request_new_multiqueue_pads(scene.streams.get(), "sink_0", nullptr); }},
    {"request_new_multiqueue_pads of a tee", Operation::OWN, 0x15050, "Error getting pad_template", [](const Scene &scene) { Media_Helper::request_new_multiqueue_pads(scene.split.get(), "", nullptr); }},
    {"get_corresponding_multiqueue_pad", Operation::SHARED, 0, "", pair_pads},
    {"get_corresponding_multiqueue_pad of a tee", Operation::SHARED, 0x15100, "Failed to get static pad \"sink_0\" for element split ().", [](const Scene &scene) { Media_Helper::get_corresponding_multiqueue_pad(scene.split_src.get()); }},
    {"get_corresponding_multiqueue_pad, other name", Operation::OWN, 0x15080, "Pad has wrong naming scheme. Doesn't appear to be a multiqueue pad.", pair_pad_of_other_name},
    {"get_corresponding_multiqueue_pad, no parent", Operation::OWN, 0x15070, "Could not get parent element from pad.", pair_pad_without_parent},

    {"get_element_sink_peer_or_throw", Operation::SHARED, 0, "", get_peers},
    {"get_element_sink_peer_pad_or_throw, not linked", Operation::SHARED, 0x15220, "Sink pad is not linked in get_element_sink_peer_pad_or_throw", [](const Scene &scene) { Media_Helper::get_element_sink_peer_pad_or_throw(scene.loose.get()); }},
    {"get_element_sink_peer_or_throw, no sink pad", Operation::SHARED, 0x15100, "Failed to get static pad \"sink\" for element camera ().", [](const Scene &scene) { Media_Helper::get_element_sink_peer_or_throw(scene.camera.get()); }},
    {"get_most_parent", Operation::SHARED, 0, "", get_most_parent},
    {"get_most_parent of nothing", Operation::SHARED, 0x15160, "element in get_most_parent is not a GstElement *.", [](const Scene &) { Media_Helper::get_most_parent(nullptr); }},
    {"verify_element_top_parent", Operation::SHARED, 0, "", verify_ancestors},
    {"verify_element_top_parent, no parent", Operation::SHARED, 0x15240, "Topmost parent mismatch of the first kind in verify_element_top_parent", [](const Scene &scene) { Media_Helper::verify_element_top_parent(scene.loose.get(), scene.pipeline.get()); }},
    {"verify_element_top_parent, other parent", Operation::SHARED, 0x15240, "Topmost parent mismatch of the second kind in verify_element_top_parent", [](const Scene &scene) { Media_Helper::verify_element_top_parent(scene.deep.get(), scene.recording.get()); }},

    {"media kinds", Operation::SHARED, 0, "", tell_kinds},
    {"get_media_type of nothing", Operation::SHARED, 0x15210, "caps in get_media_type is not a GstCaps *.", [](const Scene &) { Media_Helper::get_media_type(nullptr); }},
    {"element selection", Operation::SHARED, 0, "", select_elements},
    {"select_muxer in vain", Operation::SHARED, 0x15000, "Unknown file extension : could not create muxer", [](const Scene &) { Media_Helper::select_muxer("a.MKV"); }},
    {"select_demuxer in vain", Operation::SHARED, 0x15000, "Unknown file extension : could not create demuxer", [](const Scene &) { Media_Helper::select_demuxer("a.mp4"); }},
    {"select_parser in vain", Operation::SHARED, 0x15000, "Unknown video format : could not create video parser", [](const Scene &) { Media_Helper::select_parser(capture::RTP); }},
    {"select_decoder in vain", Operation::SHARED, 0x15000, "Unknown video format : could not create video parser", [](const Scene &) { Media_Helper::select_decoder(capture::UNKNOWN); }},
    {"select_payloader in vain", Operation::SHARED, 0x15000, "Unsupported format : could not select payloader", [](const Scene &) { Media_Helper::select_payloader(capture::VIDEO_RAW); }},
    {"select_video_rate in vain", Operation::SHARED, 0x15000, "Unknown video format : could not create video parser", [](const Scene &) { Media_Helper::select_video_rate(capture::MULAW); }},
    {"select_proxy_elements", Operation::SHARED, 0, "", select_proxies},
    {"select_proxy_elements in vain", Operation::SHARED, 0x15010, "Failed to select proxy elements: Unsupported caps.", [](const Scene &scene) { Media_Helper::select_proxy_elements(scene.raw.get()); }},
    {"get_media_info", Operation::RARE, 0, "", discover},
    {"get_media_info of no file", Operation::RARE, 0x152C0, "Discoverer returned error: GST_DISCOVERER_ERROR", [](const Scene &) { Media_Helper::get_media_info("file:///nowhere", 30 * GST_SECOND); }},
    {"get_media_info without timeout", Operation::OWN, 0x152A0, "Error creating discoverer in get_media_info", [](const Scene &) { Media_Helper::get_media_info("file:///nowhere", GST_CLOCK_TIME_NONE); }},

    {"caps readers", Operation::SHARED, 0, "", read_caps},
    {"get_framerate_from_caps in vain", Operation::SHARED, 0x15260, "Unable to get framerate from caps in get_framerate_from_caps", [](const Scene &scene) { Media_Helper::get_framerate_from_caps(scene.rtp.get()); }},
    {"get_framerate_from_caps of 0", Operation::SHARED, 0x15270, "Retrieved invalid numerator or denomenator in get_framerate_from_caps", [](const Scene &) { read_bad_caps<Media_Helper::get_framerate_from_caps>("video/x-raw, framerate=0/1"); }},
    {"get_resolution_from_caps in vain", Operation::SHARED, 0x15280, "Unable to get width and/or height in get_resolution_from_caps", [](const Scene &scene) { Media_Helper::get_resolution_from_caps(scene.jpeg.get()); }},
    {"get_resolution_from_caps of 0", Operation::SHARED, 0x15290, "Retrieved invalid width and/or height in get_resolution_from_caps", [](const Scene &) { read_bad_caps<Media_Helper::get_resolution_from_caps>("video/x-raw, width=640, height=0"); }},
    {"get_encoding_name_from_caps of nothing", Operation::SHARED, 0x15210, "caps in get_encoding_name_from_caps is not a GstCaps *.", [](const Scene &) { Media_Helper::get_encoding_name_from_caps(nullptr); }},
    {"calculate_resolution of 0", Operation::SHARED, 0x15250, "Invalid resolution provided in calculate_resolution", [](const Scene &) { Media_Helper::calculate_resolution({640, 0}, {640, 480}); }},
    {"caps_equal", Operation::SHARED, 0, "", compare_caps},

    {"get_element_type", Operation::SHARED, 0, "", get_element_type},
    {"get_element_type in vain", Operation::SHARED, 0x151D0, "Could not find factory for \"nosuchfactory\" in gst_element_factory_find_or_throw", [](const Scene &) { Media_Helper::get_element_type("nosuchfactory"); }},
    {"searches with caps", Operation::SHARED, 0, "", search},
    {"searches with caps in vain", Operation::SHARED, 0, "", search_in_vain},
    {"find_element_with_caps_and_type of type 0", Operation::SHARED, 0x15200, "element_type in find_element_with_caps_and_type is not a valid GType.", [](const Scene &scene) { Media_Helper::find_element_with_caps_and_type(scene.bin(), 0, scene.raw.get()); }},
    {"find_tee_with_caps without bin", Operation::SHARED, 0x15180, "bin is not a GstBin *.", [](const Scene &scene) { Media_Helper::find_tee_with_caps(nullptr, scene.raw.get()); }},
    {"find_appsink_with_caps without caps", Operation::SHARED, 0x15210, "caps in find_element_with_caps_and_type is not a GstCaps *.", [](const Scene &scene) { Media_Helper::find_appsink_with_caps(scene.bin(), nullptr); }},
    {"find_all_appsinks", Operation::SHARED, 0, "", find_all_appsinks},
    {"find_all_appsinks without bin", Operation::SHARED, 0x15180, "bin in find_all_appsinks is not a GstBin *.", [](const Scene &) { Media_Helper::find_all_appsinks(nullptr); }},
    {"bin_has_element_type", Operation::SHARED, 0, "", look_for_types},
    {"bin_has_element_type of type 0", Operation::SHARED, 0x15200, "element_type in bin_has_element_type is not a valid GType.", [](const Scene &scene) { Media_Helper::bin_has_element_type(scene.bin(), 0); }},
    {"caps_compare_func, type_compare_func", Operation::SHARED, 0, "", compare_elements},

    {"names of enumerators", Operation::SHARED, 0, "", name_enumerators},
    {"gst_time_to_string, gst_segment_to_string", Operation::SHARED, 0, "", write_times},
    {"generate_queue_stats_report", Operation::SHARED, 0, "", report_queue},
});
// clang-format on

namespace {

std::vector<std::string> make_expected_warnings() {
  std::vector<std::string> warnings = {"presence == GST_PAD_REQUEST",
                                       "already has a pad named sink_0", "is invalid for instance"};
  if (framework_is_1_18())
    warnings.insert(warnings.end(), {"is not unique in bin", "already has parent"});
  else
    warnings.emplace_back("GST_CLOCK_TIME_IS_VALID");
  return warnings;
}

}  // namespace

const std::vector<std::string> expected_warnings = make_expected_warnings();

namespace {

// The error of an operation, with its class determined from its code.
struct Outcome {
  int code = 0;
  std::string text;
};

Outcome outcome_of(const Operation &operation, const Scene &scene) {
  try {
    operation.run(scene);
  } catch (const Backend_Error<std::runtime_error> &error) {
    require(error.code() != TEC::INVALID_RESOLUTION, "threw a backend error");
    return {error.code(), error.what()};
  } catch (const Tavren_Error<std::logic_error> &error) {
    require(error.code() == TEC::INVALID_RESOLUTION, "threw a logic error");
    return {error.code(), error.what()};
  } catch (const std::exception &error) {
    require(false, "threw another class");
    return {-1, error.what()};
  }
  return {};
}

}  // namespace

std::string complaint(const Operation &operation, const Scene &scene) {
  wrong.clear();
  const Outcome outcome = outcome_of(operation, scene);
  if (wrong.empty() && outcome.code == operation.code && outcome.text == operation.text) return {};

  std::ostringstream text;
  text << operation.name << ": " << wrong << " (code 0x" << std::hex << outcome.code
       << ", expected 0x" << operation.code << ", text \"" << outcome.text << "\")";
  return text.str();
}

}  // namespace kel::tavren::tests
