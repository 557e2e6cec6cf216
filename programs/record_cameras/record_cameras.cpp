// Records the cameras of a configuration file until it is stopped.

#include <malloc.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdint>
#include <optional>

#include "camera_list.h"
#include "command_line/program.h"
#include "command_line/signal_watch.h"
#include "event_log.h"
#include "main_loop/timer.h"
#include "metrics_server.h"
#include "recorder/recorder_arguments.h"
#include "recorder_set.h"
#include "service_notifier.h"
#include "status_file.h"
#include "status_report.h"

namespace kel::tavren::programs {

namespace {

constexpr guint tick_interval = 100;     // ms
constexpr guint report_interval = 2000;  // ms
constexpr int largest_port = 65535;

struct Service_Options {
  std::string configuration;
  std::shared_ptr<Diagnosis_Folder> diagnoses;
  std::string status_file;            // empty: none
  std::optional<std::uint16_t> port;  // for metrics
  Event_Log::Format format = Event_Log::Format::text;
  bool quiet = false;
};

Camera_List read_configuration(const Service_Options &options) {
  Camera_List cameras;
  try {
    cameras = read_cameras(options.configuration);
  } catch (const std::exception &error) {
    throw std::runtime_error(options.configuration + ": " + error.what());
  }
  for (auto &[name, camera] : cameras)
    camera.options.diagnoses = options.diagnoses;
  return cameras;
}

// Reports the status of the cameras in all requested ways.
class Reporter {
public:
  Reporter(const Service_Options &options, Event_Log &log) {
    if (options.port) {
      metrics_.emplace(*options.port);
      log.write("", "metrics at http://127.0.0.1:" + std::to_string(metrics_->port()) + "/metrics",
                nullptr);
    }
    if (!options.status_file.empty()) file_.emplace(options.status_file, status_as_json({}), log);
  }

  void report(const Statuses &statuses) {
    if (metrics_) metrics_->publish(status_as_metrics(statuses));
    if (file_) file_->write(status_as_json(statuses));
    notifier_.set_status(status_summary(statuses));
  }

private:
  std::optional<Metrics_Server> metrics_;
  std::optional<Status_File> file_;
  Service_Notifier notifier_;
};

class Service {
public:
  explicit Service(const Service_Options &options)
      : options_(options), log_(options.format, options.quiet),
        loop_(g_main_loop_new(nullptr, FALSE), false), recorders_(log_) {}

  // Records until a signal arrives or all recordings have ended. Returns whether all succeeded.
  bool run();

private:
  void reload();
  void stop();
  void tick();
  void report() { reporter_->report(recorders_.statuses()); }
  // Calls a function from a callback of the main context. A failure ends the program.
  void guarded(void (Service::*step)()) noexcept;

