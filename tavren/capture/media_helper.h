/// @file
/// The library's only class. Including this header provides everything that a caller needs: errors,
/// handles, the scope-exit guard, media types.

#ifndef TAVREN_CAPTURE_MEDIA_HELPER_H
#define TAVREN_CAPTURE_MEDIA_HELPER_H

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gst/gst.h>
#include <gst/pbutils/pbutils.h>

#include <tavren/capture/media_info.h>
#include <tavren/capture/media_type.h>
#include <tavren/error/tavren_error.h>
#include <tavren/export.h>
#include <tavren/handles/emancipator.h>
#include <tavren/handles/reference_adapters.h>
#include <tavren/handles/scope_exit_guard.h>

namespace kel::tavren::capture {

/// Checked helpers over GStreamer.
///
/// Where GStreamer reports a failure by returning NULL, FALSE or an enumerator, these functions
/// throw `Backend_Error<std::runtime_error>` with a code for the failure and a message that names
/// the object concerned. A bad argument is reported with the code of its check (`NOT_AN_ELEMENT`
/// and so on), never with a code of the operation. An operation releases everything that it
/// acquires for its own use before it returns or throws. The reference counts of its arguments do
/// not change unless its documentation says otherwise. A function that documents no code throws
/// none. Every function may also throw `std::bad_alloc`, unless its documentation says that it does
/// not throw.
///
/// The class has no state: every function runs to completion on the caller's thread and takes no
/// lock itself. "Any thread" below means that a function may be called from any number of threads
/// at once, also with the same objects if GStreamer allows this for them. GStreamer must have been
/// initialised.
///
/// (transfer full) marks a reference that the caller owns and must release, (transfer floating) a
/// reference that the first owner sinks, and (transfer none) a borrowed pointer. Arguments are
/// borrowed unless documented otherwise. An argument that is checked may be null or of another
/// type: the check reports it.
class TAVREN_CAPTURE_EXPORT Media_Helper {
public:
  /// The class cannot be instantiated: all its functions are static.
  Media_Helper() = delete;

  /// @defgroup argument_checks Argument checks
  /// Check arguments and report what is wrong with them.
  ///
  /// Each function returns if the argument is valid and throws otherwise. The message is the
  /// description with a fixed text appended. The reference counts of the objects do not change.
  ///
  /// @snippet examples/operations/elements.cpp argument_checks
  /// @{

  /// Checks that a pointer is an element of any subclass.
  /// @param element (nullable) the pointer to check.
  /// @param description how the message refers to it.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` if null or not an element.
  /// Any thread.
  static void is_element_or_throw(GstElement *element, const std::string &description);

  /// Checks that a pointer is a pad of any subclass.
  /// @param pad (nullable) the pointer to check.
  /// @param description how the message refers to it.
  /// @throws Backend_Error<std::runtime_error> `NOT_A_PAD` if null or not a pad. Any thread.
  static void is_pad_or_throw(GstPad *pad, const std::string &description);

  /// Checks that a pointer is a bin of any subclass, such as a pipeline.
  /// @param bin (nullable) the pointer to check.
  /// @param description how the message refers to it.
  /// @throws Backend_Error<std::runtime_error> `NOT_A_BIN` if null or not a bin. Any thread.
  static void is_bin_or_throw(GstBin *bin, const std::string &description);

  /// Checks that a pointer is a bus.
  /// @param bus (nullable) the pointer to check.
  /// @param description how the message refers to it.
  /// @throws Backend_Error<std::runtime_error> `NOT_A_BUS` if null or not a bus. Any thread.
  static void is_bus_or_throw(GstBus *bus, const std::string &description);

  /// Checks that a pointer is caps.
  /// @param caps (nullable) the pointer to check; if not null, it must be a mini-object.
  /// @param description how the message refers to it.
  /// @throws Backend_Error<std::runtime_error> `NOT_CAPS` if null or not caps. Any thread.
  static void is_caps_or_throw(GstCaps *caps, const std::string &description);

  /// Checks that an element type is not 0. Unregistered types pass.
  /// @param element_type the type to check.
  /// @param description how the message refers to it.
  /// @throws Backend_Error<std::runtime_error> `INVALID_ELEMENT_TYPE` if it is 0. Any thread.
  static void is_valid_element_type_or_throw(GType element_type, const std::string &description);

  /// Checks that GStreamer has been initialised. Only this function may be called before that.
  /// @param message the complete message of the error.
  /// @throws Backend_Error<std::runtime_error> `FRAMEWORK_NOT_INITIALIZED` if it has not.
  /// Any thread.
  static void gst_is_initialized_or_throw(const std::string &message);

  /// @}
  /// @defgroup keyed_lookup Keyed lookup
  /// Look up a string in the caller's table.
  ///
  /// @snippet examples/operations/texts.cpp keyed_lookup
  /// @{

