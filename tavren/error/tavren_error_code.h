/// @file
/// The codes that identify the failures of the library.

#ifndef TAVREN_ERROR_TAVREN_ERROR_CODE_H
#define TAVREN_ERROR_TAVREN_ERROR_CODE_H

#include <cstdint>

/// Error codes of the library.
namespace kel::tavren::TEC {

/// One code for each kind of failure.
///
/// The meaning of a number never changes: logs, alarms and callers depend on it. The numbers
/// increase in steps of 0x10. 0x15060, 0x15090, 0x150A0 and 0x150D0 are free, and 0x15055 lies
/// between two steps.
///
/// 0x15160 to 0x15190, 0x15200 and 0x15210 mean that the caller passed a bad argument; the message
/// names the argument and, in most cases, the operation. 0x15130 and 0x15250 also report bad
/// arguments. The other codes mean that an operation failed; many of their messages name the
/// object.
/// @ingroup errors
enum Tavren_Error_Code : std::int32_t {
  /// `string_from_map_or_throw_` and the element selection tables: the key has no row.
  /// Check the file name's extension, which is case-sensitive, or the media type.
  KEY_NOT_FOUND = 0x15000,

  /// `select_proxy_elements`: none of the six depayloaders accepts the caps.
  /// Check the caps: media, clock-rate and encoding-name must all be present.
  NO_PROXY_ELEMENTS_FOR_CAPS = 0x15010,

  /// `link_tee_to_element`: the new tee pad could not be linked and has been released.
  /// Check the downstream element: it needs an unlinked "sink" pad that accepts the tee's caps, and
  /// must be in the same bin as the tee.
  TEE_LINK_FAILED = 0x15020,

  /// `get_tee_src_pad`, `link_tee_to_element`: the element's class has no "src_%u" pad template.
  /// Check the element argument: it is not a tee.
  TEE_HAS_NO_SRC_PAD_TEMPLATE = 0x15030,

  /// `get_tee_src_pad`, `link_tee_to_element`: the element did not return a pad for its "src_%u"
  /// template.
  /// Check the element's template: the pads may not be requestable, or the element may refuse more
  /// pads.
  TEE_SRC_PAD_REQUEST_FAILED = 0x15040,

  /// `request_new_multiqueue_pads`: the element's class has no "sink_%u" pad template.
  /// Check the element argument: it is not a multiqueue.
  MULTIQUEUE_HAS_NO_SINK_PAD_TEMPLATE = 0x15050,

  /// `request_new_multiqueue_pads`: the element did not return a pad.
  /// Check the requested pad name: it may be in use already.
  MULTIQUEUE_SINK_PAD_REQUEST_FAILED = 0x15055,

  /// `get_corresponding_multiqueue_pad`, `request_new_multiqueue_pads`: the pad belongs to no
  /// element.
  /// Check whether the pad was released from its multiqueue.
  MULTIQUEUE_PAD_HAS_NO_PARENT = 0x15070,

  /// `get_corresponding_multiqueue_pad`, `request_new_multiqueue_pads`: the pad's name does not
  /// match its direction.
  /// Check the pad's name: it must begin with "src" for source pads and with "sink" for sink pads.
  NOT_A_MULTIQUEUE_PAD_NAME = 0x15080,

  /// `link_pad_to_element_or_throw`: GStreamer refused the link.
  /// Check the end of the message, which gives the reason.
  PAD_LINK_FAILED = 0x150B0,

  /// `gst_element_factory_make_or_throw`, `create_and_add_element_to_bin`,
  /// `create_and_add_element_to_pipeline`: no such factory, or it could not make an element.
  /// Check whether the plugin that provides the factory named in the message is installed.
  ELEMENT_CREATION_FAILED = 0x150C0,

  /// `gst_bin_add_or_throw`, `create_and_add_element_to_bin`,
  /// `create_and_add_element_to_pipeline`: the bin refused the element.
  /// Check whether the bin has another child of the same name, or the element already has a parent.
  BIN_ADD_FAILED = 0x150E0,

  /// `gst_element_sync_state_with_parent_or_throw`: the element could not change to the state of
  /// its parent.
  /// Check whether the element has a parent, and look at the bus for the element's own error.
  STATE_SYNC_WITH_PARENT_FAILED = 0x150F0,

  /// `gst_element_get_static_pad_or_throw` and the operations that use it: no pad of that name.
  /// Check the element's pads: sources have no "sink", sinks no "src", tees no "src".
  STATIC_PAD_NOT_FOUND = 0x15100,

  /// `gst_element_get_parent_or_throw`: the element has no parent.
  /// Check whether the element was added to its bin, or is the pipeline itself.
  ELEMENT_HAS_NO_PARENT = 0x15110,

  /// `gst_parse_launch_or_throw`: no element could be created from the description.
  /// Check the description in the message: it is empty, its syntax is invalid, or its only element
  /// cannot be created as described.
  PARSE_LAUNCH_FAILED = 0x15120,

  /// `gst_bin_get_by_name_or_throw`: the bin is null.
  /// Check where the caller got its bin.
  BIN_IS_NULL = 0x15130,

  /// `gst_bin_get_by_name_or_throw`: no element of that name in the bin or in the bins inside it.
  /// Check the actual names of the elements: if a name is empty, GStreamer chooses one.
  ELEMENT_NOT_IN_BIN = 0x15140,

  /// `add_probe_to_sink_pad_or_throw`: GStreamer returned no probe identifier.
  /// Check the mask, and whether an idle probe ran at once and asked to be removed.
  PROBE_NOT_ADDED = 0x15150,

