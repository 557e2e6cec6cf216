// Construction and control of elements.

#include "../depayloader_references.h"
#include "operation_families.h"

namespace kel::tavren::tests {
namespace {

// Watches an object that an operation passes on and must not keep.
class Destroyed_At_End {
public:
  explicit Destroyed_At_End(gpointer object) : watch_(object) {}
  ~Destroyed_At_End() { require(watch_.gone(), "the object still exists"); }
  Destroyed_At_End(const Destroyed_At_End &) = delete;
  Destroyed_At_End &operator=(const Destroyed_At_End &) = delete;

private:
  Weak_Watch watch_;
};

// Sets an element to the NULL state before it is destroyed.
class Stopped_At_End {
public:
  explicit Stopped_At_End(GstElement *element) : element_(element) {}
  ~Stopped_At_End() { gst_element_set_state(element_, GST_STATE_NULL); }
  Stopped_At_End(const Stopped_At_End &) = delete;
  Stopped_At_End &operator=(const Stopped_At_End &) = delete;

private:
  GstElement *element_;
};

void add_and_remove(const Scene &scene) {
  const Own<GstElement> element(make_element("identity", "added"));
  Media_Helper::gst_bin_add_or_throw(scene.bin(), element.get());
  require(reference_count(element.get()) == 2, "the bin has no reference to the element");
  gst_bin_remove(scene.bin(), element.get());
}

void add_element_of_taken_name(const Scene &scene) {
  GstElement *const element = gst_element_factory_make("identity", "parser");
  const Destroyed_At_End gone(element);
  Media_Helper::gst_bin_add_or_throw(scene.bin(), element);
}

void create_in_bin(const Scene &scene) {
  const Own<GstElement> element(Element(
      Media_Helper::create_and_add_element_to_bin("identity", scene.recording.get(), "added")));
  gst_bin_remove(scene.recording_bin(), element.get());
}

void create_in_pipeline(const Scene &scene) {
  const Own<GstElement> element(Element(
      Media_Helper::create_and_add_element_to_pipeline("identity", scene.pipeline.get(), "")));
  gst_bin_remove(scene.bin(), element.get());
}

void make_floating(const Scene &) {
  GstElement *const element = Media_Helper::gst_element_factory_make_or_throw("identity", "made");
  require(g_object_is_floating(element) != FALSE, "the element is not floating");
  const Own<GstElement> owned(own(element));
}

void parse(const Scene &) {
  GstElement *const parsed =
      Media_Helper::gst_parse_launch_or_throw("identity name=a ! queue ! fakesink name=b");
  const Own<GstElement> owned(own(parsed));
  const Element found(
      taken(Media_Helper::gst_bin_get_by_name_or_throw(GST_BIN_CAST(owned.get()), "b")));
  require(found != nullptr, "the parsed element is not found");
}

void start_and_stop(const Scene &scene) {
  const Stopped_At_End stopped(scene.buffer.get());
  require(Media_Helper::gst_element_set_state_or_throw(scene.buffer.get(), GST_STATE_READY, "") ==
              GST_STATE_CHANGE_SUCCESS,
          "the element is not ready");
}

void start_source_without_file(const Scene &) {
  const Own<GstElement> source(make_element("filesrc", "src0"));
  const Stopped_At_End stopped(source.get());
  Media_Helper::gst_element_set_state_or_throw(source.get(), GST_STATE_PLAYING, "starting capture");
}

void follow_parent(const Scene &scene) {
  Media_Helper::gst_element_sync_state_with_parent_or_throw(scene.deep.get());
}

void get_bus(const Scene &scene) {
  require(taken(Media_Helper::gst_element_get_bus_or_throw(scene.pipeline.get())) == scene.bus,
          "another bus");
}

void watch_bus(const Scene &) {
  const Own<GstBus> bus(taken(gst_bus_new()));
  const boost::intrusive_ptr<GSource> watch(
      taken(Media_Helper::gst_bus_create_watch_or_throw(bus.get())));
}

void watch_bus_twice(const Scene &) {
  const Own<GstBus> bus(taken(gst_bus_new()));
  const boost::intrusive_ptr<GSource> watch(taken(gst_bus_create_watch(bus.get())));
  Media_Helper::gst_bus_create_watch_or_throw(bus.get());
}

void get_parent(const Scene &scene) {
  require(taken(Media_Helper::gst_element_get_parent_or_throw(scene.deep.get())) == scene.recording,
          "another parent");
}

void connect(const Scene &scene) {
  const gulong handler = Media_Helper::g_signal_connect_or_throw(
      scene.pipeline.get(), "element-added", [] {}, nullptr);
  g_signal_handler_disconnect(scene.pipeline.get(), handler);
}

void get_by_name(const Scene &scene) {
  require(taken(Media_Helper::gst_bin_get_by_name_or_throw(scene.bin(), "deep")) == scene.deep,
          "another element");
}

void find_tee_factory(const Scene &) {
  const Factory factory(Media_Helper::gst_element_factory_find_or_throw("tee"), gst_object_unref);
  require(g_strcmp0(GST_OBJECT_NAME(factory.get()), "tee") == 0, "not the requested factory");
}

}  // namespace

// clang-format off
std::vector<Operation> construction_and_control_operations() {
  return {
    {"gst_element_factory_find_or_throw", Operation::SHARED, {}, find_tee_factory},
    {"gst_element_factory_find_or_throw in vain", Operation::SHARED, {TEC::FACTORY_NOT_FOUND, {"nosuchfactory"}}, [](const Scene &) { Media_Helper::gst_element_factory_find_or_throw("nosuchfactory"); }},
    {"gst_element_factory_make_or_throw", Operation::OWN, {}, make_floating},
    {"gst_element_factory_make_or_throw in vain", Operation::OWN, {TEC::ELEMENT_CREATION_FAILED, {"nosuchfactory", "parser"}}, [](const Scene &) { Media_Helper::gst_element_factory_make_or_throw("nosuchfactory", "parser"); }},
    {"gst_parse_launch_or_throw", Operation::OWN, {}, parse},
    {"gst_parse_launch_or_throw of nothing", Operation::OWN, {TEC::PARSE_LAUNCH_FAILED, {""}}, [](const Scene &) { Media_Helper::gst_parse_launch_or_throw(""); }},
    {"gst_bin_get_by_name_or_throw", Operation::SHARED, {}, get_by_name},
    {"gst_bin_get_by_name_or_throw without bin", Operation::SHARED, {TEC::BIN_IS_NULL}, [](const Scene &) { Media_Helper::gst_bin_get_by_name_or_throw(nullptr, "parser"); }},
    {"gst_bin_get_by_name_or_throw in vain", Operation::SHARED, {TEC::ELEMENT_NOT_IN_BIN, {"loose"}}, [](const Scene &scene) { Media_Helper::gst_bin_get_by_name_or_throw(scene.bin(), "loose"); }},
    {"gst_bin_add_or_throw", Operation::OWN, {}, add_and_remove},
    {"gst_bin_add_or_throw of nothing", Operation::OWN, {TEC::NOT_AN_ELEMENT, {"element in call to gst_bin_add_or_throw"}}, [](const Scene &scene) { Media_Helper::gst_bin_add_or_throw(scene.bin(), nullptr); }},
    {"gst_bin_add_or_throw of a taken name", Operation::OWN, {TEC::BIN_ADD_FAILED, {"parser", ""}}, add_element_of_taken_name},
    {"gst_bin_add_or_throw of another's element", Operation::OWN, {TEC::BIN_ADD_FAILED, {"deep", ""}}, [](const Scene &scene) { Media_Helper::gst_bin_add_or_throw(scene.bin(), scene.deep.get()); }},
    {"create_and_add_element_to_bin", Operation::OWN, {}, create_in_bin},
    {"create_and_add_element_to_bin, no bin", Operation::OWN, {TEC::NOT_A_BIN, {"bin in create_and_add_element_to_bin"}}, [](const Scene &) { Media_Helper::create_and_add_element_to_bin("identity", nullptr, "added"); }},
    {"create_and_add_element_to_bin, taken name", Operation::OWN, {TEC::BIN_ADD_FAILED, {"parser", ""}}, [](const Scene &scene) { Media_Helper::create_and_add_element_to_bin("identity", scene.pipeline.get(), "parser"); }},
    {"create_and_add_element_to_pipeline", Operation::OWN, {}, create_in_pipeline},
    {"create_and_add_element_to_pipeline in vain", Operation::OWN, {TEC::ELEMENT_CREATION_FAILED, {"nosuchfactory", ""}}, [](const Scene &scene) { Media_Helper::create_and_add_element_to_pipeline("nosuchfactory", scene.pipeline.get(), ""); }},

    {"gst_element_set_state_or_throw", Operation::OWN, {}, start_and_stop},
    {"gst_element_set_state_or_throw, no file", Operation::OWN, {TEC::STATE_CHANGE_FAILED, {"GST_STATE_PLAYING", "src0", "", ", starting capture"}}, start_source_without_file},
    {"gst_element_sync_state_with_parent_or_throw", Operation::OWN, {}, follow_parent},
    {"gst_element_sync_state_with_parent_or_throw, no parent", Operation::OWN, {TEC::STATE_SYNC_WITH_PARENT_FAILED, {"loose", ""}}, [](const Scene &scene) { Media_Helper::gst_element_sync_state_with_parent_or_throw(scene.loose.get()); }},
    {"gst_element_get_bus_or_throw", Operation::SHARED, {}, get_bus},
    {"gst_element_get_bus_or_throw, no bus", Operation::SHARED, {TEC::ELEMENT_HAS_NO_BUS, {"loose"}}, [](const Scene &scene) { Media_Helper::gst_element_get_bus_or_throw(scene.loose.get()); }},
    {"gst_bus_create_watch_or_throw", Operation::OWN, {}, watch_bus},
    {"gst_bus_create_watch_or_throw twice", Operation::OWN, {TEC::BUS_WATCH_CREATION_FAILED}, watch_bus_twice},
    {"gst_element_get_parent_or_throw", Operation::SHARED, {}, get_parent},
    {"gst_element_get_parent_or_throw, no parent", Operation::SHARED, {TEC::ELEMENT_HAS_NO_PARENT, {"loose", ""}}, [](const Scene &scene) { Media_Helper::gst_element_get_parent_or_throw(scene.loose.get()); }},
    {"g_signal_connect_or_throw", Operation::OWN, {}, connect},
    {"g_signal_connect_or_throw, misspelt", Operation::OWN, {TEC::SIGNAL_CONNECTION_FAILED, {"pad-adeddd", "loose"}}, [](const Scene &scene) { Media_Helper::g_signal_connect_or_throw(scene.loose.get(), "pad-adeddd", [] {}, nullptr); }},
  };
}
// clang-format on

}  // namespace kel::tavren::tests