  /// Looks up a string by its key.
  /// @tparam K `MediaType` or `std::string`; other types are not supported.
  /// @param key the key; strings are compared byte by byte.
  /// @param map the strings by key; not changed.
  /// @param message the complete message of the error.
  /// @return a copy of the string, which may be empty.
  /// @throws Backend_Error<std::runtime_error> `KEY_NOT_FOUND` if the map does not contain the key.
  /// Any thread, as long as no other thread changes the map.
  template <typename K>
  static std::string string_from_map_or_throw_(K key, const std::map<K, std::string> &map,
                                               const std::string &message);

  /// @}
  /// @defgroup construction Factories, bins and parsed pipelines
  /// Create elements and pipelines, add elements to bins and find them there.
  ///
  /// @snippet examples/operations/elements.cpp construction
  /// @{

  /// Finds an element factory.
  /// @param name the factory's name.
  /// @return (transfer full) (not nullable) the factory.
  /// @throws Backend_Error<std::runtime_error> `FACTORY_NOT_FOUND` if there is no factory of that
  /// name. Any thread.
  static GstElementFactory *gst_element_factory_find_or_throw(const std::string &name);

  /// Creates an element.
  /// @param factory_name the name of its factory.
  /// @param element_name the element's name; if empty, GStreamer chooses one.
  /// @return (transfer floating) (not nullable) the element.
  /// @throws Backend_Error<std::runtime_error> `ELEMENT_CREATION_FAILED` if there is no such
  /// factory or it fails. Any thread.
  static GstElement *gst_element_factory_make_or_throw(const std::string &factory_name,
                                                       const std::string &element_name);

  /// Creates a pipeline from a description.
  ///
  /// An error from which the parser recovers counts as success: if the description names an unknown
  /// element, the pipeline is created without it.
  /// @param description the pipeline in the syntax of `gst-launch-1.0`. It must come from a trusted
  /// source: GStreamer's parser crashes on some malformed descriptions.
  /// @return (transfer floating) (not nullable) the element that `gst_parse_launch` returns.
  /// @throws Backend_Error<std::runtime_error> `PARSE_LAUNCH_FAILED` if nothing could be created.
  /// Any thread.
  static GstElement *gst_parse_launch_or_throw(const std::string &description);

  /// Gets an element in a bin, or in the bins inside it, by its name.
  /// @param bin (nullable) the bin; checked only for null.
  /// @param name the element's name.
  /// @return (transfer full) (not nullable) the element.
  /// @throws Backend_Error<std::runtime_error> `BIN_IS_NULL` if the bin is null,
  /// `ELEMENT_NOT_IN_BIN` if no element has that name. Any thread.
  static GstElement *gst_bin_get_by_name_or_throw(GstBin *bin, const std::string &name);

  /// Adds an element to a bin, which sinks the element's floating reference.
  ///
  /// If the bin refuses the element and the element has no parent, it has lost exactly one
  /// reference: the floating one if it had one, otherwise one of its owner's. So an element without
  /// an owner does not leak; an owner that wants to keep the element must hold a second reference.
  /// If the element has a parent, or an argument is bad, its reference count does not change.
  /// @param bin the bin.
  /// @param element (transfer floating) the element.
  /// @throws Backend_Error<std::runtime_error> `NOT_A_BIN`, then `NOT_AN_ELEMENT` for bad
  /// arguments; `BIN_ADD_FAILED` if the bin refuses the element: the name is in use, the element
  /// has a parent, or it is the bin itself. Any thread.
  static void gst_bin_add_or_throw(GstBin *bin, GstElement *element);

  /// Creates an element and adds it to a bin; on failure the element is destroyed.
  /// @param factory_name the name of the element's factory.
  /// @param bin the bin, as an element. If it is not a bin, GLib also warns about the cast.
  /// @param element_name the element's name; if empty, GStreamer chooses one.
  /// @return (transfer none) (not nullable) the element, valid as long as it is in the bin.
  /// @throws Backend_Error<std::runtime_error> `NOT_A_BIN` for a bad bin, `ELEMENT_CREATION_FAILED`
  /// as for `gst_element_factory_make_or_throw`, `BIN_ADD_FAILED` if the bin refuses the element.
  /// Any thread.
  static GstElement *create_and_add_element_to_bin(const std::string &factory_name, GstElement *bin,
                                                   const std::string &element_name);

  /// Same as `create_and_add_element_to_bin`, including its messages.
  /// @param factory_name the name of the element's factory.
  /// @param pipeline the pipeline, as an element. If it is not a bin, GLib also warns about the
  /// cast.
  /// @param element_name the element's name; if empty, GStreamer chooses one.
  /// @return (transfer none) (not nullable) the element, valid as long as it is in the pipeline.
  /// @throws Backend_Error<std::runtime_error> as `create_and_add_element_to_bin`. Any thread.
  static GstElement *create_and_add_element_to_pipeline(const std::string &factory_name,
                                                        GstElement *pipeline,
                                                        const std::string &element_name);

  /// @}
  /// @defgroup control State, bus, parent and signals
  /// Start and stop elements, and receive their messages and signals.
  ///
  /// @snippet examples/operations/elements.cpp control
  /// @{

