// Passes unusual caps, one text per line, to everything that accepts caps.

#include <algorithm>
#include <map>
#include <sstream>
#include <utility>
#include <vector>

#include <gst/app/gstappsink.h>
#include <sanitizer/lsan_interface.h>

#include "depayloader_references.h"
#include "elements.h"
#include "fuzzing.h"

using namespace kel::tavren::capture;
using namespace kel::tavren::fuzz;
using namespace kel::tavren::tests;
namespace TEC = kel::tavren::TEC;

namespace {

// Parses each line, or twice if it begins with '=', to get equal caps in two objects. A few lines
// suffice.
std::vector<Caps> parse(const std::string &text) {
  // The framework's parser is not under test. It leaks the parsed part of an invalid list.
  const Tolerated_Criticals parser;
  const __lsan::ScopedDisabler parsed;
  std::vector<Caps> all;
  std::istringstream lines(text);
  for (std::string line; all.size() < 6 && std::getline(lines, line);) {
    const bool twice = line.rfind('=', 0) == 0;
    for (int i = 0; i < (twice ? 2 : 1); ++i)
      if (const Caps caps = make_caps(line.c_str() + (twice ? 1 : 0))) all.push_back(caps);
  }
  return all;
}

void mark_contents(GstCaps *caps) {
  mark("structures " + std::to_string(gst_caps_get_size(caps)));
  for (guint i = 0; i < gst_caps_get_size(caps); ++i) {
    const GstStructure *const structure = gst_caps_get_structure(caps, i);
    for (gint n = 0; n < gst_structure_n_fields(structure); ++n) {
      const char *const field = gst_structure_nth_field_name(structure, static_cast<guint>(n));
      mark(g_type_name(gst_structure_get_field_type(structure, field)));
    }
  }
}

// Returns a field of the first structure if it has the given type, otherwise null.
const GValue *first_field(GstCaps *caps, const char *name, GType type) {
  if (gst_caps_get_size(caps) == 0) return nullptr;
  const GValue *const value = gst_structure_get_value(gst_caps_get_structure(caps, 0), name);
  return value != nullptr && G_VALUE_HOLDS(value, type) ? value : nullptr;
}

void check_framerate(GstCaps *caps) {
  const GValue *const rate = first_field(caps, "framerate", GST_TYPE_FRACTION);
  std::pair<long long, long long> expected(1, 1);
  if (rate != nullptr)
    expected = {gst_value_get_fraction_numerator(rate), gst_value_get_fraction_denominator(rate)};
  const bool valid = expected.first > 0 && expected.second > 0;
  const int code = rate == nullptr ? TEC::CAPS_WITHOUT_FRAMERATE
                   : valid         ? 0
                                   : TEC::INVALID_FRAMERATE;
  std::pair<long long, long long> read = expected;
  run({code}, [&] { read = Media_Helper::get_framerate_from_caps(caps); });
  require(read == expected, "the frame rate is that of the first structure");
}

void check_resolution(GstCaps *caps) {
  const GValue *const width = first_field(caps, "width", G_TYPE_INT);
  const GValue *const height = first_field(caps, "height", G_TYPE_INT);
  const bool complete = width != nullptr && height != nullptr;
  const bool valid = complete && g_value_get_int(width) > 0 && g_value_get_int(height) > 0;
  const int code = !complete ? TEC::CAPS_WITHOUT_RESOLUTION
                   : valid   ? 0
                             : TEC::INVALID_CAPS_RESOLUTION;
  std::pair<unsigned long long, unsigned long long> read;
  run({code}, [&] { read = Media_Helper::get_resolution_from_caps(caps); });
  if (!valid) return;
  require(read.first == static_cast<unsigned>(g_value_get_int(width)) &&
              read.second == static_cast<unsigned>(g_value_get_int(height)),
          "the resolution is that of the first structure");
}

void check_encoding_name(GstCaps *caps) {
  const GValue *const name = first_field(caps, "encoding-name", G_TYPE_STRING);
  const char *const expected = name != nullptr ? g_value_get_string(name) : nullptr;
  require(Media_Helper::get_encoding_name_from_caps(caps) == (expected != nullptr ? expected : ""),
          "the encoding name is that of the first structure");
}

void check_readers(GstCaps *caps) {
  // For empty caps, the readers request a first structure that does not exist.
  if (gst_caps_get_size(caps) == 0) {
    const Tolerated_Criticals no_structure;
    check_framerate(caps);
    check_resolution(caps);
    check_encoding_name(caps);
  } else {
    check_framerate(caps);
    check_resolution(caps);
    check_encoding_name(caps);
  }
}

void check_media_type(GstCaps *caps) {
  static const std::map<std::string, MediaType> types = {
      {"image/jpeg", JPEG},       {"video/x-h264", H264},       {"audio/mpeg", MPEG_AUDIO},
      {"video/mpeg", MPEG_VIDEO}, {"video/x-divx", MPEG_VIDEO}, {"application/x-rtp", RTP},
      {"video/x-raw", VIDEO_RAW}, {"audio/x-raw", AUDIO_RAW},   {"audio/x-mulaw", MULAW},
  };
  const MediaType type = Media_Helper::get_media_type(caps);
  require(JPEG <= type && type <= UNKNOWN, "the media type is an enumerator");
  if (type == UNKNOWN) return;

  for (guint i = 0; i < gst_caps_get_size(caps); ++i) {
    const auto named = types.find(gst_structure_get_name(gst_caps_get_structure(caps, i)));
    require(named != types.end() && named->second == (type == RTP_METADATA ? RTP : type),
            "all structures are of the kind");
  }
  if (type == RTP || type == RTP_METADATA)
    require((Media_Helper::get_encoding_name_from_caps(caps) == "VND.ONVIF.METADATA") ==
                (type == RTP_METADATA),
            "metadata has the encoding name of metadata");
}

void check_proxy(GstCaps *caps) {
  // Releases the references that the choice keeps.
  const Depayloader_References references;
  std::pair<std::string, std::string> chosen;
  const int code = run({0, TEC::NO_PROXY_ELEMENTS_FOR_CAPS}, [&] {
                     chosen = Media_Helper::select_proxy_elements(caps);
                   }).code;
  const auto takes_caps = [caps](const char *name) {
    return gst_element_factory_can_sink_all_caps(find_factory(name).get(), caps) != FALSE;
  };
  const auto *const first =
      std::find_if(std::begin(depayloaders), std::end(depayloaders), takes_caps);
  require((code == 0) == (first != std::end(depayloaders)),
          "elements are selected exactly if a depayloader accepts the caps");
  if (code != 0) return;
  require(chosen.first == *first, "the first depayloader that accepts the caps is selected");
  const auto codec = [](const std::string &name) { return name.substr(0, name.find("pay")); };
  require(codec(chosen.second) + "depay" == chosen.first, "both elements are for the same codec");
}

// A bin with a tee whose peer offers the caps, and with an appsink on which they are set.
class Searched_Bin {
public:
  explicit Searched_Bin(GstCaps *caps)
      : bin_(make_bin("bin")), filter_(make_element("capsfilter")), tee_(make_element("tee")),
        appsink_(make_element("appsink")) {
    g_object_set(filter_.get(), "caps", caps, nullptr);
    gst_app_sink_set_caps(GST_APP_SINK(appsink_.get()), caps);
    for (const Element &element : {filter_, tee_, appsink_})
      gst_bin_add(GST_BIN(bin_.get()), element.get());
    gst_element_link(filter_.get(), tee_.get());
  }

