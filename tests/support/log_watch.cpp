#include "log_watch.h"

#include <algorithm>
#include <cstring>
#include <iostream>
#include <memory>
#include <mutex>
#include <vector>

#include <glib.h>
#include <gtest/gtest.h>

#include "framework_version.h"

namespace kel::tavren::tests {

using Message = std::unique_ptr<char, decltype(&g_free)>;

// C code writes logs, also in calls whose allocations fail, so messages are recorded with GLib's
// allocator.
struct Log_Watch {
  std::mutex mutex;
  std::vector<Allowed_Log *> allowed;
  GPtrArray *unexpected = g_ptr_array_new_with_free_func(g_free);

  Log_Watch() {
    constexpr std::size_t MORE_THAN_A_TEST_HAS = 20;
    allowed.reserve(MORE_THAN_A_TEST_HAS);
  }

  static Log_Watch &instance() {
    static Log_Watch watch;
    return watch;
  }

  void note(const char *domain, const char *message) {
    const std::lock_guard lock(mutex);
    const auto newest = std::find_if(allowed.rbegin(), allowed.rend(), [message](const auto *log) {
      return std::strstr(message, log->text().c_str()) != nullptr;
    });
    if (newest != allowed.rend()) {
      ++(*newest)->count_;
      return;
    }
    g_ptr_array_add(unexpected, g_strconcat(domain, ": ", message, nullptr));
  }

  void add(Allowed_Log *log) {
    const std::lock_guard lock(mutex);
    allowed.push_back(log);
  }

  void remove(Allowed_Log *log) {
    const std::lock_guard lock(mutex);
    allowed.erase(std::find(allowed.begin(), allowed.end(), log));
  }

  int count(const Allowed_Log &log) {
    const std::lock_guard lock(mutex);
    return log.count_;
  }

  std::vector<std::string> take_unexpected() {
    const std::lock_guard lock(mutex);
    std::vector<std::string> messages;
    for (guint i = 0; i < unexpected->len; ++i)
      messages.emplace_back(static_cast<const char *>(g_ptr_array_index(unexpected, i)));
    g_ptr_array_set_size(unexpected, 0);
    return messages;
  }
};

namespace {

// Returns the text of a field, empty if there is none.
Message field(const GLogField *fields, gsize size, const char *key) {
  for (gsize i = 0; i < size; ++i) {
    const auto *const text = static_cast<const char *>(fields[i].value);
    if (g_strcmp0(fields[i].key, key) == 0)
      return Message(fields[i].length < 0 ? g_strdup(text)
                                          : g_strndup(text, static_cast<gsize>(fields[i].length)),
                     g_free);
  }
  return Message(g_strdup(""), g_free);
}

GLogWriterOutput write_log(GLogLevelFlags level, const GLogField *fields, gsize size, gpointer) {
  if ((level & (G_LOG_LEVEL_ERROR | G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING)) != 0)
    Log_Watch::instance().note(field(fields, size, "GLIB_DOMAIN").get(),
                               field(fields, size, "MESSAGE").get());
  return G_LOG_WRITER_HANDLED;
}

// Unlike newer versions, GStreamer 1.18 also warns when it refuses to add an element to a bin.
void allow_refusals() {
  if (!framework_is_1_18()) return;
  static Allowed_Log of_a_taken_name("is not unique in bin");
  static Allowed_Log of_an_owned_element("already has parent");
}

class Unexpected_Log_Listener : public testing::EmptyTestEventListener {
  void OnTestEnd(const testing::TestInfo &) override {
    for (const std::string &message : Log_Watch::instance().take_unexpected())
      ADD_FAILURE() << "unexpected log: " << message;
  }
};

}  // namespace

void watch_logs() {
  Log_Watch::instance();  // create it now, not in a call whose memory is counted
  g_log_set_writer_func(write_log, nullptr, nullptr);
  allow_refusals();
  // Add it after the printer: listeners are called in reverse order at the end of a test.
  testing::UnitTest::GetInstance()->listeners().Append(new Unexpected_Log_Listener);
}

bool logs_after_tests() {
  const std::vector<std::string> messages = Log_Watch::instance().take_unexpected();
  for (const std::string &message : messages)
    std::cerr << "unexpected log after the tests: " << message << '\n';
  return !messages.empty();
}

Allowed_Log::Allowed_Log(std::string text) : text_(std::move(text)) {
  Log_Watch::instance().add(this);
}

Allowed_Log::~Allowed_Log() {
  Log_Watch::instance().remove(this);
}

int Allowed_Log::count() const {
  return Log_Watch::instance().count(*this);
}

Expected_Log::~Expected_Log() {
  EXPECT_GT(count(), 0) << "expected a log with: " << text();
}

}  // namespace kel::tavren::tests