  /// Sets an element's state.
  /// @param element the element.
  /// @param state the new state.
  /// @param context what the caller is doing, appended to the message; may be empty.
  /// @return GStreamer's result, never `GST_STATE_CHANGE_FAILURE`. The function does not wait for
  /// an asynchronous change.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element,
  /// `STATE_CHANGE_FAILED` if the change fails; the element stays in the state in which GStreamer
  /// left it. Any thread except a streaming thread of the element.
  static GstStateChangeReturn gst_element_set_state_or_throw(GstElement *element, GstState state,
                                                             const std::string &context);

  /// Sets an element to the state of its parent.
  /// @param element the element.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element,
  /// `STATE_SYNC_WITH_PARENT_FAILED` if it has no parent or the state change fails. Any thread
  /// except a streaming thread of the element.
  static void gst_element_sync_state_with_parent_or_throw(GstElement *element);

  /// Gets an element's bus.
  /// @param element the element.
  /// @return (transfer full) (not nullable) the bus.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element,
  /// `ELEMENT_HAS_NO_BUS` if it has none. Any thread.
  static GstBus *gst_element_get_bus_or_throw(GstElement *element);

  /// Creates the watch of a bus. The caller must set a callback and attach the watch.
  /// @param bus the bus.
  /// @return (transfer full) (not nullable) the watch, not attached to a main context.
  /// @throws Backend_Error<std::runtime_error> `NOT_A_BUS` for a bad bus,
  /// `BUS_WATCH_CREATION_FAILED` if the bus already has a watch, which GStreamer 1.18 does not
  /// refuse. Any thread.
  static GSource *gst_bus_create_watch_or_throw(GstBus *bus);

  /// Gets an element's parent.
  /// @param element the element.
  /// @return (transfer full) (not nullable) the parent. If it is not an element, it is returned
  /// nevertheless, and GLib warns about the cast.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element,
  /// `ELEMENT_HAS_NO_PARENT` if it has none. Any thread.
  static GstElement *gst_element_get_parent_or_throw(GstElement *element);

  /// Connects a handler to a signal of an element.
  /// @param element the element.
  /// @param signal the signal's name, with its detail if it has one.
  /// @param callback (not nullable) the handler, cast with `G_CALLBACK` from a function of the
  /// signal's type. It must not throw.
  /// @param data (nullable) the last argument of the handler; the caller keeps ownership.
  /// @return the handler's id, never 0.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element,
  /// `SIGNAL_CONNECTION_FAILED` if the element has no such signal. Any thread.
  static gulong g_signal_connect_or_throw(GstElement *element, const std::string &signal,
                                          void (*callback)(), void *data);

  /// @}
  /// @defgroup pads_and_links Pads and links
  /// List pads, link them, and probe the data that passes through them.
  ///
  /// @snippet examples/operations/pads.cpp pads_and_links
  /// @{

  /// Pads, with one reference each.
  using Pad_List = std::vector<boost::intrusive_ptr<GstPad>>;

  /// A GStreamer function that returns an iterator over pads of an element: (transfer full)
  /// (not nullable).
  using Pad_Iterator_Source = GstIterator *(*)(GstElement *);

  /// Lists pads of an element.
  /// @param element the element.
  /// @param iterate_pads (not nullable) creates the iterator over the pads.
  /// @return the pads in the iterator's order. If pads are added or removed during the iteration,
  /// only the pads up to that point: the iteration is not restarted.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element. Any thread.
  static Pad_List get_element_pads(GstElement *element, Pad_Iterator_Source iterate_pads);

  /// Lists the source pads of an element, as `get_element_pads` does.
  /// @param element the element.
  /// @return the source pads.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element. Any thread.
  static Pad_List get_element_src_pads(GstElement *element);

  /// Lists the sink pads of an element, as `get_element_pads` does.
  /// @param element the element.
  /// @return the sink pads.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element. Any thread.
  static Pad_List get_element_sink_pads(GstElement *element);

  /// Links a source pad to an element's "sink" pad without throwing.
  /// @param src_pad (nullable) the source pad; not checked for its type.
  /// @param element (nullable) the element downstream; not checked for its type.
  /// @return true if linked; false if an argument is null, the element has no "sink" pad, or
  /// GStreamer refuses the link. Does not throw. Any thread.
  static bool link_pad_to_element(GstPad *src_pad, GstElement *element) noexcept;

  /// Unlinks a source pad from an element's "sink" pad without throwing.
  /// @param src_pad (nullable) the source pad; not checked for its type.
  /// @param element (nullable) the element downstream; not checked for its type.
  /// @return true if unlinked; false if an argument is null, the element has no "sink" pad, or the
  /// pads were not linked. Does not throw. Any thread.
  static bool unlink_pad_from_element(GstPad *src_pad, GstElement *element) noexcept;