  void search(GstCaps *wanted, GType any_type) const {
    GstBin *const bin = GST_BIN(bin_.get());
    const std::vector<guint> before = counts();
    // The search uses the caps that the tee's peer can send.
    const Pad tee_sink = static_pad(tee_, "sink");
    const Caps offered(gst_pad_peer_query_caps(tee_sink.get(), nullptr), false);
    const Caps set(gst_app_sink_get_caps(GST_APP_SINK(appsink_.get())), false);

    expect(tee_, Media_Helper::find_tee_with_caps(bin, wanted),
           gst_caps_is_subset(offered.get(), wanted) != FALSE);
    expect(appsink_, Media_Helper::find_appsink_with_caps(bin, wanted),
           set && gst_caps_is_subset(set.get(), wanted) != FALSE);
    GstElement *found = nullptr;
    run({any_type == G_TYPE_INVALID ? TEC::INVALID_ELEMENT_TYPE : 0},
        [&] { found = Media_Helper::find_element_with_caps_and_type(bin, any_type, wanted); });
    if (found != nullptr) {
      require(G_OBJECT_TYPE(found) == any_type, "the element has the requested type");
      gst_object_unref(found);
    }
    require(counts() == before, "a search keeps no references");
  }

private:
  std::vector<guint> counts() const {
    return reference_counts({bin_.get(), filter_.get(), tee_.get(), appsink_.get()});
  }

  static void expect(const Element &element, GstElement *found, bool matches) {
    require(found == (matches ? element.get() : nullptr), "an element is found by its caps");
    if (found != nullptr) gst_object_unref(found);
  }

  Element bin_;
  Element filter_;
  Element tee_;
  Element appsink_;
};

void check_request(const Caps &caps) {
  const Element multiqueue = make_element("multiqueue");
  const std::pair<GstPad *, GstPad *> pads =
      Media_Helper::request_new_multiqueue_pads(multiqueue.get(), "", caps.get());
  require(pads.first != nullptr && pads.second != nullptr, "both pads exist");
  const Pad partner(Media_Helper::get_corresponding_multiqueue_pad(pads.second), false);
  require(partner.get() == pads.first, "the partner of the partner is the pad");
  gst_element_release_request_pad(multiqueue.get(), pads.first);
  gst_object_unref(pads.first);
  gst_object_unref(pads.second);
}

void check_equality(const std::vector<Caps> &all) {
  require(Media_Helper::caps_equal(all, all), "a list equals itself");
  for (const Caps &first : all)
    for (const Caps &second : all) {
      const bool equal = Media_Helper::caps_equal({first}, {second});
      require(equal == Media_Helper::caps_equal({second}, {first}), "equality has no direction");
      require(equal == (gst_caps_is_equal(first.get(), second.get()) != FALSE),
              "equality of one is that of the framework");
    }
  if (!all.empty())
    require(!Media_Helper::caps_equal(all, {all.begin() + 1, all.end()}), "no caps is left over");
}

}  // namespace

int LLVMFuzzerInitialize(int *, char ***) {
  kel::tavren::fuzz::start_framework({"coreelements", "app", "rtp"});
  return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  const std::string text(reinterpret_cast<const char *>(data), size);
  const std::vector<Caps> all = parse(text);
  if (all.empty()) return 0;
  const Searched_Bin bin(all.front().get());
  // Most of these numbers are not types.
  const GType any_type = size % 8;
  std::vector<gint> counts;
  for (const Caps &caps : all)
    counts.push_back(reference_count(caps.get()));

  for (const Caps &caps : all) {
    mark_contents(caps.get());
    check_readers(caps.get());
    check_media_type(caps.get());
    check_proxy(caps.get());
    bin.search(caps.get(), any_type);
    check_request(caps);
  }
  check_equality(all);
  for (std::size_t i = 0; i < all.size(); ++i)
    require(reference_count(all[i].get()) == counts[i], "no reference to the caps is kept");
  return 0;
}
