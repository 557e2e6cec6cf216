// All operations of the library in one table, both succeeding and failing, for tests with many
// threads and for long runs. The caller decides how to report an unexpected result.

#ifndef TAVREN_TESTS_OPERATIONS_H
#define TAVREN_TESTS_OPERATIONS_H

#include <string>
#include <vector>

#include "elements.h"
#include "listed_errors.h"

namespace kel::tavren::tests {

// The objects that operations use: a camera's stream, split by a tee, and a separate recording bin.
//
//   camera ! format ! split ! parser ! file    buffer    streams    recording: { deep, snapshots }
struct Scene {
  Scene();
  ~Scene();
  Scene(const Scene &) = delete;
  Scene &operator=(const Scene &) = delete;

  GstBin *bin() const { return GST_BIN_CAST(pipeline.get()); }
  GstBin *recording_bin() const { return GST_BIN_CAST(recording.get()); }

  // Returns an empty text while all objects in the scene have their initial reference counts.
  std::string changed_counts() const;
  // All elements and pads of the scene, and the bus.
  std::vector<gpointer> objects() const;

  Element pipeline, recording, camera, format, split, parser, file, buffer, streams;
  Element deep, snapshots;  // in the recording bin
  Element loose;            // in no bin
  Pad split_src, streams_sink, streams_src;
  Caps jpeg, raw, rtp;
  boost::intrusive_ptr<GstBus> bus;

private:
  std::vector<guint> counts_;
  std::vector<gint> caps_counts_;
};

struct Operation {
  enum Use {
    SHARED,  // does not change the scene, so any number of threads may run it on one scene
    OWN,     // changes the scene temporarily
    RARE     // takes tens of milliseconds and does not use the scene
  };

  const char *name = "";
  Use use = SHARED;
  Expected_Error error;  // that it throws; code 0: none
  void (*run)(const Scene &) = nullptr;
};

extern const std::vector<Operation> operations;

// Texts of the warnings that some of them cause.
extern const std::vector<std::string> expected_warnings;

// Runs an operation. Returns a description of any unexpected behaviour, otherwise an empty text.
std::string unexpected_behaviour(const Operation &operation, const Scene &scene);

}  // namespace kel::tavren::tests

#endif
