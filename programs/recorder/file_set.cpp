#include "file_set.h"

#include <algorithm>
#include <utility>

#include <tavren/capture/media_helper.h>

#include "command_line/program.h"
#include "command_line/time_text.h"

namespace kel::tavren::programs {

using capture::Media_Helper;

namespace {

constexpr gint64 finish_limit = 10 * G_TIME_SPAN_SECOND;
constexpr gint64 space_interval = 2 * G_TIME_SPAN_SECOND;

}  // namespace

File_Set::File_Set(GstElement *pipeline, const Container &container, Recording_Files names,
                   guint64 keep_free, Recorder_Log &log)
    : pipeline_(pipeline), container_(container), names_(std::move(names)), keep_free_(keep_free),
      log_(log) {}

Media_File &File_Set::open(std::vector<Track> tracks, gint64 start) {
  Open_File file;
  file.reservation = names_.next();
  file.media = std::make_unique<Media_File>(pipeline_, container_, file.reservation->path(),
                                            std::move(tracks), start);
  files_.push_back(std::move(file));
  return newest();
}

std::vector<Media_File *> File_Set::old_files() const {
  std::vector<Media_File *> old;
  for (const Open_File &file : files_)
    if (&file != &files_.back() && !file.media->has_ended()) old.push_back(file.media.get());
  return old;
}

bool File_Set::handle(GstMessage *message) {
  const auto file =
      std::find_if(files_.begin(), files_.end(), [message](const Open_File &candidate) {
        return candidate.media->owns(message);
      });
  if (file == files_.end()) return false;
  if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
    files_.clear();
    throw Bus_Error(message);
  }
  file->media->handle(message);
  close_finished();
  return true;
}

void File_Set::tick() {
  close_finished();
  const gint64 now = g_get_monotonic_time();
  if (keep_free_ == 0 || now - space_checked_at_ < space_interval) return;
  space_checked_at_ = now;
  free_space();
}

void File_Set::flush() noexcept {
  for (const Open_File &file : files_)
    file.media->flush();
}

void File_Set::end() noexcept {
  for (const Open_File &file : files_)
    file.media->end();
}

void File_Set::close_finished() {
  const gint64 now = g_get_monotonic_time();
  for (auto file = files_.begin(); file != files_.end();) {
    const auto current = file++;
    const Media_File &media = *current->media;
    if (media.has_ended() && current->ended_at == 0) current->ended_at = now;
    if (media.is_finished()) {
      report(media);
      finished_bytes_ += media.bytes();
      ++finished_;
      last_finished_ = media.path();
      files_.erase(current);
    } else if (current->ended_at != 0 && now - current->ended_at > finish_limit) {
      const std::string path = media.path();
      files_.erase(current);
      throw Bus_Error(GST_RESOURCE_ERROR_CLOSE, path + " could not be finished in time");
    }
  }
}

void File_Set::report(const Media_File &file) {
  std::string line = "wrote " + file.path() + ": " +
                     Media_Helper::gst_time_to_string(file.duration()) + ", " +
                     std::to_string(file.bytes()) + " bytes";
  for (const Track &track : file.tracks())
    line += ", " + track.name + ' ' + in_seconds(track.duration());
  log_.line(line);
}

void File_Set::free_space() {
  std::vector<std::string> in_use;
  for (const Open_File &file : files_)
    in_use.push_back(file.media->path());
  for (const std::string &path : names_.keep_free(keep_free_, in_use))
    log_.line("removed " + path + " to keep space free");
}

std::string File_Set::current() const {
  return files_.empty() ? last_finished_ : files_.back().media->path();
}

guint64 File_Set::bytes() const {
  guint64 sum = finished_bytes_;
  for (const Open_File &file : files_)
    sum += file.media->bytes();
  return sum;
}

guint64 File_Set::waiting_bytes() const {
  guint64 sum = 0;
  for (const Open_File &file : files_)
    sum += file.media->waiting_bytes();
  return sum;
}

std::vector<std::string> File_Set::queue_reports() const {
  return files_.empty() ? std::vector<std::string>() : files_.back().media->queue_reports();
}

std::vector<Queue_Level> File_Set::queue_levels() const {
  std::vector<Queue_Level> levels;
  for (const Open_File &file : files_)
    for (Queue_Level &level : file.media->queue_levels())
      levels.push_back(std::move(level));
  return levels;
}

}  // namespace kel::tavren::programs
