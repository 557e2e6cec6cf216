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
    GstElementFactory *const factory = find_factory(name).get();
    Involved &involved = all.emplace_back(name, factory);
    involved.make_up = [factory](int change) {
      for (; change > 0; --change)
        gst_object_unref(factory);
    };
  }
  return all;
}

}  // namespace kel::tavren::tests
