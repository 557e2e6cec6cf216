// The calls of public operations that fault tests disturb.

#ifndef TAVREN_TESTS_SCENARIO_H
#define TAVREN_TESTS_SCENARIO_H

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "depayloader_references.h"
#include "disturbance.h"
#include "references.h"

namespace kel::tavren::tests {

// An object whose references are counted before a call and after it.
struct Involved {
  template <typename T>
  Involved(const char *object_name, const boost::intrusive_ptr<T> &object)
      : name(object_name),
        count([object] { return static_cast<int>(reference_count(object.get())); }) {}
  // The registry holds it.
  Involved(const char *object_name, GstElementFactory *factory)
      : name(object_name), count([factory] { return static_cast<int>(reference_count(factory)); }) {
  }

  std::string name;
  std::function<int()> count;
  // What a call may take or keep, though it is others': makes up for the change when it has been
  // noted.
  std::function<void(int change)> make_up = [](int) {};
};

// An element that has an owner, one of whose references goes when a bin refuses it.
Involved owned(const char *name, const Element &element);

// The factories of which the choice of an RTP proxy keeps references.
std::vector<Involved> kept_factories();

// A call on objects made for it. It gives back what it is handed, by itself, and tells what came of
// it: nothing of a call is left but the objects.
struct Call {
  std::vector<Involved> involved;
  std::function<std::string()> run;
};

enum class Trait {
  NONE,
  // A failed call may leave a part of its work done, as the operation says: it is not then called
  // again on the same objects.
  KEEPS_PARTIAL_WORK,
  // How often the framework is asked depends on where objects lie in memory.
  CALLS_VARY,
};

struct Scenario {
  const char *operation;
  const char *path;
  Call (*prepare)();
  Trait trait = Trait::NONE;
};

// GoogleTest would print the bytes of one, which are different every time, and not all set.
inline std::ostream &operator<<(std::ostream &stream, const Scenario &scenario) {
  return stream << scenario.operation << ", " << scenario.path;
}

// Shorthands of scenarios.

using Bus = boost::intrusive_ptr<GstBus>;

inline GstBin *as_bin(const Element &element) {
  return GST_BIN_CAST(element.get());
}

// What is of another type than a call takes.
template <typename T>
T *disguise(const boost::intrusive_ptr<GstPad> &pad) {
  return reinterpret_cast<T *>(pad.get());
}

// Takes over a reference, the floating one too.
inline Element own(GstElement *element) {
  return Element(element != nullptr && g_object_is_floating(element)
                     ? GST_ELEMENT_CAST(gst_object_ref_sink(element))
                     : element,
                 false);
}

// A disturbed call that hands nothing out.
template <typename Call>
std::string done(Call call) {
  disturbed(call);
  return "done";
}

// A call that involves no object and makes a text.
template <typename Make>
Call alone(Make make) {
  return {{}, [make] { return disturbed(make); }};
}

inline std::string name_of(gpointer object) {
  return object != nullptr ? GST_OBJECT_NAME(object) : "null";
}

// Disturbed calls that hand out an element or a pad, which is given back, or a number.

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
std::vector<Scenario> pad_and_link_scenarios();
std::vector<Scenario> branch_scenarios();
std::vector<Scenario> ancestry_scenarios();
std::vector<Scenario> media_type_scenarios();
std::vector<Scenario> discovery_scenarios();
std::vector<Scenario> caps_scenarios();
std::vector<Scenario> search_scenarios();
std::vector<Scenario> text_scenarios();

}  // namespace kel::tavren::tests

#endif
