#include "log_watch.h"

#include <algorithm>
#include <mutex>
#include <vector>

#include <glib.h>
#include <gtest/gtest.h>

namespace kel::tavren::tests {

struct Log_Watch {
  std::mutex mutex;
  std::vector<Expected_Log *> expected;
  std::vector<std::string> unexpected;

  static Log_Watch &instance() {
    static Log_Watch watch;
    return watch;
  }

  void note(const std::string &domain, const std::string &message) {
    const std::lock_guard lock(mutex);
    for (Expected_Log *log : expected) {
      if (message.find(log->text_) == std::string::npos) continue;
      ++log->count_;
      return;
    }
    unexpected.push_back(domain + ": " + message);
  }

  void add(Expected_Log *log) {
    const std::lock_guard lock(mutex);
    expected.push_back(log);
  }

  void remove(Expected_Log *log) {
    const std::lock_guard lock(mutex);
    expected.erase(std::find(expected.begin(), expected.end(), log));
  }

  int count(const Expected_Log &log) {
    const std::lock_guard lock(mutex);
    return log.count_;
  }
};

namespace {

std::string field(const GLogField *fields, gsize size, const char *key) {
  for (gsize i = 0; i < size; ++i)
    if (g_strcmp0(fields[i].key, key) == 0)
      return fields[i].length < 0 ? std::string(static_cast<const char *>(fields[i].value))
                                  : std::string(static_cast<const char *>(fields[i].value),
                                                static_cast<std::size_t>(fields[i].length));
  return {};
}

GLogWriterOutput write_log(GLogLevelFlags level, const GLogField *fields, gsize size, gpointer) {
  if ((level & (G_LOG_LEVEL_ERROR | G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING)) != 0)
    Log_Watch::instance().note(field(fields, size, "GLIB_DOMAIN"), field(fields, size, "MESSAGE"));
  return G_LOG_WRITER_HANDLED;
}

class Unexpected_Log_Listener : public testing::EmptyTestEventListener {
  void OnTestEnd(const testing::TestInfo &) override {
    Log_Watch &watch = Log_Watch::instance();
    std::vector<std::string> unexpected;
    {
      const std::lock_guard lock(watch.mutex);
      unexpected.swap(watch.unexpected);
    }
    for (const std::string &message : unexpected)
      ADD_FAILURE() << "unexpected log: " << message;
  }
};

}  // namespace

void watch_logs() {
  g_log_set_writer_func(write_log, nullptr, nullptr);
  // First in the list, so that what it adds still counts for the test that ends.
  testing::TestEventListeners &listeners = testing::UnitTest::GetInstance()->listeners();
  testing::TestEventListener *printer = listeners.Release(listeners.default_result_printer());
  listeners.Append(new Unexpected_Log_Listener);
  if (printer != nullptr) listeners.Append(printer);
}

Expected_Log::Expected_Log(std::string text) : text_(std::move(text)) {
  Log_Watch::instance().add(this);
}

Expected_Log::~Expected_Log() {
  Log_Watch::instance().remove(this);
  EXPECT_GT(count_, 0) << "expected a log with: " << text_;
}

int Expected_Log::count() const {
  return Log_Watch::instance().count(*this);
}

}  // namespace kel::tavren::tests