  /// Links an element's "src" pad to a sink pad without throwing.
  /// @param element (nullable) the element upstream; not checked for its type.
  /// @param sink_pad (nullable) the sink pad; not checked for its type.
  /// @return true if linked; false if an argument is null, the element has no "src" pad, or
  /// GStreamer refuses the link. Does not throw. Any thread.
  static bool link_element_to_pad(GstElement *element, GstPad *sink_pad) noexcept;

  /// Links a source pad to an element's "sink" pad.
  /// @param src_pad the source pad.
  /// @param element the element downstream.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT`, then `NOT_A_PAD` for bad
  /// arguments; `STATIC_PAD_NOT_FOUND` if the element has no "sink" pad; `PAD_LINK_FAILED`, with
  /// the reason, if GStreamer refuses the link. Any thread.
  static void link_pad_to_element_or_throw(GstPad *src_pad, GstElement *element);

  /// Links a chain of elements, each to the next.
  ///
  /// Links made before a failure stay. Terminate the list with a null `GstElement *`. If the second
  /// element is null, the list ends there, and it is reported as a bad element.
  /// @param first the first element.
  /// @param second the second element.
  /// @param ... further elements, terminated by null.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT`, with the position counted from 1,
  /// for a bad element, `ELEMENT_LINK_FAILED` if two adjacent elements cannot be linked.
  /// Any thread.
  static void gst_element_link_many_or_throw(GstElement *first, GstElement *second, ...);

  /// Gets a static pad of an element.
  /// @param element the element.
  /// @param name (not nullable) the pad's name.
  /// @return (transfer full) (not nullable) the pad.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element,
  /// `STATIC_PAD_NOT_FOUND` if it has no pad of that name. Any thread.
  static GstPad *gst_element_get_static_pad_or_throw(GstElement *element, const char *name);

  /// Installs a probe on an element's "sink" pad. It stays until it asks to be removed or the pad
  /// is destroyed.
  /// @param element the element.
  /// @param mask the events for which the probe is called.
  /// @param callback (nullable) the probe; it must not throw. May be null only for blocking probes.
  /// @param data (nullable) the last argument of the probe. If the probe could not be added, the
  /// caller keeps ownership; if an idle probe asked to be removed, the data has been freed.
  /// @param destroy_data (nullable) frees the data when the probe is removed.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element,
  /// `STATIC_PAD_NOT_FOUND` if it has no "sink" pad, `PROBE_NOT_ADDED` if GStreamer returns no
  /// identifier, which also happens if an idle probe ran at once and asked to be removed.
  /// Any thread.
  static void add_probe_to_sink_pad_or_throw(GstElement *element, GstPadProbeType mask,
                                             GstPadProbeCallback callback, void *data,
                                             GDestroyNotify destroy_data);

  /// @}
  /// @defgroup tee_branches Tee branches
  /// Add branches to a tee, even while it is running.
  ///
  /// @snippet examples/operations/pads.cpp tee_branches
  /// @{

  /// Requests a new source pad from a tee, or from any element with a "src_%u" request template.
  /// @param tee the tee.
  /// @return (transfer full) (not nullable) the pad. To remove the branch, release the pad with
  /// `gst_element_release_request_pad` and then drop the reference.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element,
  /// `TEE_HAS_NO_SRC_PAD_TEMPLATE` if its class has no "src_%u" template,
  /// `TEE_SRC_PAD_REQUEST_FAILED` if it does not return a pad. Any thread.
  static GstPad *get_tee_src_pad(GstElement *tee);

  /// Adds a branch to a tee: requests a source pad and links it to an element's "sink" pad.
  ///
  /// The function keeps no reference to the pad: the tee owns it. If the link fails, the pad is
  /// released.
  /// @param tee the tee.
  /// @param element the first element of the branch.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element, the tee first;
  /// the codes of `get_tee_src_pad`; `TEE_LINK_FAILED` if the element has no "sink" pad or
  /// GStreamer refuses the link. Any thread.
  static void link_tee_to_element(GstElement *tee, GstElement *element);

  /// @}
  /// @defgroup multiqueue_pads Multiqueue pads
  /// Add streams to a multiqueue, and find the other pad of a stream.
  ///
  /// @snippet examples/operations/pads.cpp multiqueue_pads
  /// @{

  /// Finds the partner of a multiqueue's pad: sink_0 for src_0, src_0 for sink_0.
  /// @param multiqueue_pad the pad.
  /// @return (transfer full) (not nullable) the partner.
  /// @throws Backend_Error<std::runtime_error> `NOT_A_PAD` for a bad pad,
  /// `MULTIQUEUE_PAD_HAS_NO_PARENT` if it belongs to no element, `NOT_A_MULTIQUEUE_PAD_NAME` if its
  /// name does not begin with "src" or "sink" according to its direction, `STATIC_PAD_NOT_FOUND` if
  /// the partner does not exist.
  /// @throws std::out_of_range for pads named "src" or "sink", which have no number. Any thread.
  static GstPad *get_corresponding_multiqueue_pad(GstPad *multiqueue_pad);

