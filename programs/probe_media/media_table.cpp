#include "media_table.h"

#include <ostream>

#include <tavren/capture/media_helper.h>

#include "command_line/text_columns.h"

namespace kel::tavren::programs {

using capture::Media_Helper;

namespace {

using Caps = boost::intrusive_ptr<GstCaps>;

const char *const absent = "-";

// Still images have the frame rate 0/1. Audio has neither a frame rate nor a size.
bool means_absent(TEC::Tavren_Error_Code code) {
  return code == TEC::CAPS_WITHOUT_FRAMERATE || code == TEC::INVALID_FRAMERATE ||
         code == TEC::CAPS_WITHOUT_RESOLUTION || code == TEC::INVALID_CAPS_RESOLUTION;
}

template <typename Read>
std::string text_or_absent(Read &&read) {
  try {
    return read();
  } catch (const Tavren_Error<std::exception> &error) {
    if (!means_absent(error.code())) throw;
    return absent;
  }
}

std::string to_text(const Resolution &resolution) {
  return std::to_string(resolution.first) + "x" + std::to_string(resolution.second);
}

std::string resolution_text(GstCaps *caps) {
  return text_or_absent([&] { return to_text(Media_Helper::get_resolution_from_caps(caps)); });
}

std::string framerate_text(GstCaps *caps) {
  return text_or_absent([&] {
    const auto [numerator, denominator] = Media_Helper::get_framerate_from_caps(caps);
    return std::to_string(numerator) + "/" + std::to_string(denominator);
  });
}

std::string fitted_text(GstCaps *caps, const Resolution &box) {
  return text_or_absent([&] {
    return to_text(
        Media_Helper::calculate_resolution(box, Media_Helper::get_resolution_from_caps(caps)));
  });
}

void add_rows(std::vector<Text_Row> &rows, const std::string &name,
              const std::vector<Caps> &streams, const std::optional<Resolution> &box) {
  int number = 0;
  for (const Caps &caps : streams) {
    Text_Row row = {name + " " + std::to_string(++number),
                    Media_Helper::get_media_type_string(Media_Helper::get_media_type(caps.get())),
                    gst_structure_get_name(gst_caps_get_structure(caps.get(), 0)),
                    resolution_text(caps.get()), framerate_text(caps.get())};
    if (box) row.push_back(fitted_text(caps.get(), *box));
    rows.push_back(std::move(row));
  }
}

// GST_CLOCK_TIME_NONE would be printed as more than 99 hours.
std::string duration_text(GstClockTime duration) {
  return GST_CLOCK_TIME_IS_VALID(duration) ? Media_Helper::gst_time_to_string(duration) : absent;
}

}  // namespace

void print_media_table(std::ostream &out, const capture::Media_Info &info,
                       const std::optional<Resolution> &box) {
  std::vector<Text_Row> rows = {{"STREAM", "KIND", "FORMAT", "RESOLUTION", "FRAME RATE"}};
  if (box) rows.front().push_back("FITS " + to_text(*box));
  add_rows(rows, "video", info.video_caps, box);
  add_rows(rows, "audio", info.audio_caps, box);

  out << info.uri << '\n' << "duration " << duration_text(info.duration) << '\n';
  print_columns(out, rows);
}

}  // namespace kel::tavren::programs
