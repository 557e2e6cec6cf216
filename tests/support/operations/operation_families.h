// Code shared by the families of operations; used by operations.cpp only.

#ifndef TAVREN_TESTS_OPERATION_FAMILIES_H
#define TAVREN_TESTS_OPERATION_FAMILIES_H

#include <utility>
#include <vector>

#include "../operations.h"

namespace kel::tavren::tests {

using capture::Media_Helper;

// Notes the first failed requirement of the running operation, for each thread.
void require(bool held, const char *what);

// An object that an operation creates. At the end, it must have no other owner.
template <typename T>
class Own {
public:
  explicit Own(boost::intrusive_ptr<T> object) : object_(std::move(object)) {}
  ~Own() { require(reference_count(get()) == 1, "kept a reference to the caller's object"); }
  Own(const Own &) = delete;
  Own &operator=(const Own &) = delete;

  T *get() const { return object_.get(); }

private:
  boost::intrusive_ptr<T> object_;
};

// Takes ownership of a reference that an operation returned.
template <typename T>
boost::intrusive_ptr<T> taken(T *object) {
  return boost::intrusive_ptr<T>(object, false);
}

inline unsigned long long type_of(const Element &element) {
  return G_OBJECT_TYPE(element.get());
}

std::vector<Operation> checks_and_lookup_operations();
std::vector<Operation> construction_and_control_operations();
std::vector<Operation> topology_operations();
std::vector<Operation> media_types_and_selection_operations();
std::vector<Operation> caps_and_search_operations();
std::vector<Operation> diagnostics_text_operations();

}  // namespace kel::tavren::tests

#endif
