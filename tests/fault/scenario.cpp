#include "scenario.h"

#include "depayloader_references.h"

namespace kel::tavren::tests {

Involved owned(const char *name, const Element &element) {
  Involved involved(name, element);
  involved.make_up = [element](int change) {
    for (; change < 0; ++change)
      gst_object_ref(element.get());
  };
  return involved;
}

std::vector<Involved> kept_factories() {
  std::vector<Involved> all;
  for (const char *const name : depayloaders) {
    const Factory found = find_factory(name);
    Involved &involved = all.emplace_back(name, found.get());
    // The registry owns it.
    involved.make_up = [factory = found.get()](int change) {
      for (; change > 0; --change)
        gst_object_unref(factory);
    };
  }
  return all;
}

}  // namespace kel::tavren::tests
