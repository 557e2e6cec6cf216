// Passes arbitrary values without a name to the library: enumerations, times, segments and picture
// sizes.

#include <array>
#include <cmath>
#include <cstring>
#include <regex>
#include <utility>

#include <fuzzer/FuzzedDataProvider.h>

#include "fuzzing.h"

using namespace kel::tavren::capture;
using namespace kel::tavren::fuzz;
namespace TEC = kel::tavren::TEC;

namespace {

// Returns the framework's name of a value, or null if it has none. For flags, the value must be a
// single flag.
const char *name_of(GType type, unsigned value) {
  if (G_TYPE_IS_ENUM(type)) {
    const auto *const values = static_cast<GEnumClass *>(g_type_class_peek_static(type));
    for (guint i = 0; i < values->n_values; ++i)
      if (static_cast<unsigned>(values->values[i].value) == value)
        return values->values[i].value_name;
    return nullptr;
  }
  const auto *const values = static_cast<GFlagsClass *>(g_type_class_peek_static(type));
  for (guint i = 0; i < values->n_values; ++i)
    if (values->values[i].value == value) return values->values[i].value_name;
  return nullptr;
}

// Checks that a text is the framework's name of the value, optionally with an explanation, or the
// fallback.
void check_name(GType type, unsigned value, const std::string &text, const std::string &fallback) {
  if (text == fallback) return;
  const char *const name = name_of(type, value);
  require(name != nullptr, "a value without a name has the fallback text");
  require(text == name || text.rfind(std::string(name) + ": ", 0) == 0,
          "a text begins with the name");
}

void check_enumerations(unsigned value) {
  const auto state = static_cast<GstState>(value);
  const std::string state_text = Media_Helper::gst_state_to_string(state);
  check_name(GST_TYPE_STATE, value, state_text, "UNKNOWN");
  require((state_text == "UNKNOWN") == (name_of(GST_TYPE_STATE, value) == nullptr),
          "every state has its name");
  check_name(GST_TYPE_STATE, value, Media_Helper::gst_enum_message(state),
             "Unknown GstState value");
  check_name(GST_TYPE_STATE_CHANGE, value,
             Media_Helper::gst_state_change_to_string(static_cast<GstStateChange>(value)),
             "UNKNOWN");
  check_name(GST_TYPE_STATE_CHANGE_RETURN, value,
             Media_Helper::gst_enum_message(static_cast<GstStateChangeReturn>(value)),
             "Unknown GstStateChangeReturn value");
  check_name(GST_TYPE_PAD_LINK_RETURN, value,
             Media_Helper::gst_enum_message(static_cast<GstPadLinkReturn>(value)),
             "Unknown GstPadLinkReturn value");
  check_name(GST_TYPE_MESSAGE_TYPE, value,
             Media_Helper::gst_enum_message(static_cast<GstMessageType>(value)),
             "Unknown GstMessageType value");
  check_name(GST_TYPE_DISCOVERER_RESULT, value,
             Media_Helper::gst_discoverer_result_to_string(static_cast<GstDiscovererResult>(value)),
             "UNKNOWN");
}

void check_media_type(unsigned value) {
  const auto type = static_cast<MediaType>(static_cast<int>(value));
  const bool known = value < UNKNOWN;
  require((Media_Helper::get_media_type_string(type) != "UNKNOWN") == known,
          "every kind has its name");

  const bool video = Media_Helper::is_video(type, true);
  const bool audio = Media_Helper::is_audio(type, true);
  require(!(video && audio), "no media type is both video and audio");
  require(known || !(video || audio), "an unknown media type is neither video nor audio");
  require(video || !Media_Helper::is_video(type, false), "raw video only adds to the video");
  require(audio || !Media_Helper::is_audio(type, false), "raw audio only adds to the audio");

  for (const auto select : {Media_Helper::select_parser, Media_Helper::select_decoder,
                            Media_Helper::select_payloader, Media_Helper::select_video_rate}) {
    std::string factory;
    const int code = run({0, TEC::KEY_NOT_FOUND}, [&] { factory = select(type); }).code;
    require((code == 0) == !factory.empty(), "a selected element has a name");
    require(code != 0 || video || audio, "elements are selected for video and audio only");
  }
}

void check_time(GstClockTime time) {
  static const std::regex form("(\\d+):(\\d\\d):(\\d\\d)\\.(\\d{9})");
  const std::string text = Media_Helper::gst_time_to_string(time);
  std::smatch parts;
  require(std::regex_match(text, parts, form), "a time has the documented format");
  if (time == GST_CLOCK_TIME_NONE) {
    require(text == "99:99:99.999999999", "GST_CLOCK_TIME_NONE has a fixed text");
    return;
  }
  const auto part = [&parts](std::size_t i) { return std::stoull(parts[i]); };
  require(part(2) < 60 && part(3) < 60, "minutes and seconds stay below 60");
  require(((part(1) * 60 + part(2)) * 60 + part(3)) * GST_SECOND + part(4) == time,
          "a time can be read back");
}

std::string rate_text(double rate) {
  std::array<char, G_ASCII_DTOSTR_BUF_SIZE> text{};
  return g_ascii_formatd(text.data(), text.size(), "%g", rate);
}

void check_segment(FuzzedDataProvider &input) {
  GstSegment segment;
  gst_segment_init(&segment, GST_FORMAT_TIME);
  std::array<char, 4 + 9 * 8> bits{};
  input.ConsumeData(bits.data(), bits.size());
  const char *from = bits.data();
  const auto take = [&from](auto &value) {
    std::memcpy(&value, from, sizeof value);
    from += sizeof value;
  };
  int flags = 0;
  take(flags);
  segment.flags = static_cast<GstSegmentFlags>(flags);
  take(segment.rate);
  take(segment.applied_rate);
  for (guint64 *const time : {&segment.base, &segment.offset, &segment.start, &segment.stop,
                              &segment.time, &segment.position, &segment.duration})
    take(*time);

  const auto time_text = Media_Helper::gst_time_to_string;
  require(
      Media_Helper::gst_segment_to_string(&segment) ==
          "Segment :: Flags = " + std::to_string(flags) + ", Rate = " + rate_text(segment.rate) +
              ", Applied_Rate = " + rate_text(segment.applied_rate) +
              ", Base = " + time_text(segment.base) + ", Offset = " + time_text(segment.offset) +
              ", Start = " + time_text(segment.start) + ", Stop = " + time_text(segment.stop) +
              ", Time = " + time_text(segment.time) + ", Position = " +
              time_text(segment.position) + ", Duration = " + time_text(segment.duration) + ". ",
      "a segment shows all its fields");

  segment.format = static_cast<GstFormat>(input.ConsumeIntegral<int>());
  require((Media_Helper::gst_segment_to_string(&segment) ==
           "Segment is not GST_FORMAT_TIME. Cannot print data.") ==
              (segment.format != GST_FORMAT_TIME),
          "only a segment in time is shown");
}

// Above 2^52, a double is less precise than a pixel: the computed side may be the next double.
bool fits(unsigned long long side, unsigned long long bound) {
  return side <= bound ||
         static_cast<double>(side) <= std::nextafter(static_cast<double>(bound), HUGE_VAL);
}

void check_resolution(FuzzedDataProvider &input) {
  using Side = unsigned long long;
  // Sides of all magnitudes, with small ones as frequent as large ones.
  const auto side = [&input] {
    const Side bits = input.ConsumeBool() ? input.ConsumeIntegral<Side>() : G_MAXUINT64;
    return bits >> input.ConsumeIntegralInRange<unsigned>(0, 63);
  };
  const std::pair<Side, Side> bounds(side(), side());
  const std::pair<Side, Side> source(side(), side());
  const bool valid =
      bounds.first != 0 && bounds.second != 0 && source.first != 0 && source.second != 0;
  try {
    const std::pair<Side, Side> result = Media_Helper::calculate_resolution(bounds, source);
    require(valid, "a side of 0 is refused");
    require(result.first == bounds.first || result.second == bounds.second,
            "one side is that of the bounds");
    require(fits(result.first, bounds.first) && fits(result.second, bounds.second),
            "the result fits into its bounds");
  } catch (const kel::tavren::Tavren_Error<std::logic_error> &error) {
    require(!valid && error.code() == TEC::INVALID_RESOLUTION && *error.what() != '\0',
            "only a side of 0 is refused");
  }
}

}  // namespace

int LLVMFuzzerInitialize(int *, char ***) {
  kel::tavren::fuzz::start_framework({});
  for (const GType type :
       {GST_TYPE_STATE, GST_TYPE_STATE_CHANGE, GST_TYPE_STATE_CHANGE_RETURN,
        GST_TYPE_PAD_LINK_RETURN, GST_TYPE_MESSAGE_TYPE, GST_TYPE_DISCOVERER_RESULT})
    g_type_class_ref(type);
  return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const auto value = input.ConsumeIntegral<unsigned>();
  check_enumerations(value);
  check_media_type(value);
  check_time(input.ConsumeIntegral<GstClockTime>());
  check_resolution(input);
  check_segment(input);
  return 0;
}
