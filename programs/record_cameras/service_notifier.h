// Notifies systemd.

#ifndef TAVREN_PROGRAMS_SERVICE_NOTIFIER_H
#define TAVREN_PROGRAMS_SERVICE_NOTIFIER_H

#include <memory>
#include <string>

#include "main_loop/timer.h"

namespace kel::tavren::programs {

// Has no effect if the program was not started by systemd. While this object exists and the default
// main context runs, it resets systemd's watchdog.
class Service_Notifier {
public:
  Service_Notifier();

  static void ready();
  static void reloading();
  static void stopping();
  // Sets the line that "systemctl status" shows.
  void set_status(const std::string &text);

private:
  std::unique_ptr<Timer> watchdog_;
  std::string status_;
};

}  // namespace kel::tavren::programs

#endif
