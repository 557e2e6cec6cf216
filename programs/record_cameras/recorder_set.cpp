#include "recorder_set.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace kel::tavren::programs {

Recorder_Set::Entry Recorder_Set::make_entry(const Listed_Camera &camera) {
  auto recorder = std::make_unique<Recorder_Thread>(camera.options, log_);
  return {camera, std::move(recorder), nullptr};
}

Recorder_Set::Entry Recorder_Set::make_entry_or_failure(const Listed_Camera &camera) noexcept {
  try {
    return make_entry(camera);
  } catch (...) {
    log_.write_failure(camera.options.name, std::current_exception());
    return {camera, nullptr, std::current_exception()};
  }
}

// Returns whether a recorder has the settings in the list.
bool Recorder_Set::is_wanted(const std::string &name, const Entry &entry) const {
  const auto wanted = wanted_.find(name);
  return wanted != wanted_.end() && wanted->second.settings == entry.camera.settings;
}

// Returns whether a camera must wait until a recorder has ended: its predecessor, or another
// recorder that writes to its file.
bool Recorder_Set::is_blocked(const std::string &name, const Listed_Camera &camera) const {
  return std::any_of(entries_.begin(), entries_.end(), [&](const auto &entry) {
    return entry.first == name || entry.second.camera.output == camera.output;
  });
}

Recorder_Set::Entries Recorder_Set::make_new_entries() {
  Entries created;
  for (const auto &[name, camera] : wanted_) {
    if (is_blocked(name, camera)) continue;
    try {
      created.emplace(name, make_entry(camera));
    } catch (const std::exception &error) {
      throw std::runtime_error('[' + name + "]: " + error.what());
    }
  }
  return created;
}

void Recorder_Set::apply(Camera_List cameras) {
  std::swap(wanted_, cameras);
  try {
    Entries created = make_new_entries();
    entries_.merge(created);
  } catch (...) {
    std::swap(wanted_, cameras);
    throw;
  }
  for (auto entry = entries_.begin(); entry != entries_.end();) {
    const auto current = entry++;
    if (current->second.has_failed())
      entries_.erase(current);  // tick() tries again
    else if (is_wanted(current->first, current->second))
      current->second.recorder->start();
    else
      current->second.recorder->stop();
  }
}

void Recorder_Set::stop() {
  is_stopping_ = true;
  for (auto &[name, entry] : entries_)
    if (entry.recorder) entry.recorder->stop();
}

void Recorder_Set::tick() {
  if (is_stopping_) return;
  remove_ended();
  start_waiting();
}

void Recorder_Set::remove_ended() {
  for (auto entry = entries_.begin(); entry != entries_.end();) {
    const auto current = entry++;
    if (!current->second.has_ended() || is_wanted(current->first, current->second)) continue;
    has_failed_ = has_failed_ || current->second.has_failed();
    entries_.erase(current);
  }
}

void Recorder_Set::start_waiting() {
  for (const auto &[name, camera] : wanted_) {
    if (is_blocked(name, camera)) continue;
    const Entry &entry = entries_.emplace(name, make_entry_or_failure(camera)).first->second;
    if (entry.recorder) entry.recorder->start();
  }
}

bool Recorder_Set::has_ended() const {
  return std::all_of(entries_.begin(), entries_.end(),
                     [](const auto &entry) { return entry.second.has_ended(); });
}

bool Recorder_Set::has_failed() const {
  return has_failed_ || std::any_of(entries_.begin(), entries_.end(),
                                    [](const auto &entry) { return entry.second.has_failed(); });
}

std::map<std::string, Recorder_Status> Recorder_Set::statuses() const {
  std::map<std::string, Recorder_Status> statuses;
  for (const auto &[name, entry] : entries_) {
    Recorder_Status &status = statuses[name];
    if (entry.recorder) {
      status = entry.recorder->status();
    } else {
      status.state = Recorder_State::failed;
      status.failure = entry.failure;
    }
  }
  return statuses;
}

}  // namespace kel::tavren::programs
