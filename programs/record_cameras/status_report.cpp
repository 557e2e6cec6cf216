#include "status_report.h"

#include <sstream>

#include <nlohmann/json.hpp>

#include "command_line/program.h"
#include "command_line/time_text.h"

namespace kel::tavren::programs {

using Json = nlohmann::ordered_json;

namespace {

constexpr Recorder_State states[] = {Recorder_State::connecting, Recorder_State::recording,
                                     Recorder_State::away,       Recorder_State::finishing,
                                     Recorder_State::ended,      Recorder_State::failed};

const char *name_of(Recorder_State state) {
  switch (state) {
  case Recorder_State::connecting:
    return "connecting";
  case Recorder_State::recording:
    return "recording";
  case Recorder_State::away:
    return "away";
  case Recorder_State::finishing:
    return "finishing";
  case Recorder_State::ended:
    return "ended";
  case Recorder_State::failed:
    return "failed";
  }
  return "";
}

double as_seconds(GstClockTime time) {
  return static_cast<double>(time) / GST_SECOND;
}

double us_as_seconds(gint64 time) {
  return static_cast<double>(time) / G_TIME_SPAN_SECOND;
}

Json text_or_null(const std::string &text) {
  return text.empty() ? Json() : Json(text);
}

Json describe(const std::optional<Recorded_Gap> &gap) {
  if (!gap) return {};
  return {{"from", in_utc(gap->from)}, {"to", in_utc(gap->to)}, {"cause", gap->cause}};
}

Json describe(const std::vector<Queue_Level> &levels) {
  Json queues = Json::array();
  for (const Queue_Level &level : levels)
    queues.push_back({{"stream", level.stream},
                      {"buffers", level.buffers},
                      {"bytes", level.bytes},
                      {"seconds", as_seconds(level.time)}});
  return queues;
}

Json describe(const std::string &name, const Recorder_Status &status) {
  return {{"name", name},
          {"state", name_of(status.state)},
          {"since", status.since == 0 ? Json() : Json(in_utc(status.since))},
          {"file", text_or_null(status.file)},
          {"bytes", status.bytes},
          {"frames", status.frames},
          {"seconds", as_seconds(status.recorded)},
          {"gaps", status.gaps},
          {"last_gap", describe(status.last_gap)},
          {"code", text_or_null(status.failure ? failure_code(status.failure) : "")},
          {"text", text_or_null(status.failure ? failure_text(status.failure) : "")},
          {"queues", describe(status.queues)}};
}

// Escapes a label's value.
std::string escaped(const std::string &text) {
  std::string result;
  for (const char character : text) {
    if (character == '\n') {
      result += "\\n";
      continue;
    }
    if (character == '"' || character == '\\') result += '\\';
    result += character;
  }
  return result;
}

// Writes the metrics of one name for all cameras.
class Metric {
public:
  Metric(std::ostream &out, std::string name, const char *type, const char *help)
      : out_(out), name_("tavren_camera_" + std::move(name)) {
    out_ << "# HELP " << name_ << ' ' << help << "\n# TYPE " << name_ << ' ' << type << '\n';
  }

  template <typename Value>
  void add(const std::string &camera, Value value, const std::string &label = "",
           const std::string &label_value = "") {
    out_ << name_ << "{camera=\"" << escaped(camera) << '"';
    if (!label.empty()) out_ << ',' << label << "=\"" << escaped(label_value) << '"';
    out_ << "} " << value << '\n';
  }

private:
  std::ostream &out_;
  std::string name_;
};

// Writes a metric with one value for each camera.
template <typename Value>
void add_metric(std::ostream &out, const Statuses &statuses, const char *name, const char *type,
                const char *help, Value value_of) {
  Metric metric(out, name, type, help);
  for (const auto &[camera, status] : statuses)
    metric.add(camera, value_of(status));
}

void add_states(std::ostream &out, const Statuses &statuses) {
  Metric metric(out, "state", "gauge", "1 for the current state, 0 for the others.");
  for (const auto &[camera, status] : statuses)
    for (const Recorder_State state : states)
      metric.add(camera, status.state == state ? 1 : 0, "state", name_of(state));
}

void add_queues(std::ostream &out, const Statuses &statuses) {
  Metric metric(out, "queue_bytes", "gauge", "Bytes waiting to be written.");
  for (const auto &[camera, status] : statuses) {
    std::map<std::string, guint64> bytes;  // a stream has a queue for each open file
    for (const Queue_Level &level : status.queues)
      bytes[level.stream] += level.bytes;
    for (const auto &[stream, sum] : bytes)
      metric.add(camera, sum, "stream", stream);
  }
}

}  // namespace

// A camera's texts need not be valid UTF-8.
std::string status_as_json(const Statuses &statuses) {
  Json cameras = Json::array();
  for (const auto &[name, status] : statuses)
    cameras.push_back(describe(name, status));
  const Json report = {{"time", in_utc(g_get_real_time())}, {"cameras", cameras}};
  return report.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

std::string status_as_metrics(const Statuses &statuses) {
  std::ostringstream out;
  out.precision(17);
  add_states(out, statuses);
  add_metric(out, statuses, "state_since_seconds", "gauge",
             "Unix time at which the current state was entered.",
             [](const Recorder_Status &status) { return us_as_seconds(status.since); });
  add_metric(out, statuses, "recorded_bytes_total", "counter", "Bytes of all files.",
             [](const Recorder_Status &status) { return status.bytes; });
  add_metric(out, statuses, "recorded_frames_total", "counter", "Frames of all streams.",
             [](const Recorder_Status &status) { return status.frames; });
  add_metric(out, statuses, "recorded_seconds_total", "counter", "Recorded time.",
             [](const Recorder_Status &status) { return as_seconds(status.recorded); });
  add_metric(out, statuses, "gaps_total", "counter", "Interruptions of the recording.",
             [](const Recorder_Status &status) { return status.gaps; });
  add_metric(out, statuses, "last_gap_seconds", "gauge", "Length of the last interruption.",
             [](const Recorder_Status &status) {
               return status.last_gap ? us_as_seconds(status.last_gap->to - status.last_gap->from)
                                      : 0.0;
             });
  add_queues(out, statuses);
  return out.str();
}

std::string status_summary(const Statuses &statuses) {
  std::map<Recorder_State, int> counts;
  for (const auto &[name, status] : statuses)
    ++counts[status.state];
  std::string text =
      std::to_string(statuses.size()) + (statuses.size() == 1 ? " camera" : " cameras");
  const char *separator = ": ";
  for (const auto &[state, count] : counts) {
    text += separator + std::to_string(count) + ' ' + name_of(state);
    separator = ", ";
  }
  return text;
}

}  // namespace kel::tavren::programs
