// Every operation of the library as one table, succeeding and failing: what many threads and long
// runs draw from. Whoever runs it decides what becomes of a complaint.

#ifndef TAVREN_TESTS_OPERATIONS_H
#define TAVREN_TESTS_OPERATIONS_H

#include <string>
#include <vector>

#include "references.h"

namespace kel::tavren::tests {

// What operations work on: a camera's stream, split by a tee, and a recording bin beside it.
//
//   camera ! format ! split ! parser ! file    buffer    streams    recording: { deep, snapshots }
struct Scene {
  Scene();
  ~Scene();
  Scene(const Scene &) = delete;
  Scene &operator=(const Scene &) = delete;

  GstBin *bin() const { return GST_BIN_CAST(pipeline.get()); }
  GstBin *recording_bin() const { return GST_BIN_CAST(recording.get()); }

  // Empty while everything in the scene has the count that it had in the beginning.
  std::string changed_counts() const;
  // All its elements and pads, and the bus.
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
    SHARED,  // leaves the scene as it is: any number of threads may do it on one
    OWN,     // changes the scene for a while
    RARE     // takes tens of milliseconds, and no part of the scene
  };

  const char *name;
  Use use;
  int code;          // of the error that it throws; 0 when it throws none
  const char *text;  // the whole text of that error
  void (*run)(const Scene &);
};

extern const std::vector<Operation> operations;

// Texts of the warnings that some of them draw.
extern const std::vector<std::string> expected_warnings;

// Runs an operation. Returns what it did that it should not have done; empty when there is nothing.
std::string complaint(const Operation &operation, const Scene &scene);

}  // namespace kel::tavren::tests

#endif