  /// Requests a new stream from a multiqueue.
  ///
  /// If the partner is not found, the requested sink pad stays on the multiqueue. The code that
  /// catches the exception, of either class, must clean up.
  /// @param multiqueue the multiqueue.
  /// @param name the sink pad's name, "sink_" and a number; if empty, the multiqueue chooses the
  /// number.
  /// @param caps (nullable) the caps of the request, passed on unchanged.
  /// @return (transfer full) (not nullable) the sink pad, to be released with
  /// `gst_element_release_request_pad` and then unreferenced when the stream ends; and
  /// (transfer full) (not nullable) its partner, the source pad.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element,
  /// `MULTIQUEUE_HAS_NO_SINK_PAD_TEMPLATE` if its class has no "sink_%u" template,
  /// `MULTIQUEUE_SINK_PAD_REQUEST_FAILED` if it does not return a pad, and the codes of
  /// `get_corresponding_multiqueue_pad`.
  /// @throws std::out_of_range as for `get_corresponding_multiqueue_pad`. Any thread.
  static std::pair<GstPad *, GstPad *>
  request_new_multiqueue_pads(GstElement *multiqueue, std::string name, const GstCaps *caps);

  /// @}
  /// @defgroup peers_and_ancestry Peers and ancestry
  /// Find the peers and the ancestors of an element.
  ///
  /// @snippet examples/operations/elements.cpp peers_and_ancestry
  /// @{

  /// Gets the pad linked to an element's "sink" pad.
  /// @param element the element.
  /// @return (transfer full) (not nullable) the peer pad.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element,
  /// `STATIC_PAD_NOT_FOUND` if it has no "sink" pad, `SINK_PAD_NOT_LINKED` if that pad is not
  /// linked, `SINK_PAD_HAS_NO_PEER` if it was unlinked during the call. Any thread.
  static GstPad *get_element_sink_peer_pad_or_throw(GstElement *element);

  /// Gets the element whose pad is linked to an element's "sink" pad.
  /// @param element the element.
  /// @return (transfer full) (not nullable) the element upstream.
  /// @throws Backend_Error<std::runtime_error> the codes of `get_element_sink_peer_pad_or_throw`;
  /// `NOT_AN_ELEMENT` also if the peer pad belongs to no element. Any thread.
  static GstElement *get_element_sink_peer_or_throw(GstElement *element);

  /// Gets the outermost ancestor of an element.
  /// @param element the element.
  /// @return (transfer full) (nullable) the ancestor; null if the element has no parent.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element. Any thread.
  static GstElement *get_most_parent(GstElement *element);

  /// Checks that an element's outermost ancestor, or the element itself if it has no parent, is the
  /// expected one.
  /// @param element the element.
  /// @param expected_top_parent the expected ancestor.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element,
  /// `TOP_PARENT_MISMATCH` if it is a different element: of the first kind if the element has no
  /// parent, of the second kind if it has one. Any thread.
  static void verify_element_top_parent(GstElement *element, GstElement *expected_top_parent);

  /// @}
  /// @defgroup media_types Media types
  /// Distinguish media types.
  ///
  /// @snippet examples/operations/media.cpp media_types
  /// @{

  /// Gets the media type that caps describe.
  /// @param caps the caps.
  /// @return the media type; `UNKNOWN` for EMPTY caps, ANY caps, caps whose structures have
  /// different names (even of the same media type, such as "video/mpeg" and "video/x-divx"), and
  /// unsupported names.
  /// @throws Backend_Error<std::runtime_error> `NOT_CAPS` for bad caps. Any thread.
  static MediaType get_media_type(GstCaps *caps);

  /// Gets the name of a media type.
  /// @param type the media type.
  /// @return the name of the enumerator; "UNKNOWN" for any other value. Any thread.
  static std::string get_media_type_string(MediaType type);

  /// Checks whether a media type is video. JPEG is video.
  /// @param type the media type.
  /// @param include_raw whether raw video counts.
  /// @return true if it is. Does not throw. Any thread.
  static bool is_video(MediaType type, bool include_raw) noexcept;

  /// Checks whether a media type is audio. Mu-law is audio, RTP is not.
  /// @param type the media type.
  /// @param include_raw whether raw audio counts.
  /// @return true if it is. Does not throw. Any thread.
  static bool is_audio(MediaType type, bool include_raw) noexcept;

  /// @}
  /// @defgroup element_selection Element selection
  /// Select the element for a file or a media type.
  ///
  /// Each function returns the name of an element factory and creates nothing.
  ///
  /// @snippet examples/operations/media.cpp element_selection
  /// @{

  /// Selects the muxer for a file by its extension: .mkv, .mp4, .avi or .mov.
  /// @param filename the file's name or path; the extension is case-sensitive.
  /// @return the factory's name.
  /// @throws Backend_Error<std::runtime_error> `KEY_NOT_FOUND` for any other extension or none.
  /// Any thread.
  static std::string select_muxer(const std::string &filename);

