#include "child_process.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <memory>
#include <stdexcept>

#include <glib.h>

namespace kel::tavren::tests {

namespace {

constexpr gint64 longest_wait = gint64{60} * G_USEC_PER_SEC;

using Texts = std::unique_ptr<char *, decltype(&g_strfreev)>;

Texts environment_with(const Child_Process::Environment &environment) {
  char **variables = g_get_environ();
  for (const auto &[name, value] : environment)
    variables = g_environ_setenv(variables, name.c_str(), value.c_str(), TRUE);
  return Texts(variables, g_strfreev);
}

}  // namespace

Child_Process::Child_Process(const std::vector<std::string> &command,
                             const Environment &environment) {
  std::vector<char *> arguments;
  for (const std::string &word : command)
    arguments.push_back(const_cast<char *>(word.c_str()));
  arguments.push_back(nullptr);
  const Texts variables = environment_with(environment);
  const auto flags = static_cast<GSpawnFlags>(G_SPAWN_DO_NOT_REAP_CHILD | G_SPAWN_SEARCH_PATH);
  GError *error = nullptr;
  if (!g_spawn_async_with_pipes(nullptr, arguments.data(), variables.get(), flags, nullptr, nullptr,
                                &pid_, nullptr, &out_.descriptor, &err_.descriptor, &error)) {
    const std::unique_ptr<GError, decltype(&g_error_free)> owned(error, g_error_free);
    throw std::runtime_error(owned->message);
  }
}

Child_Process::~Child_Process() {
  if (pid_ != -1) {
    kill(pid_, SIGKILL);
    reap(0);
  }
  for (const Pipe *pipe : {&out_, &err_})
    if (pipe->descriptor != -1) close(pipe->descriptor);
}

std::string Child_Process::first_line() {
  const gint64 deadline = g_get_monotonic_time() + longest_wait;
  while (out_.text.find('\n') == std::string::npos)
    if (!read_some(deadline)) return {};
  return out_.text.substr(0, out_.text.find('\n'));
}

bool Child_Process::writes(const std::string &text, int times) {
  const gint64 deadline = g_get_monotonic_time() + longest_wait;
  std::size_t searched = 0;
  while (times > 0) {
    const auto found = out_.text.find(text, searched);
    if (found != std::string::npos) {
      searched = found + text.size();
      --times;
    } else if (!read_some(deadline)) {
      return false;
    }
  }
  return true;
}

void Child_Process::send_signal(int number) const {
  kill(pid_, number);
}

Outcome Child_Process::wait() {
  const gint64 deadline = g_get_monotonic_time() + longest_wait;
  while (read_some(deadline)) {
  }
  // The process has closed its output, or its time is over.
  while (!reap(WNOHANG)) {
    if (g_get_monotonic_time() >= deadline) kill(pid_, SIGKILL);
    g_usleep(1000);
  }
  return {WIFEXITED(wait_status_) ? WEXITSTATUS(wait_status_) : -1, out_.text, err_.text};
}

// Reads the available output. Returns false at the end of the output or after the deadline.
bool Child_Process::read_some(gint64 deadline) {
  pollfd descriptors[] = {{out_.descriptor, POLLIN, 0}, {err_.descriptor, POLLIN, 0}};
  if (out_.descriptor == -1 && err_.descriptor == -1) return false;
  const gint64 left = std::max<gint64>(deadline - g_get_monotonic_time(), 0);
  const int ready = poll(descriptors, 2, static_cast<int>(left / 1000));
  if (ready < 0 && errno == EINTR) return true;
  if (ready <= 0) return false;
  if (descriptors[0].revents != 0) read_from(out_);
  if (descriptors[1].revents != 0) read_from(err_);
  return true;
}

void Child_Process::read_from(Pipe &pipe) {
  char buffer[4096];
  const ssize_t size = read(pipe.descriptor, buffer, sizeof buffer);
  if (size > 0) {
    pipe.text.append(buffer, static_cast<std::size_t>(size));
    return;
  }
  close(pipe.descriptor);
  pipe.descriptor = -1;
}

bool Child_Process::reap(int flags) {
  if (waitpid(pid_, &wait_status_, flags) != pid_) return false;
  pid_ = -1;
  return true;
}

Outcome run(const std::vector<std::string> &command,
            const Child_Process::Environment &environment) {
  return Child_Process(command, environment).wait();
}

}  // namespace kel::tavren::tests
