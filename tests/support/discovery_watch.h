// Observes and modifies the framework's discovery of media. Programs that link this replace the
// framework's functions.

#ifndef TAVREN_TESTS_DISCOVERY_WATCH_H
#define TAVREN_TESTS_DISCOVERY_WATCH_H

#include <cstddef>
#include <string>
#include <vector>

#include <gst/pbutils/pbutils.h>

#include "references.h"

namespace kel::tavren::tests {

constexpr GstClockTime patience = 20 * GST_SECOND;

// Observes and modifies discoveries on this thread, while an instance exists.
class Discovery_Watch {
public:
  Discovery_Watch() { current = this; }
  ~Discovery_Watch() {
    if (found != nullptr) g_object_unref(found);
    current = nullptr;
  }
  Discovery_Watch(const Discovery_Watch &) = delete;
  Discovery_Watch &operator=(const Discovery_Watch &) = delete;

  // Modifications.
  bool find_nothing = false;     // the discovery returns null
  bool hold_found = false;       // the discovered information outlives the call
  bool change_result = false;    // to the following value
  int result = 0;                //
  std::size_t without_caps = 0;  // this many streams, from the first on, have no caps

  // Observations.
  std::vector<GstClockTime> timeouts;
  std::vector<std::string> uris;
  std::vector<std::string> dropped;  // objects that were destroyed, in order
  bool error_wanted = false;         // a detailed error was requested
  std::vector<std::string> asked;    // kinds of streams whose lists were requested, in order
  std::vector<GList *> lists;        // lists that were returned and not freed
  GstDiscovererInfo *found = nullptr;

  void watch_end(gpointer object, const char *name) {
    g_object_weak_ref(
        G_OBJECT(object),
        [](gpointer data, GObject *) {
          if (current != nullptr) current->dropped.emplace_back(static_cast<char *>(data));
        },
        const_cast<char *>(name));
  }

  static thread_local Discovery_Watch *current;
};

// Takes ownership of a list of streams, and returns their caps.
std::vector<Caps> caps_of_streams(GList *streams);

}  // namespace kel::tavren::tests

#endif