  /// Selects the demuxer for a file by its extension: .mkv.
  /// @param filename the file's name or path; the extension is case-sensitive.
  /// @return the factory's name.
  /// @throws Backend_Error<std::runtime_error> `KEY_NOT_FOUND` for any other extension or none.
  /// Any thread.
  static std::string select_demuxer(const std::string &filename);

  /// Selects the parser for a media type.
  /// @param type the media type.
  /// @return the factory's name; "identity" for a media type that needs no parser.
  /// @throws Backend_Error<std::runtime_error> `KEY_NOT_FOUND` for a media type without one.
  /// Any thread.
  static std::string select_parser(MediaType type);

  /// Selects the decoder for a media type.
  /// @param type the media type.
  /// @return the factory's name.
  /// @throws Backend_Error<std::runtime_error> `KEY_NOT_FOUND` for a media type without one.
  /// Any thread.
  static std::string select_decoder(MediaType type);

  /// Selects the RTP payloader for a media type.
  /// @param type the media type.
  /// @return the factory's name.
  /// @throws Backend_Error<std::runtime_error> `KEY_NOT_FOUND` for a media type without one.
  /// Any thread.
  static std::string select_payloader(MediaType type);

  /// Selects the element that adapts the frame rate of a video type.
  /// @param type the media type.
  /// @return the factory's name; "identity" for a media type whose frame rate is not changed. The
  /// element for H.264 is part of the wider system: look it up in the registry before creating it.
  /// @throws Backend_Error<std::runtime_error> `KEY_NOT_FOUND` for a media type without one.
  /// Any thread.
  static std::string select_video_rate(MediaType type);

  /// @}
  /// @defgroup proxy_selection RTP proxy selection
  /// Select the elements that depayload an RTP stream and payload it again.
  ///
  /// @snippet examples/operations/media.cpp proxy_selection
  /// @{

  /// Selects the depayloader that accepts a stream's RTP caps and the matching payloader.
  ///
  /// Every depayloader that is examined keeps one more reference to its factory. Factories live as
  /// long as the process.
  /// @param caps (not nullable) the complete RTP caps of the stream; not checked.
  /// @return the factory names of the depayloader and the payloader.
  /// @throws Backend_Error<std::runtime_error> `FACTORY_NOT_FOUND` if one of the six depayloaders
  /// is missing and none before it accepts the caps; `NO_PROXY_ELEMENTS_FOR_CAPS` if none accepts
  /// the caps. Any thread.
  static std::pair<std::string, std::string> select_proxy_elements(const GstCaps *caps);

  /// @}
  /// @defgroup media_discovery Media discovery
  /// Inspect a media file or stream.
  ///
  /// @snippet examples/operations/media.cpp media_discovery
  /// @{

  /// Inspects a media file or stream and waits for the result.
  /// @param uri the URI, passed on unchanged. Convert file paths to URIs first.
  /// @param timeout how long to wait in ns, passed on unchanged. GStreamer accepts 1 s to 1 h. It
  /// ignores any other value except `GST_CLOCK_TIME_NONE`, with a warning from GLib, and waits
  /// 15 s. The call takes longer if a source blocks while it is opened, as a FIFO does until it has
  /// a writer.
  /// @return (not nullable) the result; the caller is its only owner. Rarely, a stream of an RTSP
  /// server is missing if two streams begin at almost the same time: GStreamer's discoverer may
  /// finish before it knows the second one. Call again if a stream is expected.
  /// @throws Backend_Error<std::runtime_error> `DISCOVERER_CREATION_FAILED` if no discoverer can be
  /// created, for example because the timeout is `GST_CLOCK_TIME_NONE` (which GStreamer 1.18
  /// ignores too); `DISCOVERY_FAILED` if it returns nothing at all; `DISCOVERER_RETURNED_ERROR`,
  /// with its result, if it returns an error. Any thread.
  static std::unique_ptr<Media_Info> get_media_info(const std::string &uri,
                                                    const GstClockTime &timeout);

  /// Gets the name of a discovery result.
  /// @param result the result.
  /// @return the name of the enumerator; "UNKNOWN" for any other value. Any thread.
  static std::string gst_discoverer_result_to_string(const GstDiscovererResult &result);

  /// @}
  /// @defgroup caps_readers Caps readers
  /// Read single fields from caps, and compare caps and sizes.
  ///
  /// Only the first structure of the caps is read. EMPTY and ANY caps have no structures: nothing
  /// is read from them, and GLib warns as well.
  ///
  /// @snippet examples/operations/media.cpp caps_readers
  /// @{

  /// Reads the frame rate.
  /// @param caps the caps.
  /// @return numerator and denominator, both greater than 0.
  /// @throws Backend_Error<std::runtime_error> `NOT_CAPS` for bad caps, `CAPS_WITHOUT_FRAMERATE` if
  /// there is no single fraction, `INVALID_FRAMERATE` if it is 0 or negative. Any thread.
  static std::pair<long long, long long> get_framerate_from_caps(GstCaps *caps);

