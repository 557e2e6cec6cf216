#include <tavren/capture/argument_checks.h>
#include <tavren/capture/media_helper.h>
#include <tavren/capture/message_text.h>

namespace kel::tavren::capture {

namespace {

bool has_parent(GstElement *element) {
  GstObject *const parent = gst_object_get_parent(GST_OBJECT_CAST(element));
  if (parent == nullptr) return false;
  gst_object_unref(parent);
  return true;
}

// Adds a checked element to a checked bin. Does not allocate before gst_bin_add() returns: if an
// allocation failed, a new element that has no owner yet would be leaked.
void add_to_bin(GstBin *bin, GstElement *element) {
  // A bin that refuses a floating element sinks and unrefs it before it returns FALSE.
  const boost::intrusive_ptr<GstElement> held(element);
  const bool was_floating = g_object_is_floating(element) != FALSE;
  if (gst_bin_add(bin, element)) return;

  const bool dropped_by_bin = was_floating && !g_object_is_floating(element);
  if (!has_parent(element) && !dropped_by_bin) gst_object_unref(element);
  throw_naming_with_factory(TEC::BIN_ADD_FAILED, "Failed to add element %s (%s) to bin.", element);
}

}  // namespace

GstElementFactory *Media_Helper::gst_element_factory_find_or_throw(const std::string &name) {
  GstElementFactory *const factory = gst_element_factory_find(name.c_str());
  if (factory == nullptr)
    throw_quoting(TEC::FACTORY_NOT_FOUND, "Could not find factory for \"", name,
                  "\" in gst_element_factory_find_or_throw");
  return factory;
}

GstElement *Media_Helper::gst_element_factory_make_or_throw(const std::string &factory_name,
                                                            const std::string &element_name) {
  GstElement *const element = gst_element_factory_make(
      factory_name.c_str(), element_name.empty() ? nullptr : element_name.c_str());
  if (element == nullptr)
    throw Error(TEC::ELEMENT_CREATION_FAILED,
                "Could not create " + factory_name + " " + element_name);
  return element;
}

GstElement *Media_Helper::gst_parse_launch_or_throw(const std::string &description) {
  GstElement *const element = gst_parse_launch(description.c_str(), nullptr);
  if (element == nullptr)
    throw Error(TEC::PARSE_LAUNCH_FAILED, "Could not create pipeline : " + description);
  return element;
}

GstElement *Media_Helper::gst_bin_get_by_name_or_throw(GstBin *bin, const std::string &name) {
  if (bin == nullptr) throw Error(TEC::BIN_IS_NULL, "bin == NULL");
  GstElement *const element = gst_bin_get_by_name(bin, name.c_str());
  if (element == nullptr)
    throw_quoting(TEC::ELEMENT_NOT_IN_BIN, "Could not retrieve element '", name, "' from bin");
  return element;
}

void Media_Helper::gst_bin_add_or_throw(GstBin *bin, GstElement *element) {
  check_bin(bin, "bin in gst_bin_add_or_throw");
  check_element(element, "element in call to gst_bin_add_or_throw");
  add_to_bin(bin, element);
}

GstElement *Media_Helper::create_and_add_element_to_bin(const std::string &factory_name,
                                                        GstElement *bin,
                                                        const std::string &element_name) {
  // The function is called directly, because the cast macros check the type only in some builds.
  GstBin *const checked_bin = reinterpret_cast<GstBin *>(
      g_type_check_instance_cast(reinterpret_cast<GTypeInstance *>(bin), GST_TYPE_BIN));
  check_bin(checked_bin, "bin in create_and_add_element_to_bin");
  GstElement *const element = gst_element_factory_make_or_throw(factory_name, element_name);
  add_to_bin(checked_bin, element);
  return element;
}

GstElement *Media_Helper::create_and_add_element_to_pipeline(const std::string &factory_name,
                                                             GstElement *pipeline,
                                                             const std::string &element_name) {
  return create_and_add_element_to_bin(factory_name, pipeline, element_name);
}

GstStateChangeReturn Media_Helper::gst_element_set_state_or_throw(GstElement *element,
                                                                  GstState state,
                                                                  const std::string &context) {
  check_element(element, "element");
  const GstStateChangeReturn result = gst_element_set_state(element, state);
  if (result != GST_STATE_CHANGE_FAILURE) return result;

  const std::string suffix = context.empty() ? std::string() : ", " + context;
  throw Error(TEC::STATE_CHANGE_FAILED,
              fill("Failed to set state %s on element %s (%s)%s",
                   {gst_state_to_string(state).c_str(), object_name(element).get(),
                    factory_name(element), suffix.c_str()}));
}

void Media_Helper::gst_element_sync_state_with_parent_or_throw(GstElement *element) {
  check_element(element, "element in gst_element_sync_state_with_parent_or_throw");
  if (!gst_element_sync_state_with_parent(element))
    throw_naming_with_factory(TEC::STATE_SYNC_WITH_PARENT_FAILED,
                              "Failed to sync element %s (%s) with parent.", element);
}

GstBus *Media_Helper::gst_element_get_bus_or_throw(GstElement *element) {
  check_element(element, "element in gst_element_get_bus_or_throw");
  GstBus *const bus = gst_element_get_bus(element);
  if (bus == nullptr)
    throw_naming(TEC::ELEMENT_HAS_NO_BUS, "Could not retrieve pipeline bus for element \"%s\".",
                 element);
  return bus;
}

GSource *Media_Helper::gst_bus_create_watch_or_throw(GstBus *bus) {
  check_bus(bus, "bus in gst_bus_create_watch_or_throw");
  GSource *const watch = gst_bus_create_watch(bus);
  if (watch == nullptr)
    throw Error(TEC::BUS_WATCH_CREATION_FAILED,
                "Could not create bus watch in gst_bus_create_watch_or_throw");
  return watch;
}

GstElement *Media_Helper::gst_element_get_parent_or_throw(GstElement *element) {
  check_element(element, "element in gst_element_get_parent_or_throw");
  GstElement *const parent = reinterpret_cast<GstElement *>(g_type_check_instance_cast(
      reinterpret_cast<GTypeInstance *>(gst_object_get_parent(GST_OBJECT_CAST(element))),
      GST_TYPE_ELEMENT));
  if (parent == nullptr)
    throw_naming_with_factory(TEC::ELEMENT_HAS_NO_PARENT,
                              "Failed to get parent for element %s (%s).", element);
  return parent;
}

gulong Media_Helper::g_signal_connect_or_throw(GstElement *element, const std::string &signal,
                                               void (*callback)(), void *data) {
  check_element(element, "element");
  const gulong handler = g_signal_connect_data(element, signal.c_str(), callback, data, nullptr,
                                               static_cast<GConnectFlags>(0));
  if (handler == 0)
    throw Error(TEC::SIGNAL_CONNECTION_FAILED,
                fill("Failed to connect to signal \"%s\" on element \"%s\".",
                     {signal.c_str(), object_name(element).get()}));
  return handler;
}

}  // namespace kel::tavren::capture
