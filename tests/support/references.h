// Checks for reference counts and for the destruction of objects.

#ifndef TAVREN_TESTS_REFERENCES_H
#define TAVREN_TESTS_REFERENCES_H

#include <cstring>
#include <vector>

#include <gst/gst.h>
#include <tavren/capture/media_helper.h>

namespace kel::tavren::tests {

using Element = boost::intrusive_ptr<GstElement>;
using Pad = boost::intrusive_ptr<GstPad>;
using Caps = boost::intrusive_ptr<GstCaps>;

inline guint reference_count(gpointer object) {
  return G_OBJECT(object)->ref_count;
}
inline gint reference_count(GstCaps *caps) {
  return GST_MINI_OBJECT_REFCOUNT_VALUE(caps);
}

// Returns the reference counts of several objects, for comparisons before and after a call.
inline std::vector<guint> reference_counts(const std::vector<gpointer> &objects) {
  std::vector<guint> counts;
  for (const gpointer object : objects)
    counts.push_back(reference_count(object));
  return counts;
}

// Creates an element. The handle owns the former floating reference.
inline Element make_element(const char *factory, const char *name = nullptr) {
  GstElement *const element = gst_element_factory_make(factory, name);
  return Element(element != nullptr ? GST_ELEMENT_CAST(gst_object_ref_sink(element)) : nullptr,
                 false);
}

inline Element make_bin(const char *name) {
  return Element(GST_ELEMENT_CAST(gst_object_ref_sink(gst_bin_new(name))), false);
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

// Creates a pad without a parent.
inline Pad make_pad(const char *name, GstPadDirection direction) {
  return Pad(GST_PAD_CAST(gst_object_ref_sink(gst_pad_new(name, direction))), false);
}

inline Caps make_caps(const char *text) {
  return Caps(gst_caps_from_string(text), false);
}

// Plays a pipeline until EOS or its first error, for at most ten seconds. Returns the type of the
// message, or GST_MESSAGE_UNKNOWN if there is none.
inline GstMessageType play_to_the_end(const Element &pipeline) {
  gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
  const boost::intrusive_ptr<GstBus> bus(gst_element_get_bus(pipeline.get()), false);
  const boost::intrusive_ptr<GstMessage> message(
      gst_bus_timed_pop_filtered(bus.get(), 10 * GST_SECOND,
                                 static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)),
      false);
  gst_element_set_state(pipeline.get(), GST_STATE_NULL);
  return message ? GST_MESSAGE_TYPE(message.get()) : GST_MESSAGE_UNKNOWN;
}

// Detects the destruction of an object without keeping it alive.
class Weak_Watch {
public:
  explicit Weak_Watch(gpointer object) : object_(G_OBJECT(object)) {
    g_object_add_weak_pointer(object_, reinterpret_cast<gpointer *>(&object_));
  }
  ~Weak_Watch() {
    if (object_ != nullptr)
      g_object_remove_weak_pointer(object_, reinterpret_cast<gpointer *>(&object_));
  }
  Weak_Watch(const Weak_Watch &) = delete;
  Weak_Watch &operator=(const Weak_Watch &) = delete;

  bool gone() const { return object_ == nullptr; }

private:
  GObject *object_;
};

}  // namespace kel::tavren::tests

#endif
