#include "event_log.h"

#include <iostream>

#include <nlohmann/json.hpp>

#include "command_line/program.h"
#include "command_line/time_text.h"

namespace kel::tavren::programs {

using Json = nlohmann::ordered_json;

namespace {

constexpr const char *program_name = "record_cameras";

const std::string &subject_of(const std::string &camera) {
  static const std::string program = program_name;
  return camera.empty() ? program : camera;
}

// A camera's text need not be valid UTF-8.
void write_json(const std::string &camera, const std::string &text,
                const std::exception_ptr &cause) {
  Json event = {{"time", in_utc(g_get_real_time())}};
  event["camera"] = camera.empty() ? Json() : Json(camera);
  const std::string code = cause ? failure_code(cause) : "";
  event["code"] = code.empty() ? Json() : Json(code);
  event["text"] = text;
  std::cout << event.dump(-1, ' ', false, Json::error_handler_t::replace) << std::endl;
}

}  // namespace

void Event_Log::write(const std::string &camera, const std::string &text,
                      const std::exception_ptr &cause) {
  if (quiet_) return;
  const std::lock_guard lock(mutex_);
  if (format_ == Format::json) return write_json(camera, text, cause);
  std::cout << subject_of(camera) << ": " << text << std::endl;
}

void Event_Log::write_failure(const std::string &camera, const std::exception_ptr &failure) {
  const std::lock_guard lock(mutex_);
  if (format_ == Format::json) return write_json(camera, failure_text(failure), failure);
  try {
    std::rethrow_exception(failure);
  } catch (const std::exception &error) {
    print_failure(subject_of(camera), error);
  }
}

}  // namespace kel::tavren::programs
