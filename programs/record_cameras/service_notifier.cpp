#include "service_notifier.h"

#include <systemd/sd-daemon.h>

#include <cstdint>

namespace kel::tavren::programs {

namespace {

void notify(const std::string &state) {
  sd_notify(0, state.c_str());
}

}  // namespace

Service_Notifier::Service_Notifier() {
  std::uint64_t interval = 0;  // in us
  if (sd_watchdog_enabled(0, &interval) <= 0) return;
  constexpr std::uint64_t resets_per_interval = 3;
  const auto milliseconds = static_cast<guint>(interval / resets_per_interval / 1000);
  watchdog_ = std::make_unique<Timer>(nullptr, milliseconds, Timer::Kind::repeated,
                                      [] { notify("WATCHDOG=1"); });
}

void Service_Notifier::ready() {
  notify("READY=1");
}

void Service_Notifier::reloading() {
  notify("RELOADING=1\nMONOTONIC_USEC=" + std::to_string(g_get_monotonic_time()));
}

void Service_Notifier::stopping() {
  notify("STOPPING=1");
}

void Service_Notifier::set_status(const std::string &text) {
  if (text == status_) return;
  status_ = text;
  notify("STATUS=" + text);
}

}  // namespace kel::tavren::programs
