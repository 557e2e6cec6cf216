// Creating elements, adding them to bins, and changing their states.

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

// An element that changes to the next state and back.
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

// A whole recording, from construction to PLAYING and back.
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

// An element that follows the state of its bin, which is one state ahead.
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

// Operations that are too short to be measured individually.
constexpr int repetitions = 100;

// An element in a pipeline.
class In_Pipeline : public Trial {
protected:
  In_Pipeline() { gst_bin_add(GST_BIN_CAST(pipeline_.get()), element_.get()); }

  const std::string name_ = "child";
  Owned_Element pipeline_ = owned(gst_pipeline_new(nullptr));
  Owned_Element element_ = owned(gst_element_factory_make(factory, name_.c_str()));
};

template <typename Calls>
class Find_Factory : public Trial {
public:
  void run() override {
    for (int i = 0; i < repetitions; ++i)
      gst_object_unref(Calls::find_factory(name_));
  }

private:
  const std::string name_ = factory;
};

template <typename Calls>
class Get_By_Name : public In_Pipeline {
public:
  void run() override {
    for (int i = 0; i < repetitions; ++i)
      gst_object_unref(Calls::get_by_name(pipeline_.get(), name_));
  }
};

template <typename Calls>
class Get_Bus : public In_Pipeline {
public:
  void run() override {
    for (int i = 0; i < repetitions; ++i)
      gst_object_unref(Calls::get_bus(pipeline_.get()));
  }
};

template <typename Calls>
class Create_Watch : public In_Pipeline {
public:
  void run() override {
    for (int i = 0; i < repetitions; ++i)
      g_source_unref(Calls::create_watch(bus_.get()));
  }

private:
  const boost::intrusive_ptr<GstBus> bus_{gst_element_get_bus(pipeline_.get()), false};
};

template <typename Calls>
class Get_Parent : public In_Pipeline {
public:
  void run() override {
    for (int i = 0; i < repetitions; ++i)
      gst_object_unref(Calls::get_parent(element_.get()));
  }
};

template <typename Calls>
class Connect : public In_Pipeline {
public:
  void run() override { handler_ = Calls::connect(element_.get(), signal_); }
  void clean_up() override { g_signal_handler_disconnect(element_.get(), handler_); }

private:
  const std::string signal_ = "pad-added";
  gulong handler_ = 0;
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
  programme.add<Find_Factory, Raw_Calls, Library_Calls>("construction/find a factory", repetitions);
  programme.add<Get_By_Name, Raw_Calls, Library_Calls>("construction/get an element by its name",
                                                       repetitions);
  programme.add<Get_Bus, Raw_Calls, Library_Calls>("construction/get a pipeline's bus",
                                                   repetitions);
  programme.add<Create_Watch, Raw_Calls, Library_Calls>("construction/create a bus's watch",
                                                        repetitions);
  programme.add<Get_Parent, Raw_Calls, Library_Calls>("construction/get an element's parent",
                                                      repetitions);
  programme.add<Connect, Raw_Calls, Library_Calls>("construction/connect to a signal", 1);
}

}  // namespace kel::tavren::benchmarks
