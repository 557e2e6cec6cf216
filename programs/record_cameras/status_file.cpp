#include "status_file.h"

#include <memory>
#include <stdexcept>

#include <glib.h>

namespace kel::tavren::programs {

Status_File::Status_File(std::string path, const std::string &text, Event_Log &log)
    : path_(std::move(path)), log_(log) {
  replace(text);
}

void Status_File::write(const std::string &text) {
  try {
    replace(text);
    has_failed_ = false;
  } catch (const std::runtime_error &) {
    if (!has_failed_) log_.write_failure("", std::current_exception());
    has_failed_ = true;
  }
}

void Status_File::replace(const std::string &text) const {
  GError *error = nullptr;
  if (g_file_set_contents(path_.c_str(), text.data(), static_cast<gssize>(text.size()), &error))
    return;
  const std::unique_ptr<GError, decltype(&g_error_free)> owned(error, g_error_free);
  throw std::runtime_error(std::string("cannot write the status: ") + error->message);
}

}  // namespace kel::tavren::programs
