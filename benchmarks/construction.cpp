// Elements made, added and brought to their states.

#include "gstreamermm_calls.h"
#include "library_calls.h"
#include "owned.h"
#include "raw_calls.h"
#include "recording.h"
#include "trial.h"

namespace kel::tavren::benchmarks {

namespace {

constexpr const char *factory = "queue";

template <typename Calls>
class Make : public Trial {
public:
  void run() override { element_ = Calls::make(factory); }
  void clean_up() override { Calls::drop(element_); }

private:
  typename Calls::Element element_{};
};

template <typename Calls>
class Add : public Trial {
public:
  void prepare() override {
    element_ = owned(gst_element_factory_make(factory, nullptr));
    seen_ = Calls::see(element_.get());
  }
  void run() override { Calls::add(seen_bin_, seen_); }
  void clean_up() override {
    gst_bin_remove(GST_BIN_CAST(bin_.get()), element_.get());
    seen_ = {};
    element_.reset();
  }

private:
  Owned_Element bin_ = owned(gst_pipeline_new(nullptr));
  typename Calls::Bin seen_bin_ = Calls::see_bin(bin_.get());
  Owned_Element element_;
  typename Calls::Element seen_{};
};

template <typename Calls>
class Make_And_Add : public Trial {
public:
  void run() override { element_ = Calls::make_and_add(seen_bin_, factory); }
  void clean_up() override {
    gst_bin_remove(GST_BIN_CAST(bin_.get()), GST_ELEMENT_CAST(Calls::object(element_)));
    element_ = {};
  }

private:
  Owned_Element bin_ = owned(gst_pipeline_new(nullptr));
  typename Calls::Bin seen_bin_ = Calls::see_bin(bin_.get());
  typename Calls::Element element_{};
};

// An element that changes from one state to the next and back.
template <typename Calls>
class Set_State : public Trial {
public:
  void run() override {
    Calls::set_state(seen_, GST_STATE_READY);
    Calls::set_state(seen_, GST_STATE_NULL);
  }

private:
  Owned_Element element_ = owned(gst_element_factory_make(factory, nullptr));
  typename Calls::Element seen_ = Calls::see(element_.get());
};

// A whole recording, from nothing to running and back.
template <typename Calls>
class Play_And_Stop : public Trial {
public:
  Play_And_Stop() { Calls::set_state(recording_.pipeline(), GST_STATE_NULL); }
  void run() override {
    Calls::set_state(recording_.pipeline(), GST_STATE_PLAYING);
    Calls::set_state(recording_.pipeline(), GST_STATE_NULL);
  }

private:
  Recording<Calls> recording_;
};

// An element that follows its bin, which is a state ahead.
template <typename Calls>
class Sync_State : public Trial {
public:
  Sync_State() { gst_bin_add(GST_BIN_CAST(bin_.get()), element_.get()); }

  void prepare() override {
    gst_element_set_state(bin_.get(), GST_STATE_READY);
    gst_element_set_state(element_.get(), GST_STATE_NULL);
  }
  void run() override { Calls::sync_state_with_parent(seen_); }
  void clean_up() override { gst_element_set_state(bin_.get(), GST_STATE_NULL); }

private:
  Owned_Element bin_ = owned(gst_pipeline_new(nullptr));
  Owned_Element element_ = owned(gst_element_factory_make(factory, nullptr));
  typename Calls::Element seen_ = Calls::see(element_.get());
};

}  // namespace

void add_construction(Programme &programme) {
  programme.add<Make, Raw_Calls, Library_Calls, Gstreamermm_Calls>("construction/make an element",
                                                                   1);
  programme.add<Add, Raw_Calls, Library_Calls, Gstreamermm_Calls>("construction/add an element", 1);
  programme.add<Make_And_Add, Raw_Calls, Library_Calls, Gstreamermm_Calls>(
      "construction/make and add an element", 1);
  programme.add<Set_State, Raw_Calls, Library_Calls, Gstreamermm_Calls>(
      "construction/an element to READY and back", 1);
  programme.add<Play_And_Stop, Raw_Calls, Library_Calls, Gstreamermm_Calls>(
      "construction/a recording to PLAYING and back", 1);
  programme.add<Sync_State, Raw_Calls, Library_Calls, Gstreamermm_Calls>(
      "construction/an element to its bin's state", 1);
}

}  // namespace kel::tavren::benchmarks
