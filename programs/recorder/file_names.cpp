#include "file_names.h"

#include <memory>

#include <glib.h>
#include <tavren/handles/emancipator.h>

namespace kel::tavren::programs {

std::string utc_now_in_name() {
  const std::unique_ptr<GDateTime, decltype(&g_date_time_unref)> now(g_date_time_new_now_utc(),
                                                                     g_date_time_unref);
  return std::unique_ptr<char, Emancipator<char>>(g_date_time_format(now.get(), "%Y%m%dT%H%M%SZ"))
      .get();
}

std::string four_digits(unsigned int number) {
  const std::string digits = std::to_string(number);
  return std::string(digits.size() < 4 ? 4 - digits.size() : 0, '0') + digits;
}

}  // namespace kel::tavren::programs