  const Service_Options options_;
  Event_Log log_;
  boost::intrusive_ptr<GMainLoop> loop_;
  Recorder_Set recorders_;
  std::optional<Reporter> reporter_;
  bool is_stopping_ = false;
  std::exception_ptr failure_;
};

bool Service::run() {
  Camera_List cameras = read_configuration(options_);
  const Signal_Watch end({SIGINT, SIGTERM}, [this] { guarded(&Service::stop); });
  const Signal_Watch hang_up({SIGHUP}, [this] { guarded(&Service::reload); });
  reporter_.emplace(options_, log_);
  recorders_.apply(std::move(cameras));
  report();
  Service_Notifier::ready();
  const Timer ticker(nullptr, tick_interval, Timer::Kind::repeated,
                     [this] { guarded(&Service::tick); });
  const Timer reports(nullptr, report_interval, Timer::Kind::repeated,
                      [this] { guarded(&Service::report); });
  g_main_loop_run(loop_.get());
  if (failure_) std::rethrow_exception(failure_);
  report();
  return !recorders_.has_failed();
}

// If the configuration is invalid, continues with the previous one.
void Service::reload() {
  if (is_stopping_) return;
  Service_Notifier::reloading();
  try {
    recorders_.apply(read_configuration(options_));
    log_.write("", "read " + options_.configuration + " again", nullptr);
  } catch (const std::exception &) {
    log_.write_failure("", std::current_exception());
  }
  Service_Notifier::ready();
}

void Service::stop() {
  is_stopping_ = true;
  Service_Notifier::stopping();
  recorders_.stop();
}

void Service::tick() {
  recorders_.tick();
  if (recorders_.has_ended()) g_main_loop_quit(loop_.get());
}

void Service::guarded(void (Service::*step)()) noexcept {
  try {
    (this->*step)();
  } catch (...) {
    failure_ = std::current_exception();
    g_main_loop_quit(loop_.get());
  }
}

// Each camera uses several descriptors. The default limit of 1024 only protects programs that use
// select().
void raise_descriptor_limit() noexcept {
  rlimit limit = {};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}

// A camera's threads end with each connection. With the default number of arenas, eight for each
// processor, the fragmented memory that they leave in each arena grows for hours.
void limit_arenas() noexcept {
#ifdef __GLIBC__
  constexpr int arenas = 2;
  // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread runs yet.
  mallopt(M_ARENA_MAX, arenas);
#endif
}

struct Arguments {
  gchar **files = nullptr;
  Text_Option status;
  Text_Option log;
  int metrics = -1;
  int quiet = 0;

  Arguments() = default;
  ~Arguments() { g_strfreev(files); }
  Arguments(const Arguments &) = delete;
  Arguments &operator=(const Arguments &) = delete;

  std::vector<GOptionEntry> entries() {
    return {{"status", 0, 0, G_OPTION_ARG_FILENAME, status.target(),
             "write the status of all cameras to this file every two seconds, as JSON", "FILE"},
            {"metrics", 0, 0, G_OPTION_ARG_INT, &metrics,
             "serve metrics for Prometheus on this port of 127.0.0.1; 0: the system chooses it",
             "PORT"},
            {"log", 0, 0, G_OPTION_ARG_STRING, log.target(),
             "write events as text (default) or json", "FORMAT"},
            {"quiet", 0, 0, G_OPTION_ARG_NONE, &quiet, "print errors only", nullptr},
            {G_OPTION_REMAINING, 0, 0, G_OPTION_ARG_FILENAME_ARRAY, static_cast<void *>(&files),
             nullptr, "CONFIG"}};
  }

  Service_Options options() const {
    if (files == nullptr || files[1] != nullptr)
      throw std::invalid_argument("expects one argument, the configuration file");
    Service_Options options;
    options.configuration = files[0];
    options.status_file = status.value_or("");
    if (metrics < -1 || metrics > largest_port)
      throw std::invalid_argument("--metrics must be from 0 to 65535");
    if (metrics != -1) options.port = static_cast<std::uint16_t>(metrics);
    const std::string format = log.value_or("text");
    if (format != "text" && format != "json")
      throw std::invalid_argument("--log must be text or json");
    if (format == "json") options.format = Event_Log::Format::json;
    options.quiet = quiet != 0;
    return options;
  }
};

}  // namespace

}  // namespace kel::tavren::programs

int main(int argc, char **argv) {
  using namespace kel::tavren::programs;
  limit_arenas();
  // A log that nobody reads any more must not end the recordings.
  // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread runs yet.
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  Arguments arguments;
  Diagnosis_Arguments diagnosis;
  std::vector<GOptionEntry> entries = arguments.entries();
  const std::vector<GOptionEntry> others = diagnosis.entries();
  entries.insert(entries.begin(), others.begin(), others.end());
  bool succeeded = false;
  const int status = run_program(argc, argv, "Records many cameras.", entries, [&] {
    Service_Options options = arguments.options();
    options.diagnoses = diagnosis.folder();
    raise_descriptor_limit();
    succeeded = Service(options).run();
  });
  return succeeded ? status : 1;
}
