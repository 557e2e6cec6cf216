// The references to factories that the choice of an RTP proxy keeps.

#ifndef TAVREN_TESTS_DEPAYLOADER_REFERENCES_H
#define TAVREN_TESTS_DEPAYLOADER_REFERENCES_H

#include <map>
#include <memory>
#include <string>

#include "depayloaders.h"
#include "references.h"

namespace kel::tavren::tests {

using Factory = std::unique_ptr<GstElementFactory, decltype(&gst_object_unref)>;

inline Factory find_factory(const std::string &name) {
  return Factory(gst_element_factory_find(name.c_str()), gst_object_unref);
}

// Counts the references to the depayloaders' factories, and finally releases those that were kept,
// so that leak checks do not report them.
class Depayloader_References {
public:
  Depayloader_References() {
    for (const char *const name : depayloaders)
      before_[name] = count(name);
  }
  ~Depayloader_References() {
    for (const auto &[name, before] : before_)
      for (guint taken = count(name); taken > before; --taken)
        gst_object_unref(find_factory(name).get());
  }
  Depayloader_References(const Depayloader_References &) = delete;
  Depayloader_References &operator=(const Depayloader_References &) = delete;

  static guint count(const std::string &name) {
    const Factory factory = find_factory(name);
    return reference_count(factory.get()) - 1;
  }
  guint before(const std::string &name) const { return before_.at(name); }

private:
  std::map<std::string, guint> before_;
};

}  // namespace kel::tavren::tests

#endif
