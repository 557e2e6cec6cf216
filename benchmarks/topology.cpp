// Links, pads, branches of tees, streams of multiqueues.

#include <cstddef>
#include <vector>

#include "gstreamermm_calls.h"
#include "library_calls.h"
#include "owned.h"
#include "raw_calls.h"
#include "trial.h"

namespace kel::tavren::benchmarks {

namespace {

Owned_Element new_child(const Owned_Element &bin, const char *factory) {
  Owned_Element child = owned(gst_element_factory_make(factory, nullptr));
  gst_bin_add(GST_BIN_CAST(bin.get()), child.get());
  return child;
}

template <typename Calls>
class Link_Chain : public Trial {
public:
  explicit Link_Chain(std::size_t length) {
    for (std::size_t i = 0; i < length; ++i) {
      chain_.push_back(new_child(bin_, "identity"));
      seen_.push_back(Calls::see(chain_.back().get()));
    }
  }
  void run() override { Calls::link_chain(seen_); }
  void clean_up() override {
    for (std::size_t i = 1; i < chain_.size(); ++i)
      gst_element_unlink(chain_[i - 1].get(), chain_[i].get());
  }

private:
  Owned_Element bin_ = owned(gst_pipeline_new(nullptr));
  std::vector<Owned_Element> chain_;
  std::vector<typename Calls::Element> seen_;
};

constexpr int lookups = 100;

template <typename Calls>
class Static_Pad : public Trial {
public:
  void run() override {
    for (int i = 0; i < lookups; ++i) {
      typename Calls::Pad pad = Calls::static_pad(seen_, "sink");
      Calls::drop(pad);
    }
  }

private:
  Owned_Element element_ = owned(gst_element_factory_make("identity", nullptr));
  typename Calls::Element seen_ = Calls::see(element_.get());
};

// A probe is removed with its element. Uses many elements, because the number of instructions for
// comparing pad names depends on their addresses.
template <typename Calls>
class Add_Probe : public Trial {
public:
  void prepare() override {
    for (int i = 0; i < lookups; ++i) {
      elements_.push_back(owned(gst_element_factory_make("identity", nullptr)));
      seen_.push_back(Calls::see(elements_.back().get()));
    }
  }
  void run() override {
    for (const typename Calls::Element &element : seen_)
      Calls::add_probe(element);
  }
  void clean_up() override {
    seen_.clear();
    elements_.clear();
  }

private:
  std::vector<Owned_Element> elements_;
  std::vector<typename Calls::Element> seen_;
};

template <typename Calls>
class Tee_Branch : public Trial {
public:
  void run() override {
    Calls::link_tee(seen_tee_, seen_element_);
    Calls::drop_branch(seen_tee_, seen_element_);
  }

private:
  Owned_Element bin_ = owned(gst_pipeline_new(nullptr));
  Owned_Element tee_ = new_child(bin_, "tee");
  Owned_Element element_ = new_child(bin_, "queue");
  typename Calls::Element seen_tee_ = Calls::see(tee_.get());
  typename Calls::Element seen_element_ = Calls::see(element_.get());
};

// Two elements with compatible pads.
class Two_Elements : public Trial {
protected:
  void link() { gst_pad_link(src_pad_.get(), sink_pad_.get()); }
  void unlink() { gst_pad_unlink(src_pad_.get(), sink_pad_.get()); }

  Owned_Element bin_ = owned(gst_pipeline_new(nullptr));
  Owned_Element source_ = new_child(bin_, "identity");
  Owned_Element sink_ = new_child(bin_, "identity");
  Owned_Pad src_pad_{gst_element_get_static_pad(source_.get(), "src"), false};
  Owned_Pad sink_pad_{gst_element_get_static_pad(sink_.get(), "sink"), false};
};

template <typename Calls>
class Sink_Peer : public Two_Elements {
public:
  Sink_Peer() { link(); }
  void run() override {
    for (int i = 0; i < lookups; ++i)
      gst_object_unref(Calls::sink_peer(sink_.get()));
  }
};

template <typename Calls>
class Link_Pad : public Two_Elements {
public:
  void run() override { Calls::link_pad_to_element(src_pad_.get(), sink_.get()); }
  void clean_up() override { unlink(); }
};

template <typename Calls>
class Unlink_Pad : public Two_Elements {
public:
  void prepare() override { link(); }
  void run() override { Calls::unlink_pad_from_element(src_pad_.get(), sink_.get()); }
};

template <typename Calls>
class Multiqueue_Stream : public Trial {
public:
  void run() override {
    typename Calls::Stream stream = Calls::new_stream(seen_);
    Calls::release_stream(seen_, stream);
  }

private:
  Owned_Element multiqueue_ = owned(gst_element_factory_make("multiqueue", nullptr));
  typename Calls::Element seen_ = Calls::see(multiqueue_.get());
};

}  // namespace

void add_topology(Programme &programme) {
  for (const std::size_t length : {2U, 8U, 32U})
    programme.add<Link_Chain, Raw_Calls, Library_Calls, Gstreamermm_Calls>(
        "topology/link a chain/" + std::to_string(length), 1, length);
  programme.add<Static_Pad, Raw_Calls, Library_Calls, Gstreamermm_Calls>(
      "topology/look up a static pad", lookups);
  programme.add<Sink_Peer, Raw_Calls, Library_Calls>("topology/look up a sink's peer", lookups);
  programme.add<Link_Pad, Raw_Calls, Library_Calls>("topology/link a pad to an element", 1);
  programme.add<Unlink_Pad, Raw_Calls, Library_Calls>("topology/unlink a pad from an element", 1);
  programme.add<Add_Probe, Raw_Calls, Library_Calls, Gstreamermm_Calls>("topology/add a probe",
                                                                        lookups);
  programme.add<Tee_Branch, Raw_Calls, Library_Calls, Gstreamermm_Calls>(
      "topology/a tee branch made and torn down", 1);
  programme.add<Multiqueue_Stream, Raw_Calls, Library_Calls, Gstreamermm_Calls>(
      "topology/a multiqueue stream made and torn down", 1);
}

}  // namespace kel::tavren::benchmarks
