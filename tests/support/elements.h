// Creates and plays elements, pads and caps for tests.

#ifndef TAVREN_TESTS_ELEMENTS_H
#define TAVREN_TESTS_ELEMENTS_H

#include <cstring>
#include <string>

#include "references.h"

namespace kel::tavren::tests {

// Takes ownership of a reference, including a floating one.
template <typename T>
boost::intrusive_ptr<T> own(T *object) {
  if (object != nullptr && g_object_is_floating(object)) gst_object_ref_sink(object);
  return boost::intrusive_ptr<T>(object, false);
}

inline Element make_element(const char *factory, const char *name = nullptr) {
  return own(gst_element_factory_make(factory, name));
}

inline Element make_bin(const char *name) {
  return own(gst_bin_new(name));
}

inline Element make_pipeline(const char *name = nullptr) {
  return own(gst_pipeline_new(name));
}

inline std::string name_of(gpointer object) {
  return object != nullptr ? GST_OBJECT_NAME(object) : "null";
}

// Registers a type that inherits everything that the function does not change.
inline GType make_subclass(GType parent, const char *name, GClassInitFunc change = nullptr) {
  GTypeQuery sizes;
  g_type_query(parent, &sizes);
  return g_type_register_static_simple(parent, name, sizes.class_size, change, sizes.instance_size,
                                       nullptr, GTypeFlags{});
}

// Creates an element without a factory.
inline Element make_of_type(GType type, const char *name = nullptr) {
  return own(static_cast<GstElement *>(g_object_new(type, "name", name, nullptr)));
}

// Creates an element without a factory and without pads.
inline Element make_bare_element(const char *name = nullptr) {
  static const GType type = make_subclass(GST_TYPE_ELEMENT, "TestBareElement");
  return make_of_type(type, name);
}

// Unchecked casts, also for objects of the wrong type.
inline GstElement *as_element(gpointer object) {
  return static_cast<GstElement *>(object);
}
inline GstElement *as_element(const Pad &pad) {
  return as_element(pad.get());
}
inline GstBin *as_bin(const Element &element) {
  return GST_BIN_CAST(element.get());
}
inline GstPad *as_pad(const Element &element) {
  return GST_PAD_CAST(element.get());
}

inline bool is_child_of(GstElement *element, const Element &bin) {
  return GST_OBJECT_PARENT(element) == GST_OBJECT_CAST(bin.get());
}

inline Element add_to_bin(const Element &bin, const Element &element) {
  if (!gst_bin_add(as_bin(bin), element.get())) g_error("the bin does not accept the element");
  return element;
}

// Creates a pad without a parent.
inline Pad make_pad(const char *name, GstPadDirection direction) {
  return own(gst_pad_new(name, direction));
}

inline Pad add_pad(const Element &element, const Pad &pad) {
  if (!gst_element_add_pad(element.get(), pad.get())) g_error("the element already has such a pad");
  return pad;
}

inline Pad static_pad(const Element &element, const char *name) {
  return Pad(gst_element_get_static_pad(element.get(), name), false);
}

// Requests a pad from the element's only request pad template. With "sink_%u", the element chooses
// the number. GStreamer 1.20 renamed its own function for this.
inline Pad request_pad(GstElement *element, const char *name) {
  for (GList *entry = gst_element_get_pad_template_list(element); entry != nullptr;
       entry = entry->next) {
    auto *const pad_template = static_cast<GstPadTemplate *>(entry->data);
    if (GST_PAD_TEMPLATE_PRESENCE(pad_template) == GST_PAD_REQUEST)
      return Pad(gst_element_request_pad(element, pad_template,
                                         std::strchr(name, '%') == nullptr ? name : nullptr,
                                         nullptr),
                 false);
  }
  return Pad();
}

inline Caps make_caps(const char *text) {
  return Caps(gst_caps_from_string(text), false);
}

// Plays a pipeline until EOS or its first error, for at most 30 s. Returns the type of the message,
// or GST_MESSAGE_UNKNOWN if there is none.
inline GstMessageType play_to_end(const Element &pipeline) {
  gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
  const boost::intrusive_ptr<GstBus> bus(gst_element_get_bus(pipeline.get()), false);
  const boost::intrusive_ptr<GstMessage> message(
      gst_bus_timed_pop_filtered(bus.get(), 30 * GST_SECOND,
                                 static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)),
      false);
  gst_element_set_state(pipeline.get(), GST_STATE_NULL);
  return message ? GST_MESSAGE_TYPE(message.get()) : GST_MESSAGE_UNKNOWN;
}

}  // namespace kel::tavren::tests

#endif
