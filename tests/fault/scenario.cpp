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

std::vector<Involved> involve(const Caps &caps) {
  if (!caps) return {};
  return {{"caps", caps}};
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

Element make_tee(int pads) {
  Element tee = make_element("tee", "tee");
  for (int i = 0; i < pads; ++i)
    request_pad(tee.get(), "src_%u");
  return tee;
}

std::pair<Element, Element> make_linked() {
  const Element source = make_element("fakesrc", "a_source_with_a_name");
  const Element sink = make_element("fakesink", "a_sink_with_a_name");
  gst_element_link(source.get(), sink.get());
  return {source, sink};
}

}  // namespace kel::tavren::tests
