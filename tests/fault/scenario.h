// The calls of public operations that the fault tests disturb.

#ifndef TAVREN_TESTS_SCENARIO_H
#define TAVREN_TESTS_SCENARIO_H

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "depayloader_references.h"
#include "disturbance.h"
#include "elements.h"

namespace kel::tavren::tests {

// An object whose references are counted before and after a call.
struct Involved {
  template <typename T>
  Involved(const char *object_name, const boost::intrusive_ptr<T> &object)
      : name(object_name),
        count([object] { return static_cast<int>(reference_count(object.get())); }) {}
  // The registry owns it.
  Involved(const char *object_name, GstElementFactory *factory)
      : name(object_name), count([factory] { return static_cast<int>(reference_count(factory)); }) {
  }

  std::string name;
  std::function<int()> count;
  // Restores references that a call legitimately takes or releases, after the change has been
  // recorded.
  std::function<void(int change)> make_up = [](int) {};
};

// An element with an owner. If a bin rejects it, the bin releases one of its references.
Involved owned(const char *name, const Element &element);

// The caps, if there are any.
std::vector<Involved> involve(const Caps &caps);

// The factories to which the choice of an RTP proxy keeps references.
std::vector<Involved> kept_factories();

// A call on objects that are created for it. It releases everything that it receives, and returns a
// description of the result, so that only the objects are left.
struct Call {
  std::vector<Involved> involved;
  std::function<std::string()> run;
};

enum class Trait {
  NONE,
  // A failed call may have done part of its work, as documented. It is then not repeated on the
  // same objects.
  KEEPS_PARTIAL_WORK,
  // The number of calls of the framework depends on the addresses of objects.
  CALLS_VARY,
};

struct Scenario {
  const char *operation;
  const char *path;
  Call (*prepare)();
  Trait trait = Trait::NONE;
};

// Otherwise, GoogleTest would print the bytes of a scenario, which differ between runs and are
// partly uninitialised.
inline std::ostream &operator<<(std::ostream &stream, const Scenario &scenario) {
  return stream << scenario.operation << ", " << scenario.path;
}

// Helper functions for scenarios.

using Bus = boost::intrusive_ptr<GstBus>;

Element make_tee(int pads);

// A source linked to a sink.
std::pair<Element, Element> make_linked();

// A value of an enumeration, possibly one that is not an enumerator.
template <typename Enumeration>
Enumeration value(int number) {
  return static_cast<Enumeration>(number);
}

// Returns a pointer of the wrong type for a call.
template <typename T>
T *disguise(const boost::intrusive_ptr<GstPad> &pad) {
  return reinterpret_cast<T *>(pad.get());
}

// A disturbed call without a result.
template <typename Call>
std::string done(Call call) {
  disturbed(call);
  return "done";
}

// A call that involves no objects and returns a text.
template <typename Make>
Call alone(Make make) {
  return {{}, [make] { return disturbed(make); }};
}

// Disturbed calls that return an element or a pad, which is released, or a number.

template <typename Call>
std::string element_from(Call call) {
  return name_of(own(disturbed(call)).get());
}

template <typename Call>
std::string pad_from(Call call) {
  const Pad pad(disturbed(call), false);
  return name_of(pad.get());
}

template <typename Call>
std::string number_from(Call call) {
  return std::to_string(disturbed(call));
}

std::vector<Scenario> check_and_lookup_scenarios();
std::vector<Scenario> construction_scenarios();
std::vector<Scenario> control_scenarios();
std::vector<Scenario> pad_scenarios();
std::vector<Scenario> link_scenarios();
std::vector<Scenario> branch_scenarios();
std::vector<Scenario> ancestry_scenarios();
std::vector<Scenario> media_type_scenarios();
std::vector<Scenario> discovery_scenarios();
std::vector<Scenario> caps_scenarios();
std::vector<Scenario> search_scenarios();
std::vector<Scenario> text_scenarios();

}  // namespace kel::tavren::tests

#endif
