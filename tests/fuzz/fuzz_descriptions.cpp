// Passes random pipeline descriptions to the library. The resulting pipelines are never started.

#include <array>
#include <csignal>
#include <optional>
#include <vector>

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <sanitizer/lsan_interface.h>

#include "fuzzing.h"
#include "references.h"

using namespace kel::tavren::capture;
using namespace kel::tavren::fuzz;
using namespace kel::tavren::tests;
namespace TEC = kel::tavren::TEC;

namespace {

// Marks elements by their types and by the types that their pads are linked to.
void mark_links(GstElement *element) {
  const std::string kind = G_OBJECT_TYPE_NAME(element);
  mark(kind);
  for (const Pad &pad : Media_Helper::get_element_src_pads(element)) {
    const Pad peer(gst_pad_get_peer(pad.get()), false);
    const Element next(peer ? gst_pad_get_parent_element(peer.get()) : nullptr, false);
    if (next) mark(kind + " to " + G_OBJECT_TYPE_NAME(next.get()));
  }
}

void mark_children(GstBin *bin) {
  GstIterator *const children = gst_bin_iterate_recurse(bin);
  gst_iterator_foreach(
      children,
      [](const GValue *child, gpointer) {
        mark_links(static_cast<GstElement *>(g_value_get_object(child)));
      },
      nullptr);
  gst_iterator_free(children);
  mark("children " + std::to_string(bin->numchildren));
}

// In some versions, the framework's parser crashes on certain texts: "t.!queue!" also crashes
// gst-launch-1.0. Another process therefore tries each text first. It is restarted after a crash.
class Framework_Trial {
public:
  // Returns whether the framework creates something, or nothing if it crashes.
  std::optional<bool> makes_something(const std::string &description) {
    if (process_ == 0) start();
    // An empty message would look like the end of the connection.
    const std::string text = " " + description;
    char answer = '\0';
    if (send(socket_, text.data(), text.size(), MSG_NOSIGNAL) >= 0 &&
        recv(socket_, &answer, sizeof answer, 0) == sizeof answer)
      return answer != '\0';
    close(socket_);
    waitpid(process_, nullptr, 0);
    process_ = 0;
    return std::nullopt;
  }

private:
  void start() {
    std::array<int, 2> ends{};
    require(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends.data()) == 0, "the sockets are connected");
    process_ = fork();
    require(process_ >= 0, "the process is created");
    if (process_ == 0) {
      close(ends[0]);
      serve(ends[1]);
    }
    close(ends[1]);
    socket_ = ends[0];
  }

  [[noreturn]] static void serve(int socket) {
    // Exit without output or artifacts from libFuzzer and the sanitizers.
    for (const int signal_number : {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGALRM})
      require(std::signal(signal_number, SIG_DFL) != SIG_ERR, "the signal has the default handler");
    close(STDERR_FILENO);
    std::vector<char> text(1 << 16);
    for (ssize_t size = 0; (size = recv(socket, text.data(), text.size() - 1, 0)) > 0;) {
      text[static_cast<std::size_t>(size)] = '\0';
      alarm(10);
      GstElement *const made = gst_parse_launch(text.data(), nullptr);
      const char answer = made != nullptr ? '\1' : '\0';
      if (made != nullptr) gst_object_unref(gst_object_ref_sink(made));
      send(socket, &answer, sizeof answer, MSG_NOSIGNAL);
    }
    _exit(0);
  }

  pid_t process_ = 0;
  int socket_ = -1;
};

}  // namespace

int LLVMFuzzerInitialize(int *, char ***) {
  kel::tavren::fuzz::start_framework({"coreelements", "app"});
  return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  // The framework's criticals about properties, and the leaks of its value parser, are not under
  // test.
  const Tolerated_Criticals properties;
  const __lsan::ScopedDisabler values;
  const std::string description(reinterpret_cast<const char *>(data), size);
  static Framework_Trial trial;
  const std::optional<bool> makes_something = trial.makes_something(description);
  if (!makes_something) return 0;
  GstElement *made = nullptr;
  const auto outcome = run({*makes_something ? 0 : TEC::PARSE_LAUNCH_FAILED},
                           [&] { made = Media_Helper::gst_parse_launch_or_throw(description); });
  if (made == nullptr) {
    require(outcome.text == shown("Could not create pipeline : " + description),
            "the error shows the description");
    return 0;
  }
  require(GST_IS_ELEMENT(made), "the result is an element");
  require(g_object_is_floating(made), "the reference is floating");
  require(reference_count(static_cast<gpointer>(made)) == 1, "the element has one reference");
  require(GST_STATE(made) == GST_STATE_NULL, "the element is not started");
  mark_links(made);
  if (GST_IS_BIN(made)) mark_children(GST_BIN(made));
  const Weak_Watch watch(made);
  gst_object_unref(gst_object_ref_sink(made));
  require(watch.gone(), "no reference is kept");
  return 0;
}