  /// Reads the picture size.
  /// @param caps the caps.
  /// @return width and height in pixels, both greater than 0.
  /// @throws Backend_Error<std::runtime_error> `NOT_CAPS` for bad caps, `CAPS_WITHOUT_RESOLUTION`
  /// if a side is missing or not a single integer, `INVALID_CAPS_RESOLUTION` if a side is 0 or
  /// negative. Any thread.
  static std::pair<unsigned long long, unsigned long long> get_resolution_from_caps(GstCaps *caps);

  /// Reads the RTP encoding name.
  /// @param caps the caps.
  /// @return the name; empty if there is none.
  /// @throws Backend_Error<std::runtime_error> `NOT_CAPS` for bad caps. Any thread.
  static std::string get_encoding_name_from_caps(GstCaps *caps);

  /// Computes the largest resolution with the aspect ratio of the source that fits into the bounds.
  ///
  /// One side is that of the bounds; the other is truncated to whole pixels, and saturates if it
  /// would overflow. The result may be larger than the source.
  /// @param bounds width and height of the bounds in pixels.
  /// @param source width and height of the source in pixels.
  /// @return width and height in pixels; a side may be 0.
  /// @throws Tavren_Error<std::logic_error> `INVALID_RESOLUTION` if one of the four numbers is 0.
  /// Any thread.
  static std::pair<unsigned long long, unsigned long long>
  calculate_resolution(std::pair<unsigned long long, unsigned long long> bounds,
                       std::pair<unsigned long long, unsigned long long> source);

  /// Checks whether two lists contain equal caps in any order.
  /// @param first_list the first list, without null handles.
  /// @param second_list the second list, without null handles.
  /// @return true if the caps of the lists can be paired one to one. Any thread.
  static bool caps_equal(std::vector<boost::intrusive_ptr<GstCaps>> first_list,
                         std::vector<boost::intrusive_ptr<GstCaps>> second_list);

  /// @}
  /// @defgroup element_types Element types
  /// Find the type with which to search for elements.
  ///
  /// @snippet examples/operations/elements.cpp element_types
  /// @{

  /// Gets the type of the elements that a factory creates, and loads its plugin.
  /// @param factory_name the factory's name.
  /// @return the type, a `GType`; never 0.
  /// @throws Backend_Error<std::runtime_error> `FACTORY_NOT_FOUND` if there is no factory of that
  /// name, `FACTORY_NOT_LOADED` if its plugin cannot be loaded, `FACTORY_HAS_NO_ELEMENT_TYPE` if
  /// the loaded factory has no type. Any thread.
  static unsigned long long get_element_type(const std::string &factory_name);

  /// @}
  /// @defgroup bin_search Bin search
  /// Find elements in a bin by type and caps.
  ///
  /// The searches examine the elements of a bin and of the bins inside it, but not the bin itself.
  /// Types are compared exactly: a subclass does not match. Finding nothing is not an error.
  ///
  /// @snippet examples/operations/elements.cpp bin_search
  /// @{

  /// The search criteria of `caps_compare_func`.
  struct FindElementCapsTypeHelper {
    unsigned long long element_type;  ///< the exact type of the element, a `GType`
    GstCaps *caps;                    ///< (transfer none) the caps to match
  };

  /// Finds the first element of a given type whose caps are a subset of the given caps.
  ///
  /// The caps of an appsink are those set on it; without them it does not match. The caps of any
  /// other element are those of its pad "sink", whatever its direction: the current caps, or
  /// otherwise the caps that the peer can send, or ANY if the pad is not linked. An element without
  /// such a pad does not match. ANY is a subset only of ANY; EMPTY is a subset of all caps.
  /// @param bin the bin.
  /// @param element_type the exact type, a `GType`.
  /// @param caps the caps to match.
  /// @return (transfer full) (nullable) the element; null if there is none.
  /// @throws Backend_Error<std::runtime_error> `NOT_A_BIN`, `INVALID_ELEMENT_TYPE`, `NOT_CAPS` for
  /// bad arguments, in this order. Any thread; the search restarts if the bin changes.
  static GstElement *find_element_with_caps_and_type(GstBin *bin, unsigned long long element_type,
                                                     GstCaps *caps);

  /// Finds the first tee whose caps match, as in `find_element_with_caps_and_type`.
  /// @param bin the bin.
  /// @param caps the caps to match.
  /// @return (transfer full) (nullable) the tee; null if there is none.
  /// @throws Backend_Error<std::runtime_error> the codes of `get_element_type` for "tee", then
  /// those of `find_element_with_caps_and_type`. Any thread.
  static GstElement *find_tee_with_caps(GstBin *bin, GstCaps *caps);

  /// Finds the first appsink whose caps match, as in `find_element_with_caps_and_type`.
  /// @param bin the bin.
  /// @param caps the caps to match.
  /// @return (transfer full) (nullable) the appsink; null if there is none.
  /// @throws Backend_Error<std::runtime_error> the codes of `get_element_type` for "appsink", then
  /// those of `find_element_with_caps_and_type`. Any thread.
  static GstElement *find_appsink_with_caps(GstBin *bin, GstCaps *caps);

