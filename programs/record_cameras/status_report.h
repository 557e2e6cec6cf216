// Reports the status of all cameras.

#ifndef TAVREN_PROGRAMS_STATUS_REPORT_H
#define TAVREN_PROGRAMS_STATUS_REPORT_H

#include <map>
#include <string>

#include "recorder/recorder_status.h"

namespace kel::tavren::programs {

using Statuses = std::map<std::string, Recorder_Status>;  // by the camera's name

// Returns a JSON document with the time and an array of the cameras.
std::string status_as_json(const Statuses &statuses);

// Returns the same values as metrics in Prometheus' text format.
std::string status_as_metrics(const Statuses &statuses);

// Returns a summary in one line: 3 cameras: 2 recording, 1 away.
std::string status_summary(const Statuses &statuses);

}  // namespace kel::tavren::programs

#endif