  /// `is_element_or_throw`, and every operation that checks an element: null, or not an element.
  /// Check the argument that the message names.
  NOT_AN_ELEMENT = 0x15160,

  /// `is_pad_or_throw`, and every operation that checks a pad: null, or not a pad.
  /// Check the argument that the message names.
  NOT_A_PAD = 0x15170,

  /// `is_bin_or_throw`, and every operation that checks a bin: null, or not a bin.
  /// Check the argument that the message names.
  NOT_A_BIN = 0x15180,

  /// `is_bus_or_throw`, `gst_bus_create_watch_or_throw`: null, or not a bus.
  /// Check the argument that the message names.
  NOT_A_BUS = 0x15190,

  /// `gst_element_get_bus_or_throw`: the element has no bus.
  /// Check whether the element is a pipeline or in a bin: other elements have no bus.
  ELEMENT_HAS_NO_BUS = 0x151A0,

  /// `gst_bus_create_watch_or_throw`: the bus did not return a watch.
  /// Check for an earlier watch: a bus has at most one.
  BUS_WATCH_CREATION_FAILED = 0x151B0,

  /// `gst_element_link_many_or_throw`: two adjacent elements of the chain could not be linked.
  /// Check the caps, the free pads and the bins of the two elements that the message names.
  ELEMENT_LINK_FAILED = 0x151C0,

  /// `gst_element_factory_find_or_throw` and the operations that use it: no such factory.
  /// Check whether the plugin that provides the factory named in the message is installed.
  FACTORY_NOT_FOUND = 0x151D0,

  /// `get_element_type`: the plugin of the factory could not be loaded.
  /// Check the plugin's file: it existed when the registry was created, but no longer does.
  FACTORY_NOT_LOADED = 0x151E0,

  /// `get_element_type`: the loaded factory has no element type.
  /// Check the plugin that provides the factory named in the message.
  FACTORY_HAS_NO_ELEMENT_TYPE = 0x151F0,

  /// `is_valid_element_type_or_throw`, and the searches that take an element type: the type is 0.
  /// Check where the caller got its type: `get_element_type` never returns 0.
  INVALID_ELEMENT_TYPE = 0x15200,

  /// `is_caps_or_throw`, and every operation that checks caps: null, or not caps.
  /// Check the argument that the message names.
  NOT_CAPS = 0x15210,

  /// `get_element_sink_peer_pad_or_throw`, `get_element_sink_peer_or_throw`: "sink" is not linked.
  /// Check whether the elements upstream were linked before the call.
  SINK_PAD_NOT_LINKED = 0x15220,

  /// `get_element_sink_peer_pad_or_throw`, `get_element_sink_peer_or_throw`: the pad was unlinked
  /// during the call.
  /// Check for another thread that unlinks the element.
  SINK_PAD_HAS_NO_PEER = 0x15230,

  /// `verify_element_top_parent`: the element does not belong to the expected top-level element.
  /// Check the message: "first kind" means that the element has no parent, "second kind" that its
  /// outermost ancestor is a different element.
  TOP_PARENT_MISMATCH = 0x15240,

  /// `calculate_resolution`: a width or a height is 0. The only code that is thrown as a logic
  /// error.
  /// Check the two resolutions that were passed.
  INVALID_RESOLUTION = 0x15250,

  /// `get_framerate_from_caps`: the first structure has no single "framerate" fraction.
  /// Check the caps: the field may be missing, or it may be a range or a list because it is not
  /// fixed yet.
  CAPS_WITHOUT_FRAMERATE = 0x15260,

  /// `get_framerate_from_caps`: the frame rate is zero or negative.
  /// Check the caps: 0/1 means a variable frame rate.
  INVALID_FRAMERATE = 0x15270,

  /// `get_resolution_from_caps`: "width" or "height" is missing or not a single integer.
  /// Check the caps: the fields may be ranges because they are not fixed yet.
  CAPS_WITHOUT_RESOLUTION = 0x15280,

  /// `get_resolution_from_caps`: the width or the height is zero or negative.
  /// Check the caps.
  INVALID_CAPS_RESOLUTION = 0x15290,

  /// `get_media_info`: no discoverer could be created.
  /// Check the timeout: GStreamer does not accept `GST_CLOCK_TIME_NONE`. Also check whether the
  /// playback plugin, which contains "uridecodebin", is installed.
  DISCOVERER_CREATION_FAILED = 0x152A0,

  /// `get_media_info`: the discoverer returned nothing at all.
  /// Check the URI and GStreamer's log.
  DISCOVERY_FAILED = 0x152B0,

  /// `get_media_info`: the discoverer returned an error.
  /// Check the result at the end of the message: a bad URI, a timeout, missing plugins.
  DISCOVERER_RETURNED_ERROR = 0x152C0,

  /// `g_signal_connect_or_throw`: the element's class has no such signal.
  /// Check the signal's name in the message.
  SIGNAL_CONNECTION_FAILED = 0x152D0,

  /// `gst_element_set_state_or_throw`: the element refused the state change.
  /// Check the bus: the element that failed has posted its own error there.
  STATE_CHANGE_FAILED = 0x152E0,

  /// `gst_is_initialized_or_throw`: GStreamer has not been initialised.
  /// Check whether `gst_init` was called before the first use of the library.
  FRAMEWORK_NOT_INITIALIZED = 0x152F0,
};

}  // namespace kel::tavren::TEC

#endif
