/// @file
/// The numbers by which callers tell one failure of the library from another.

#ifndef TAVREN_ERROR_TAVREN_ERROR_CODE_H
#define TAVREN_ERROR_TAVREN_ERROR_CODE_H

#include <cstdint>

/// Error codes of the library.
namespace kel::tavren::TEC {

/// One code for each kind of failure.
///
/// A number, once given, keeps its meaning for good: logs, alarms and callers' branches depend on
/// it. The numbers go up in steps of 0x10; 0x15060, 0x15090, 0x150A0 and 0x150D0 are free, and
/// 0x15055 stands between two steps.
///
/// Reading one in a log: 0x15160 to 0x15190, 0x15200 and 0x15210 mean that the caller handed in a
/// bad argument, and the message names it, mostly with the operation. 0x15130 and 0x15250 are bad
/// arguments too. The other codes mean that an operation could not do what it was asked; many of
/// their messages name the object.
/// @ingroup errors
enum Tavren_Error_Code : std::int32_t {
  /// `string_from_map_or_throw_` and the element selection tables: the key has no row.
  /// Look at the file name's extension (case counts) or at the media kind that was asked for.
  KEY_NOT_FOUND = 0x15000,

  /// `select_proxy_elements`: none of the six depayloaders takes the caps.
  /// Look at the caps: media, clock-rate and encoding-name must all be there.
  NO_PROXY_ELEMENTS_FOR_CAPS = 0x15010,

  /// `link_tee_to_element`: the new tee pad could not be linked; it has been given back.
  /// Look at the downstream element: it needs an unlinked "sink" pad that takes the tee's caps, and
  /// must be in the same bin as the tee.
  TEE_LINK_FAILED = 0x15020,

  /// `get_tee_src_pad`, `link_tee_to_element`: the element's class has no "src_%u" pad template.
  /// Look at the element handed in: it is not a tee.
  TEE_HAS_NO_SRC_PAD_TEMPLATE = 0x15030,

  /// `get_tee_src_pad`, `link_tee_to_element`: the element gave no pad for its "src_%u" template.
  /// Look at the element's kind: its template may make pads by itself only, or it may be full.
  TEE_SRC_PAD_REQUEST_FAILED = 0x15040,

  /// `request_new_multiqueue_pads`: the element's class has no "sink_%u" pad template.
  /// Look at the element handed in: it is not a multiqueue.
  MULTIQUEUE_HAS_NO_SINK_PAD_TEMPLATE = 0x15050,

  /// `request_new_multiqueue_pads`: the element gave no pad.
  /// Look at the pad name that was asked for: it may be taken already.
  MULTIQUEUE_SINK_PAD_REQUEST_FAILED = 0x15055,

  /// `get_corresponding_multiqueue_pad`, `request_new_multiqueue_pads`: the pad belongs to no
  /// element.
  /// Look at the pad's life: it may have been released from its multiqueue already.
  MULTIQUEUE_PAD_HAS_NO_PARENT = 0x15070,

  /// `get_corresponding_multiqueue_pad`, `request_new_multiqueue_pads`: the pad's name does not fit
  /// its direction.
  /// Look at the pad: source pads must begin with "src", sink pads with "sink".
  NOT_A_MULTIQUEUE_PAD_NAME = 0x15080,

  /// `link_pad_to_element_or_throw`: the framework refused the link.
  /// Look at the last words of the message: they tell which rule of linking was broken.
  PAD_LINK_FAILED = 0x150B0,

  /// `gst_element_factory_make_or_throw`, `create_and_add_element_to_bin`,
  /// `create_and_add_element_to_pipeline`: no such factory, or it could not make an element.
  /// Look for the plug-in that provides the factory named in the message.
  ELEMENT_CREATION_FAILED = 0x150C0,

  /// `gst_bin_add_or_throw`, `create_and_add_element_to_bin`,
  /// `create_and_add_element_to_pipeline`: the bin refused the element.
  /// Look for another child of the same name, or for a parent that the element already has.
  BIN_ADD_FAILED = 0x150E0,

  /// `gst_element_sync_state_with_parent_or_throw`: the element could not follow its parent.
  /// Look at whether the element has a parent, and at the bus for the element's own error.
  STATE_SYNC_WITH_PARENT_FAILED = 0x150F0,

  /// `gst_element_get_static_pad_or_throw` and what is built on it: no pad of that name.
  /// Look at the element's kind: sources have no "sink", sinks no "src", tees no "src".
  STATIC_PAD_NOT_FOUND = 0x15100,

  /// `gst_element_get_parent_or_throw`: the element has no parent.
  /// Look at whether the element was added to its bin, or is the pipeline itself.
  ELEMENT_HAS_NO_PARENT = 0x15110,

  /// `gst_parse_launch_or_throw`: the description made no element at all.
  /// Look at the description in the message: it is empty, its syntax is broken, or its only element
  /// cannot be made as it is described.
  PARSE_LAUNCH_FAILED = 0x15120,

  /// `gst_bin_get_by_name_or_throw`: the bin is null.
  /// Look at where the caller got its bin from.
  BIN_IS_NULL = 0x15130,

  /// `gst_bin_get_by_name_or_throw`: no element of that name in the bin or in the bins inside it.
  /// Look at the names that the elements really got: an empty name lets the framework choose.
  ELEMENT_NOT_IN_BIN = 0x15140,

  /// `add_probe_to_sink_pad_or_throw`: the framework gave no probe identifier.
  /// Look at the mask, and at whether an idle probe ran at once and asked to be removed.
  PROBE_NOT_ADDED = 0x15150,

