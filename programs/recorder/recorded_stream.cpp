#include "recorded_stream.h"

#include <algorithm>

namespace kel::tavren::programs {

namespace {

constexpr gint64 early_limit = 200 * GST_MSECOND;  // a key frame may precede its file by this much
constexpr gint64 audio_silence = 2 * G_TIME_SPAN_SECOND;
constexpr gint64 video_silence = 3 * G_TIME_SPAN_SECOND;
constexpr gint64 rare_video_silence = 10 * G_TIME_SPAN_SECOND;

}  // namespace

void Recorded_Stream::close() {
  if (file != nullptr) leave_file();
  is_over = true;
  waiting.clear();
}

void Recorded_Stream::leave_file() {
  file->end_track(number);
  file = nullptr;
}

bool Recorded_Stream::belongs_to(const Frame &frame, gint64 start) const {
  return frame.pts >= start || (is_video && frame.is_key && start - frame.pts < early_limit);
}

// Compares decoding times: a frame that others refer to may be shown later than they are.
bool Recorded_Stream::is_past_end(const Frame &frame, gint64 begin, GstClockTime duration) const {
  const gint64 delay = has_begun ? 0 : frame.pts - frame.dts;
  const gint64 first = has_begun ? std::min(begin_dts, begin) : begin - delay;
  return frame.dts - first >= static_cast<gint64>(duration);
}

// Video may have a low frame rate, which is not known before the second frame.
gint64 Recorded_Stream::longest_silence() const {
  if (!is_video) return audio_silence;
  return times.interval() >= GST_USECOND ? video_silence : rare_video_silence;
}

}  // namespace kel::tavren::programs
