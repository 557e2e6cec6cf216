// Checks of links, and a fixture with a source pad and an element to link.

#ifndef TAVREN_TESTS_LINKS_H
#define TAVREN_TESTS_LINKS_H

#include <vector>

#include <gtest/gtest.h>

#include "elements.h"

namespace kel::tavren::tests {

inline bool linked(const Pad &src, const Pad &sink) {
  const Pad peer(gst_pad_get_peer(src.get()), false);
  const Pad peer_of_peer(gst_pad_get_peer(sink.get()), false);
  return peer == sink && peer_of_peer == src;
}

inline bool linked(const Element &upstream, const Element &downstream) {
  return linked(static_pad(upstream, "src"), static_pad(downstream, "sink"));
}

inline bool unlinked(const Pad &pad) {
  return !gst_pad_is_linked(pad.get());
}

// A source pad and an element that are compatible, both without a parent.
class Link_Test : public testing::Test {
protected:
  const Element source_ = make_element("fakesrc");
  const Element sink_ = make_element("fakesink");
  const Pad src_pad_ = static_pad(source_, "src");
  const Pad sink_pad_ = static_pad(sink_, "sink");

  std::vector<guint> counts() const {
    return reference_counts({source_.get(), sink_.get(), src_pad_.get(), sink_pad_.get()});
  }
  const std::vector<guint> counts_before_ = counts();
};

}  // namespace kel::tavren::tests

#endif
