// Argument checks that pass.

#include <string>

#include <benchmark/benchmark.h>

#include "library_calls.h"
#include "owned.h"
#include "raw_calls.h"
#include "trial.h"

namespace kel::tavren::benchmarks {

namespace {

// A hand-written check with a test and a description of the argument.
template <typename Test>
void check(const Test &test, const char *description) {
  require(test(), description);
}

// A function that takes a string and does nothing else.
void take(const std::string &text) {
  benchmark::DoNotOptimize(text.data());
}

// Adds a check by both implementations, and separately the cost of creating the description string
// and passing it to a function. describe() returns a constant. As with a library, the compiler
// cannot see the functions at the call site.
template <typename Describe, typename Raw, typename Library>
void add_check(Programme &programme, const std::string &argument, Describe describe, Raw raw,
               Library library) {
  const std::string operation = "checks/" + argument;
  programme.add_call(operation, "raw",
                     [raw, describe, function = check<Raw>] { function(raw, describe()); });
  programme.add_call(operation, "library", [library, describe] { library(describe()); });
  programme.add_call(operation, "description alone",
                     [describe, function = take] { function(describe()); });
}

}  // namespace

void add_checks(Programme &programme) {
  const Owned_Element pipeline = owned(gst_pipeline_new(nullptr));
  const Owned_Element queue = owned(gst_element_factory_make("queue", nullptr));
  const Owned_Pad pad(gst_element_get_static_pad(queue.get(), "sink"), false);
  const boost::intrusive_ptr<GstBus> bus(gst_element_get_bus(pipeline.get()), false);
  const Owned_Caps caps = owned(gst_caps_new_any());
  const GType type = G_OBJECT_TYPE(queue.get());

  add_check(
      programme, "an element", [] { return "element in gst_element_get_static_pad_or_throw"; },
      [queue] { return GST_IS_ELEMENT(queue.get()); },
      [queue](const char *description) {
        Media_Helper::is_element_or_throw(queue.get(), description);
      });
  add_check(
      programme, "a pad", [] { return "multiqueue_pad in get_corresponding_multiqueue_pad"; },
      [pad] { return GST_IS_PAD(pad.get()); },
      [pad](const char *description) { Media_Helper::is_pad_or_throw(pad.get(), description); });
  add_check(
      programme, "a bin", [] { return "bin in create_and_add_element_to_bin"; },
      [pipeline] { return GST_IS_BIN(pipeline.get()); },
      [pipeline](const char *description) {
        Media_Helper::is_bin_or_throw(GST_BIN_CAST(pipeline.get()), description);
      });
  add_check(
      programme, "a bus", [] { return "bus in gst_bus_create_watch_or_throw"; },
      [bus] { return GST_IS_BUS(bus.get()); },
      [bus](const char *description) { Media_Helper::is_bus_or_throw(bus.get(), description); });
  add_check(
      programme, "caps", [] { return "caps in find_element_with_caps_and_type"; },
      [caps] { return GST_IS_CAPS(caps.get()); },
      [caps](const char *description) { Media_Helper::is_caps_or_throw(caps.get(), description); });
  add_check(
      programme, "an element type",
      [] { return "element_type in find_element_with_caps_and_type"; },
      [type] { return type != G_TYPE_INVALID; },
      [type](const char *description) {
        Media_Helper::is_valid_element_type_or_throw(type, description);
      });
}

}  // namespace kel::tavren::benchmarks