  /// Finds all appsinks.
  /// @param bin the bin.
  /// @return the appsinks in the order of iteration, with one reference each. If the bin changes
  /// during the iteration, only the appsinks up to that point: the iteration is not restarted.
  /// @throws Backend_Error<std::runtime_error> `NOT_A_BIN` for a bad bin, then the codes of
  /// `get_element_type` for "appsink". Any thread.
  static std::vector<boost::intrusive_ptr<GstElement>> find_all_appsinks(GstBin *bin);

  /// Checks whether a bin contains an element of a given type.
  /// @param bin the bin.
  /// @param element_type the exact type, a `GType`.
  /// @return true if it does.
  /// @throws Backend_Error<std::runtime_error> `NOT_A_BIN`, then `INVALID_ELEMENT_TYPE` for bad
  /// arguments. Any thread; the search restarts if the bin changes.
  static bool bin_has_element_type(GstBin *bin, unsigned long long element_type);

  /// Checks whether an element is of a given type and its caps match.
  /// @param value (not nullable) a value that holds the element.
  /// @param wanted (not nullable) the type and the caps.
  /// @return 0 if it matches, -1 if it does not. Does not throw. Any thread.
  static int caps_compare_func(const GValue *value, FindElementCapsTypeHelper *wanted) noexcept;

  /// Checks whether an element is of a given type.
  /// @param value (not nullable) a value that holds the element.
  /// @param wanted_type (not nullable) the exact type, a `GType`.
  /// @return 0 if it is, -1 if it is not. Does not throw. Any thread.
  static int type_compare_func(const GValue *value, unsigned long long *wanted_type) noexcept;

  /// @}
  /// @defgroup enumeration_names Enumeration names
  /// Convert GStreamer's enumerations to strings for logs.
  ///
  /// @snippet examples/operations/texts.cpp enumeration_names
  /// @{

  /// Gets the name of a state.
  /// @param state the state.
  /// @return the name of the enumerator; "UNKNOWN" for any other value. Any thread.
  static std::string gst_state_to_string(GstState state);

  /// Gets the name of a change between adjacent states.
  /// @param change the change.
  /// @return the name of the enumerator; "UNKNOWN" for any other change. Any thread.
  static std::string gst_state_change_to_string(GstStateChange change);

  /// Explains the result of a state change.
  /// @param result the result.
  /// @return its name and meaning, or a fixed text for any other value. Any thread.
  static std::string gst_enum_message(GstStateChangeReturn result);

  /// Explains the result of a link.
  /// @param result the result.
  /// @return its name and meaning, or a fixed text for any other value. Any thread.
  static std::string gst_enum_message(GstPadLinkReturn result);

  /// Explains a state.
  /// @param state the state.
  /// @return its name and meaning, or a fixed text for any other value and for `GST_STATE_PAUSED`.
  /// Any thread.
  static std::string gst_enum_message(GstState state);

  /// Gets the name of a message type.
  /// @param type a single type.
  /// @return the name of the enumerator, or a fixed text for any other value. Any thread.
  static std::string gst_enum_message(GstMessageType type);

  /// @}
  /// @defgroup time_and_segment_text Time and segment text
  /// Format times for logs, independently of the locale.
  ///
  /// @snippet examples/operations/texts.cpp time_and_segment_text
  /// @{

  /// Formats a time as hours, minutes, seconds and nanoseconds: 1:02:03.000000001.
  /// @param time the time in ns; `GST_CLOCK_TIME_NONE` is formatted as 99:99:99.999999999.
  /// @return the text. Any thread.
  static std::string gst_time_to_string(GstClockTime time);

  /// Formats a segment in time format as one line.
  /// @param segment (nullable) the segment.
  /// @return the text; a fixed text for null and for another format. Any thread, as long as no
  /// other thread changes the segment.
  static std::string gst_segment_to_string(const GstSegment *segment);

  /// @}
  /// @defgroup queue_report Queue report
  /// Format the fill level of a queue for logs, independently of the locale.
  ///
  /// @snippet examples/operations/texts.cpp queue_report
  /// @{

  /// Formats the fill level of a queue as one line: buffers, bytes, whole seconds.
  /// @param queue (nullable) the queue; its type is not checked. Its levels may have any integer
  /// type.
  /// @return the text; a fixed text for null. From the first level that the element does not have,
  /// all levels are 0, and GLib warns. Empty if the element has no name. Any thread.
  static std::string generate_queue_stats_report(GstElement *queue);

  /// @}
};

// Instantiated once, in the library.
extern template TAVREN_CAPTURE_EXPORT std::string
Media_Helper::string_from_map_or_throw_(MediaType, const std::map<MediaType, std::string> &,
                                        const std::string &);
extern template TAVREN_CAPTURE_EXPORT std::string
Media_Helper::string_from_map_or_throw_(std::string, const std::map<std::string, std::string> &,
                                        const std::string &);

}  // namespace kel::tavren::capture

#endif