  /// `is_element_or_throw`, and every operation that checks an element: null, or not an element.
  /// Look at the argument that the message names.
  NOT_AN_ELEMENT = 0x15160,

  /// `is_pad_or_throw`, and every operation that checks a pad: null, or not a pad.
  /// Look at the argument that the message names.
  NOT_A_PAD = 0x15170,

  /// `is_bin_or_throw`, and every operation that checks a bin: null, or not a bin.
  /// Look at the argument that the message names.
  NOT_A_BIN = 0x15180,

  /// `is_bus_or_throw`, `gst_bus_create_watch_or_throw`: null, or not a bus.
  /// Look at the argument that the message names.
  NOT_A_BUS = 0x15190,

  /// `gst_element_get_bus_or_throw`: the element has no bus.
  /// Look at whether the element is a pipeline or inside a bin: others have no bus.
  ELEMENT_HAS_NO_BUS = 0x151A0,

  /// `gst_bus_create_watch_or_throw`: the bus gave no watch.
  /// Look for an earlier watch: a bus has one at most.
  BUS_WATCH_CREATION_FAILED = 0x151B0,

  /// `gst_element_link_many_or_throw`: two neighbours of the chain could not be linked.
  /// Look at the two elements that the message names: their caps, their free pads, their bins.
  ELEMENT_LINK_FAILED = 0x151C0,

  /// `gst_element_factory_find_or_throw` and what looks factories up through it: no such factory.
  /// Look for the plug-in that provides the factory named in the message.
  FACTORY_NOT_FOUND = 0x151D0,

  /// `get_element_type`: the plug-in of the factory could not be loaded.
  /// Look at the plug-in's file: it was there when the registry was made, and is not any more.
  FACTORY_NOT_LOADED = 0x151E0,

  /// `get_element_type`: the loaded factory names no element type.
  /// Look at the plug-in that provides the factory named in the message.
  FACTORY_HAS_NO_ELEMENT_TYPE = 0x151F0,

  /// `is_valid_element_type_or_throw`, and the searches that take an element type: the type is 0.
  /// Look at where the caller got its type from: `get_element_type` never gives 0.
  INVALID_ELEMENT_TYPE = 0x15200,

  /// `is_caps_or_throw`, and every operation that checks caps: null, or not caps.
  /// Look at the argument that the message names.
  NOT_CAPS = 0x15210,

  /// `get_element_sink_peer_pad_or_throw`, `get_element_sink_peer_or_throw`: "sink" is not linked.
  /// Look at whether the chain up to the element was linked before it was asked about.
  SINK_PAD_NOT_LINKED = 0x15220,

  /// `get_element_sink_peer_pad_or_throw`, `get_element_sink_peer_or_throw`: the link went away
  /// while it was asked about.
  /// Look for another thread that unlinks the element.
  SINK_PAD_HAS_NO_PEER = 0x15230,

  /// `verify_element_top_parent`: the element belongs to another top-level element than expected.
  /// Look at the message: "first kind", the element has no parent at all; "second kind", its
  /// outermost ancestor is another one.
  TOP_PARENT_MISMATCH = 0x15240,

  /// `calculate_resolution`: a width or a height is 0. The one code thrown as a logic error.
  /// Look at the two resolutions handed in.
  INVALID_RESOLUTION = 0x15250,

  /// `get_framerate_from_caps`: the first structure has no single "framerate" fraction.
  /// Look at the caps: the field may be missing, or a range or list because it is not fixed yet.
  CAPS_WITHOUT_FRAMERATE = 0x15260,

  /// `get_framerate_from_caps`: the frame rate is zero or negative.
  /// Look at the caps: 0/1 stands for a variable frame rate.
  INVALID_FRAMERATE = 0x15270,

  /// `get_resolution_from_caps`: "width" or "height" is missing or not a single integer.
  /// Look at the caps: the fields may be ranges because they are not fixed yet.
  CAPS_WITHOUT_RESOLUTION = 0x15280,

  /// `get_resolution_from_caps`: the width or the height is zero or negative.
  /// Look at the caps.
  INVALID_CAPS_RESOLUTION = 0x15290,

  /// `get_media_info`: no discoverer could be made.
  /// Look at the time-out: the framework does not take `GST_CLOCK_TIME_NONE`. Or its playback
  /// plug-in, which has "uridecodebin", is missing.
  DISCOVERER_CREATION_FAILED = 0x152A0,

  /// `get_media_info`: the discoverer gave no answer at all.
  /// Look at the URI, and at the framework's own log.
  DISCOVERY_FAILED = 0x152B0,

  /// `get_media_info`: the discoverer answered with an error.
  /// Look at the result at the end of the message: a bad URI, a time-out, missing plug-ins.
  DISCOVERER_RETURNED_ERROR = 0x152C0,

  /// `g_signal_connect_or_throw`: the element's class has no such signal.
  /// Look at the signal's name in the message.
  SIGNAL_CONNECTION_FAILED = 0x152D0,

  /// `gst_element_set_state_or_throw`: the element refused the state.
  /// Look at the bus: the element that failed has posted its own error there.
  STATE_CHANGE_FAILED = 0x152E0,

  /// `gst_is_initialized_or_throw`: the framework has not been initialised.
  /// Look at whether `gst_init` ran before the first use of the library.
  FRAMEWORK_NOT_INITIALIZED = 0x152F0,
};

}  // namespace kel::tavren::TEC

#endif
