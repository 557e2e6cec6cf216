#include <cstdarg>

#include <tavren/capture/argument_checks.h>
#include <tavren/capture/iterator_walk.h>
#include <tavren/capture/media_helper.h>
#include <tavren/capture/message_text.h>

namespace kel::tavren::capture {

namespace {

using Element = boost::intrusive_ptr<GstElement>;
// Calls gst_object_unref directly: in operations this short, the extra jump through a handle's
// adapter is measurable.
using Pad = std::unique_ptr<GstPad, decltype(&gst_object_unref)>;

// Adopts a reference that a call returned.
Element adopt(GstElement *element) noexcept {
  return Element(element, false);
}
Pad adopt(GstPad *pad) noexcept {
  return Pad(pad, gst_object_unref);
}

GstPadTemplate *pad_template(GstElement *element, const char *name) {
  return gst_element_class_get_pad_template(GST_ELEMENT_GET_CLASS(element), name);
}

// The functions below take elements that have been checked.

// Separate, so that a successful lookup sets up no frame for the message.
[[noreturn]] void throw_no_static_pad(GstElement *element, const char *name) {
  throw Error(TEC::STATIC_PAD_NOT_FOUND,
              fill("Failed to get static pad \"%s\" for element %s (%s).",
                   {name, object_name(element).get(), factory_name(element)}));
}

GstPad *get_static_pad(GstElement *element, const char *name) {
  GstPad *const pad = gst_element_get_static_pad(element, name);
  if (pad == nullptr) throw_no_static_pad(element, name);
  return pad;
}

GstPad *request_tee_pad(GstElement *tee) {
  GstPadTemplate *const src_template = pad_template(tee, "src_%u");
  if (src_template == nullptr)
    throw Error(TEC::TEE_HAS_NO_SRC_PAD_TEMPLATE, "NULL src pad template");
  GstPad *const pad = gst_element_request_pad(tee, src_template, nullptr, nullptr);
  if (pad == nullptr)
    throw Error(TEC::TEE_SRC_PAD_REQUEST_FAILED, "Failed to get src pad from tee");
  return pad;
}

// Null when the element has no parent.
Element get_topmost_parent(GstElement *element) {
  Element topmost;
  GstElement *current = element;
  while (GstObject *const parent = gst_object_get_parent(GST_OBJECT_CAST(current))) {
    current = GST_ELEMENT_CAST(parent);
    topmost = adopt(current);
  }
  return topmost;
}

}  // namespace

Media_Helper::Pad_List Media_Helper::get_element_pads(GstElement *element,
                                                      Pad_Iterator_Source iterate_pads) {
  check_element(element, "element in get_element_pads_with_iterator");
  Pad_List pads;
  const Iterator iterator(iterate_pads(element));
  for_each_object(iterator.get(),
                  [&pads](GObject *object) { pads.emplace_back(GST_PAD_CAST(object)); });
  return pads;
}

Media_Helper::Pad_List Media_Helper::get_element_src_pads(GstElement *element) {
  return get_element_pads(element, gst_element_iterate_src_pads);
}

Media_Helper::Pad_List Media_Helper::get_element_sink_pads(GstElement *element) {
  return get_element_pads(element, gst_element_iterate_sink_pads);
}

bool Media_Helper::link_pad_to_element(GstPad *src_pad, GstElement *element) noexcept {
  if (src_pad == nullptr || element == nullptr) return false;
  const Pad sink_pad = adopt(gst_element_get_static_pad(element, "sink"));
  return sink_pad && gst_pad_link(src_pad, sink_pad.get()) == GST_PAD_LINK_OK;
}

bool Media_Helper::unlink_pad_from_element(GstPad *src_pad, GstElement *element) noexcept {
  if (src_pad == nullptr || element == nullptr) return false;
  const Pad sink_pad = adopt(gst_element_get_static_pad(element, "sink"));
  return sink_pad && gst_pad_unlink(src_pad, sink_pad.get());
}

bool Media_Helper::link_element_to_pad(GstElement *element, GstPad *sink_pad) noexcept {
  if (element == nullptr || sink_pad == nullptr) return false;
  const Pad src_pad = adopt(gst_element_get_static_pad(element, "src"));
  return src_pad && gst_pad_link(src_pad.get(), sink_pad) == GST_PAD_LINK_OK;
}

void Media_Helper::link_pad_to_element_or_throw(GstPad *src_pad, GstElement *element) {
  check_element(element,
                "sink element specified for linking to src_pad in link_pad_to_element_or_throw");
  check_pad(src_pad, "src_pad in link_pad_to_element");
  const Pad sink_pad = adopt(get_static_pad(element, "sink"));
  const GstPadLinkReturn result = gst_pad_link(src_pad, sink_pad.get());
  if (result == GST_PAD_LINK_OK) return;

  const Element src_element = adopt(gst_pad_get_parent_element(src_pad));
  const Text src_element_name = src_element ? object_name(src_element.get()) : nullptr;
  throw Error(TEC::PAD_LINK_FAILED,
              fill("Failed to link \"%s\" pad from element \"%s\" with \"sink\" pad from element "
                   "\"%s\" (%s).",
                   {object_name(src_pad).get(), src_element ? src_element_name.get() : "Unknown",
                    object_name(element).get(), gst_enum_message(result).c_str()}));
}

void Media_Helper::gst_element_link_many_or_throw(GstElement *first, GstElement *second, ...) {
  std::vector<GstElement *> elements{first, second};
  // A null second element ends the list: no arguments follow it.
  if (second != nullptr) {
    // Counted first, so that nothing can throw between va_start and va_end.
    std::size_t further = 0;
    va_list list;
    va_start(list, second);
    while (va_arg(list, GstElement *) != nullptr)
      ++further;
    va_end(list);

    elements.reserve(2 + further);
    va_start(list, second);
    for (std::size_t i = 0; i < further; ++i)
      elements.push_back(va_arg(list, GstElement *));
    va_end(list);
  }

  check_element(elements[0], "element 1 in gst_element_link_many_or_throw");
  for (std::size_t i = 1; i < elements.size(); ++i) {
    // The description is created only for a bad element, because it allocates.
    if (!is_element(elements[i]))
      throw_not_an_element("element " + std::to_string(i + 1) +
                           " in gst_element_link_many_or_throw");
    if (!gst_element_link(elements[i - 1], elements[i]))
      throw Error(TEC::ELEMENT_LINK_FAILED,
                  fill("Failed to link element \"%s\" and element \"%s\".",
                       {object_name(elements[i - 1]).get(), object_name(elements[i]).get()}));
  }
}

GstPad *Media_Helper::gst_element_get_static_pad_or_throw(GstElement *element, const char *name) {
  check_element(element, "element in gst_element_get_static_pad_or_throw");
  return get_static_pad(element, name);
}

void Media_Helper::add_probe_to_sink_pad_or_throw(GstElement *element, GstPadProbeType mask,
                                                  GstPadProbeCallback callback, void *data,
                                                  GDestroyNotify destroy_data) {
  check_element(element, "element in add_probe_to_sink_pad_or_throw");
  const Pad sink_pad = adopt(get_static_pad(element, "sink"));
  if (gst_pad_add_probe(sink_pad.get(), mask, callback, data, destroy_data) == 0)
    throw Error(TEC::PROBE_NOT_ADDED, "Failed to add timeout probe");
}

GstPad *Media_Helper::get_tee_src_pad(GstElement *tee) {
  check_element(tee, "tee element in get_tee_src_pad");
  return request_tee_pad(tee);
}

void Media_Helper::link_tee_to_element(GstElement *tee, GstElement *element) {
  check_element(tee, "tee in link_tee_to_element");
  check_element(element, "element in link_tee_to_element");
  GstPad *const pad = request_tee_pad(tee);
  bool linked = false;
  Scope_Exit_Guard give_back;
  arm(give_back, [&linked, &tee, &pad] {
    if (!linked) gst_element_release_request_pad(tee, pad);
    gst_object_unref(pad);
  });
  linked = link_pad_to_element(pad, element);
  if (!linked) throw Error(TEC::TEE_LINK_FAILED, "Failed to link tee to element");
}

GstPad *Media_Helper::get_corresponding_multiqueue_pad(GstPad *multiqueue_pad) {
  check_pad(multiqueue_pad, "multiqueue_pad in get_corresponding_multiqueue_pad");
  const Element parent = adopt(gst_pad_get_parent_element(multiqueue_pad));
  if (!parent)
    throw Error(TEC::MULTIQUEUE_PAD_HAS_NO_PARENT, "Could not get parent element from pad.");

  const Text name_copy = object_name(multiqueue_pad);
  const std::string name = name_copy ? name_copy.get() : "";
  const GstPadDirection direction = gst_pad_get_direction(multiqueue_pad);
  const bool is_src = direction == GST_PAD_SRC && g_str_has_prefix(name.c_str(), "src");
  const bool is_sink = direction == GST_PAD_SINK && g_str_has_prefix(name.c_str(), "sink");
  if (!is_src && !is_sink)
    throw Error(TEC::NOT_A_MULTIQUEUE_PAD_NAME,
                "Pad has wrong naming scheme. Doesn't appear to be a multiqueue pad.");

  const std::string partner = is_src ? "sink_" + name.substr(4) : "src_" + name.substr(5);
  return get_static_pad(parent.get(), partner.c_str());
}

std::pair<GstPad *, GstPad *> Media_Helper::request_new_multiqueue_pads(GstElement *multiqueue,
                                                                        std::string name,
                                                                        const GstCaps *caps) {
  check_element(multiqueue, "multiqueue element in request_new_multiqueue_pads");
  GstPadTemplate *const sink_template = pad_template(multiqueue, "sink_%u");
  if (sink_template == nullptr)
    throw Error(TEC::MULTIQUEUE_HAS_NO_SINK_PAD_TEMPLATE, "Error getting pad_template");
  GstPad *const sink_pad = gst_element_request_pad(multiqueue, sink_template,
                                                   name.empty() ? nullptr : name.c_str(), caps);
  if (sink_pad == nullptr)
    throw Error(TEC::MULTIQUEUE_SINK_PAD_REQUEST_FAILED, "Error getting requested sink pad");
  // From here on the caller must clean up the stream, even if its partner is not found.
  return {sink_pad, get_corresponding_multiqueue_pad(sink_pad)};
}

GstPad *Media_Helper::get_element_sink_peer_pad_or_throw(GstElement *element) {
  check_element(element, "element in get_element_sink_peer_pad_or_throw");
  const Pad sink_pad = adopt(get_static_pad(element, "sink"));
  if (!gst_pad_is_linked(sink_pad.get()))
    throw Error(TEC::SINK_PAD_NOT_LINKED,
                "Sink pad is not linked in get_element_sink_peer_pad_or_throw");
  GstPad *const peer = gst_pad_get_peer(sink_pad.get());
  if (peer == nullptr)
    throw Error(TEC::SINK_PAD_HAS_NO_PEER,
                "Unable to get peer pad in et_element_sink_peer_pad_or_throw");
  return peer;
}

GstElement *Media_Helper::get_element_sink_peer_or_throw(GstElement *element) {
  const Pad peer = adopt(get_element_sink_peer_pad_or_throw(element));
  Element parent = adopt(gst_pad_get_parent_element(peer.get()));
  check_element(parent.get(), "pad parent element in get_element_sink_peer_or_throw");
  return parent.detach();
}

GstElement *Media_Helper::get_most_parent(GstElement *element) {
  check_element(element, "element in get_most_parent");
  return get_topmost_parent(element).detach();
}

void Media_Helper::verify_element_top_parent(GstElement *element, GstElement *expected_top_parent) {
  check_element(element, "element in verify_element_top_parent");
  check_element(expected_top_parent, "expected_top_parent in verify_element_top_parent");
  const Element topmost = get_topmost_parent(element);
  if (!topmost) {
    if (element == expected_top_parent) return;
    throw Error(TEC::TOP_PARENT_MISMATCH,
                "Topmost parent mismatch of the first kind in verify_element_top_parent");
  }
  if (topmost.get() != expected_top_parent)
    throw Error(TEC::TOP_PARENT_MISMATCH,
                "Topmost parent mismatch of the second kind in verify_element_top_parent");
}

}  // namespace kel::tavren::capture
