/// @file
/// The library's one class, and with it everything that a caller needs: errors, handles, the
/// scope-exit guard, media kinds.

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

/// Checked helpers over the media framework.
///
/// Wherever the framework reports a failure by a null, a false or an enumerated value, a function
/// here throws `Backend_Error<std::runtime_error>` with the failure's code and a message that names
/// what failed. A bad argument is reported by the code of its check (`NOT_AN_ELEMENT` and so on),
/// never by the operation's own. Whatever an operation fetches for its own use is given back before
/// it returns or throws; objects handed in keep the reference counts they had, except where an
/// operation says otherwise. A function that names no code throws none; every function may also
/// throw `std::bad_alloc`, unless it says that it does not throw.
///
/// There is no state: every function runs to completion on the caller's thread and takes no lock of
/// its own. "Any thread" below means that a function may run on any number of threads at once, on
/// the same objects too, as far as the framework allows it for the objects handed in. The framework
/// must have been initialised.
///
/// In the comments, (transfer full) is a reference that the caller owns and must give back,
/// (transfer floating) one that the first owner takes over, (transfer none) a borrowed pointer.
/// Arguments are borrowed unless they say otherwise. An argument that is checked may be null or of
/// another type: that is what the check reports.
class TAVREN_CAPTURE_EXPORT Media_Helper {
public:
  /// There are no objects of this class: all its functions are static.
  Media_Helper() = delete;

  /// @defgroup argument_checks Argument checks
  /// Say in one line what is wrong with an argument.
  ///
  /// Each returns when the argument is good and throws otherwise; the message is the description
  /// with a fixed text appended. The objects' reference counts do not change.
  /// @{

  /// Checks that a pointer is an element, of whatever subclass.
  /// @param element (nullable) the pointer to check.
  /// @param description what the message calls it.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` when null or not an element.
  /// Any thread.
  static void is_element_or_throw(GstElement *element, const std::string &description);

  /// Checks that a pointer is a pad, of whatever subclass.
  /// @param pad (nullable) the pointer to check.
  /// @param description what the message calls it.
  /// @throws Backend_Error<std::runtime_error> `NOT_A_PAD` when null or not a pad. Any thread.
  static void is_pad_or_throw(GstPad *pad, const std::string &description);

  /// Checks that a pointer is a bin, of whatever subclass: a pipeline is one.
  /// @param bin (nullable) the pointer to check.
  /// @param description what the message calls it.
  /// @throws Backend_Error<std::runtime_error> `NOT_A_BIN` when null or not a bin. Any thread.
  static void is_bin_or_throw(GstBin *bin, const std::string &description);

  /// Checks that a pointer is a bus.
  /// @param bus (nullable) the pointer to check.
  /// @param description what the message calls it.
  /// @throws Backend_Error<std::runtime_error> `NOT_A_BUS` when null or not a bus. Any thread.
  static void is_bus_or_throw(GstBus *bus, const std::string &description);

  /// Checks that a pointer is caps.
  /// @param caps (nullable) the pointer to check; a mini-object of any kind when not null.
  /// @param description what the message calls it.
  /// @throws Backend_Error<std::runtime_error> `NOT_CAPS` when null or not caps. Any thread.
  static void is_caps_or_throw(GstCaps *caps, const std::string &description);

  /// Checks that an element type is not 0; a type that nobody registered passes.
  /// @param element_type the type to check.
  /// @param description what the message calls it.
  /// @throws Backend_Error<std::runtime_error> `INVALID_ELEMENT_TYPE` when it is 0. Any thread.
  static void is_valid_element_type_or_throw(GType element_type, const std::string &description);

  /// Checks that the framework has been initialised; the one function to call before that.
  /// @param message the whole message of the error.
  /// @throws Backend_Error<std::runtime_error> `FRAMEWORK_NOT_INITIALIZED` when it has not.
  /// Any thread.
  static void gst_is_initialized_or_throw(const std::string &message);

  /// @}
  /// @defgroup keyed_lookup Keyed lookup
  /// Look a text up in a table of the caller's.
  /// @{

  /// Looks a text up by its key.
  /// @tparam K `MediaType` or `std::string`; there are no others.
  /// @param key the key; text is compared byte by byte.
  /// @param map the texts by key; not changed.
  /// @param message the whole message of the error.
  /// @return a copy of the text, which may be empty.
  /// @throws Backend_Error<std::runtime_error> `KEY_NOT_FOUND` when the key has no text. Any
  /// thread, while nobody changes the map.
  template <typename K>
  static std::string string_from_map_or_throw_(K key, const std::map<K, std::string> &map,
                                               const std::string &message);

  /// @}
  /// @defgroup construction Factories, bins and parsed pipelines
  /// Make elements and pipelines, put elements into bins and find them there.
  /// @{

  /// Finds an element factory.
  /// @param name the factory's name.
  /// @return (transfer full) (not nullable) the factory.
  /// @throws Backend_Error<std::runtime_error> `FACTORY_NOT_FOUND` when there is none of that name.
  /// Any thread.
  static GstElementFactory *gst_element_factory_find_or_throw(const std::string &name);

  /// Makes an element.
  /// @param factory_name the name of its factory.
  /// @param element_name the element's name; empty lets the framework choose one.
  /// @return (transfer floating) (not nullable) the element.
  /// @throws Backend_Error<std::runtime_error> `ELEMENT_CREATION_FAILED` when there is no such
  /// factory or it fails. Any thread.
  static GstElement *gst_element_factory_make_or_throw(const std::string &factory_name,
                                                       const std::string &element_name);

  /// Makes a pipeline from its description.
  ///
  /// An error from which the parser recovers counts as success: of a description that names an
  /// unknown element, what is left without it is made.
  /// @param description the pipeline in the syntax of `gst-launch-1.0`, from a source that is
  /// trusted: the framework's parser does not survive every malformed one.
  /// @return (transfer floating) (not nullable) what `gst_parse_launch` returns, with the reference
  /// it returns.
  /// @throws Backend_Error<std::runtime_error> `PARSE_LAUNCH_FAILED` when nothing could be made.
  /// Any thread.
  static GstElement *gst_parse_launch_or_throw(const std::string &description);

  /// Gets an element of a bin, or of the bins inside it, by its name.
  /// @param bin (nullable) the bin; tested for null only.
  /// @param name the element's name.
  /// @return (transfer full) (not nullable) the element.
  /// @throws Backend_Error<std::runtime_error> `BIN_IS_NULL` when the bin is null,
  /// `ELEMENT_NOT_IN_BIN` when no element has the name. Any thread.
  static GstElement *gst_bin_get_by_name_or_throw(GstBin *bin, const std::string &name);

  /// Adds an element to a bin, which takes over the element's floating reference.
  ///
  /// When the bin refuses, an element without a parent has lost exactly one reference: the floating
  /// one if it had one, else one that its owner held. So an element that nobody took over does not
  /// leak, and an owner that wants to keep it holds a second reference. An element that has a
  /// parent keeps its count, and so does every element when an argument is bad.
  /// @param bin the bin.
  /// @param element (transfer floating) the element.
  /// @throws Backend_Error<std::runtime_error> `NOT_A_BIN`, then `NOT_AN_ELEMENT` for bad
  /// arguments; `BIN_ADD_FAILED` when the bin refuses: the name is taken, the element has a parent,
  /// or it is the bin itself. Any thread.
  static void gst_bin_add_or_throw(GstBin *bin, GstElement *element);

  /// Makes an element and adds it to a bin; on failure nothing is left of it.
  /// @param factory_name the name of the element's factory.
  /// @param bin the bin, as an element. One that is no bin draws GLib's warning about the cast too.
  /// @param element_name the element's name; empty lets the framework choose one.
  /// @return (transfer none) (not nullable) the element, valid while the bin holds it.
  /// @throws Backend_Error<std::runtime_error> `NOT_A_BIN` for a bad bin, `ELEMENT_CREATION_FAILED`
  /// as `gst_element_factory_make_or_throw`, `BIN_ADD_FAILED` when the bin refuses. Any thread.
  static GstElement *create_and_add_element_to_bin(const std::string &factory_name, GstElement *bin,
                                                   const std::string &element_name);

  /// `create_and_add_element_to_bin` under a second name, messages included.
  /// @param factory_name the name of the element's factory.
  /// @param pipeline the pipeline, as an element. One that is no bin draws GLib's warning about the
  /// cast too.
  /// @param element_name the element's name; empty lets the framework choose one.
  /// @return (transfer none) (not nullable) the element, valid while the pipeline holds it.
  /// @throws Backend_Error<std::runtime_error> as `create_and_add_element_to_bin`. Any thread.
  static GstElement *create_and_add_element_to_pipeline(const std::string &factory_name,
                                                        GstElement *pipeline,
                                                        const std::string &element_name);

  /// @}
  /// @defgroup control State, bus, parent and signals
  /// Start and stop elements, and hear from them.
  /// @{

  /// Sets an element's state.
  /// @param element the element.
  /// @param state the state to go to.
  /// @param context what the caller was doing, for the end of the message; may be empty.
  /// @return the framework's answer, never `GST_STATE_CHANGE_FAILURE`; an asynchronous change is
  /// not waited for.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element,
  /// `STATE_CHANGE_FAILED` when the change fails; the element stays where the framework left it.
  /// Any thread, but not a streaming thread of the element.
  static GstStateChangeReturn gst_element_set_state_or_throw(GstElement *element, GstState state,
                                                             const std::string &context);

  /// Brings an element to the state of its parent.
  /// @param element the element.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element,
  /// `STATE_SYNC_WITH_PARENT_FAILED` when it has no parent or cannot follow it. Any thread, but not
  /// a streaming thread of the element.
  static void gst_element_sync_state_with_parent_or_throw(GstElement *element);

  /// Gets an element's bus.
  /// @param element the element.
  /// @return (transfer full) (not nullable) the bus.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element,
  /// `ELEMENT_HAS_NO_BUS` when it has none. Any thread.
  static GstBus *gst_element_get_bus_or_throw(GstElement *element);

  /// Makes the watch of a bus; attaching it and giving it a callback is the caller's business.
  /// @param bus the bus.
  /// @return (transfer full) (not nullable) the watch, not attached to a main context.
  /// @throws Backend_Error<std::runtime_error> `NOT_A_BUS` for a bad bus,
  /// `BUS_WATCH_CREATION_FAILED` when the bus has a watch already, which GStreamer 1.18 does not
  /// refuse. Any thread.
  static GSource *gst_bus_create_watch_or_throw(GstBus *bus);

  /// Gets an element's parent.
  /// @param element the element.
  /// @return (transfer full) (not nullable) the parent. One that is not an element is returned too,
  /// with GLib's warning about the cast.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element,
  /// `ELEMENT_HAS_NO_PARENT` when it has none. Any thread.
  static GstElement *gst_element_get_parent_or_throw(GstElement *element);

  /// Connects a handler to a signal of an element.
  /// @param element the element.
  /// @param signal the signal's name, with its detail if it has one.
  /// @param callback (not nullable) the handler, cast with `G_CALLBACK` from a function of the
  /// signal's own type; it must not let an exception out.
  /// @param data (nullable) what the handler gets as its last argument; stays the caller's.
  /// @return the handler's id, never 0.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element,
  /// `SIGNAL_CONNECTION_FAILED` when the element has no such signal. Any thread.
  static gulong g_signal_connect_or_throw(GstElement *element, const std::string &signal,
                                          void (*callback)(), void *data);

  /// @}
  /// @defgroup pads_and_links Pads and links
  /// List pads, link them, and watch what passes.
  /// @{

  /// Pads, each held by a reference of its own.
  using Pad_List = std::vector<boost::intrusive_ptr<GstPad>>;

  /// A function of the framework that makes an iterator over pads of an element:
  /// (transfer full) (not nullable).
  using Pad_Iterator_Source = GstIterator *(*)(GstElement *);

  /// Lists pads of an element.
  /// @param element the element.
  /// @param iterate_pads (not nullable) what makes the iterator over the pads wanted.
  /// @return the pads in the iterator's order. When pads come or go meanwhile, those seen until
  /// then: the walk is not begun again.
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

  /// Links a source pad to an element's "sink" pad, quietly.
  /// @param src_pad (nullable) the source pad; not checked for its type.
  /// @param element (nullable) the element downstream; not checked for its type.
  /// @return true when linked; false when an argument is null, the element has no "sink" pad, or
  /// the framework refuses. Does not throw. Any thread.
  static bool link_pad_to_element(GstPad *src_pad, GstElement *element) noexcept;

  /// Unlinks a source pad from an element's "sink" pad, quietly.
  /// @param src_pad (nullable) the source pad; not checked for its type.
  /// @param element (nullable) the element downstream; not checked for its type.
  /// @return true when unlinked; false when an argument is null, the element has no "sink" pad, or
  /// the two were not linked. Does not throw. Any thread.
  static bool unlink_pad_from_element(GstPad *src_pad, GstElement *element) noexcept;

  /// Links an element's "src" pad to a sink pad, quietly.
  /// @param element (nullable) the element upstream; not checked for its type.
  /// @param sink_pad (nullable) the sink pad; not checked for its type.
  /// @return true when linked; false when an argument is null, the element has no "src" pad, or the
  /// framework refuses. Does not throw. Any thread.
  static bool link_element_to_pad(GstElement *element, GstPad *sink_pad) noexcept;

  /// Links a source pad to an element's "sink" pad.
  /// @param src_pad the source pad.
  /// @param element the element downstream.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT`, then `NOT_A_PAD` for bad
  /// arguments; `STATIC_PAD_NOT_FOUND` when the element has no "sink" pad; `PAD_LINK_FAILED`, with
  /// the reason, when the framework refuses. Any thread.
  static void link_pad_to_element_or_throw(GstPad *src_pad, GstElement *element);

  /// Links a chain of elements, each to the next.
  ///
  /// Links made before one that fails stay. End the list with a null `GstElement *`; a second
  /// element that is null ends it too, and is reported as a bad element.
  /// @param first the first element.
  /// @param second the second element.
  /// @param ... the elements after it, and the null that ends them.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT`, with the position counted from 1,
  /// for a bad element, `ELEMENT_LINK_FAILED` when two neighbours cannot be linked. Any thread.
  static void gst_element_link_many_or_throw(GstElement *first, GstElement *second, ...);

  /// Gets a static pad of an element.
  /// @param element the element.
  /// @param name (not nullable) the pad's name.
  /// @return (transfer full) (not nullable) the pad.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element,
  /// `STATIC_PAD_NOT_FOUND` when it has no pad of that name. Any thread.
  static GstPad *gst_element_get_static_pad_or_throw(GstElement *element, const char *name);

  /// Installs a probe on an element's "sink" pad; it stays until it asks to be removed or the pad
  /// goes.
  /// @param element the element.
  /// @param mask what the probe is called for.
  /// @param callback (nullable) the probe; it must not let an exception out. Null only for a probe
  /// that blocks.
  /// @param data (nullable) what the probe gets as its last argument; stays the caller's when no
  /// probe could be made, and has been freed when an idle probe asked to be removed.
  /// @param destroy_data (nullable) what frees the data when the probe goes.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element,
  /// `STATIC_PAD_NOT_FOUND` when it has no "sink" pad, `PROBE_NOT_ADDED` when the framework gives
  /// no identifier, also because an idle probe ran at once and asked to be removed. Any thread.
  static void add_probe_to_sink_pad_or_throw(GstElement *element, GstPadProbeType mask,
                                             GstPadProbeCallback callback, void *data,
                                             GDestroyNotify destroy_data);

  /// @}
  /// @defgroup tee_branches Tee branches
  /// Hang branches on a tee, while it runs too.
  /// @{

  /// Requests a new source pad from a tee, or from any element with a "src_%u" request template.
  /// @param tee the tee.
  /// @return (transfer full) (not nullable) the pad. To end the branch, give it back with
  /// `gst_element_release_request_pad` and then drop the reference.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element,
  /// `TEE_HAS_NO_SRC_PAD_TEMPLATE` when its class has no "src_%u" template,
  /// `TEE_SRC_PAD_REQUEST_FAILED` when it gives no pad for it. Any thread.
  static GstPad *get_tee_src_pad(GstElement *tee);

  /// Hangs a branch on a tee: requests a source pad and links it to an element's "sink" pad.
  ///
  /// No reference to the pad is kept: the tee holds it. When the link fails the pad is given back.
  /// @param tee the tee.
  /// @param element the first element of the branch.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element, the tee first;
  /// as `get_tee_src_pad`; `TEE_LINK_FAILED` when the element has no "sink" pad or the framework
  /// refuses the link. Any thread.
  static void link_tee_to_element(GstElement *tee, GstElement *element);

  /// @}
  /// @defgroup multiqueue_pads Multiqueue pads
  /// Lead streams through a multiqueue, and find the other end of one.
  /// @{

  /// Finds the partner of a multiqueue's pad: sink_0 for src_0, src_0 for sink_0.
  /// @param multiqueue_pad the pad.
  /// @return (transfer full) (not nullable) the partner.
  /// @throws Backend_Error<std::runtime_error> `NOT_A_PAD` for a bad pad,
  /// `MULTIQUEUE_PAD_HAS_NO_PARENT` when it belongs to no element, `NOT_A_MULTIQUEUE_PAD_NAME` when
  /// its name does not begin with "src" or "sink", as its direction asks for,
  /// `STATIC_PAD_NOT_FOUND` when the partner is not there.
  /// @throws std::out_of_range for pads named "src" or "sink": there is no suffix to carry over.
  /// Any thread.
  static GstPad *get_corresponding_multiqueue_pad(GstPad *multiqueue_pad);

  /// Requests a new stream from a multiqueue.
  ///
  /// Should the partner not be found, the requested sink pad stays on the multiqueue: whoever
  /// catches that error, of whichever class, cleans up.
  /// @param multiqueue the multiqueue.
  /// @param name the sink pad's name, "sink_" and a number; empty lets the framework number it.
  /// @param caps (nullable) the caps of the request, handed on as they are.
  /// @return (transfer full) (not nullable) the sink pad, to be given back with
  /// `gst_element_release_request_pad` and then dropped when the stream ends; and (transfer full)
  /// (not nullable) its partner, the source pad.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element,
  /// `MULTIQUEUE_HAS_NO_SINK_PAD_TEMPLATE` when its class has no "sink_%u" template,
  /// `MULTIQUEUE_SINK_PAD_REQUEST_FAILED` when it gives no pad for it, and as
  /// `get_corresponding_multiqueue_pad`.
  /// @throws std::out_of_range as `get_corresponding_multiqueue_pad`. Any thread.
  static std::pair<GstPad *, GstPad *>
  request_new_multiqueue_pads(GstElement *multiqueue, std::string name, const GstCaps *caps);

  /// @}
  /// @defgroup peers_and_ancestry Peers and ancestry
  /// Find what an element is linked to and what it belongs to.
  /// @{

  /// Gets the pad linked to an element's "sink" pad.
  /// @param element the element.
  /// @return (transfer full) (not nullable) the peer pad.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element,
  /// `STATIC_PAD_NOT_FOUND` when it has no "sink" pad, `SINK_PAD_NOT_LINKED` when that is not
  /// linked, `SINK_PAD_HAS_NO_PEER` when the link went away meanwhile. Any thread.
  static GstPad *get_element_sink_peer_pad_or_throw(GstElement *element);

  /// Gets the element whose pad is linked to an element's "sink" pad.
  /// @param element the element.
  /// @return (transfer full) (not nullable) the element upstream.
  /// @throws Backend_Error<std::runtime_error> as `get_element_sink_peer_pad_or_throw`;
  /// `NOT_AN_ELEMENT` also when the peer pad belongs to no element. Any thread.
  static GstElement *get_element_sink_peer_or_throw(GstElement *element);

  /// Gets the outermost ancestor of an element.
  /// @param element the element.
  /// @return (transfer full) (nullable) the ancestor; null when the element has no parent.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element. Any thread.
  static GstElement *get_most_parent(GstElement *element);

  /// Checks that an element's outermost ancestor, or the element itself when it has no parent, is
  /// the one expected.
  /// @param element the element.
  /// @param expected_top_parent the ancestor expected.
  /// @throws Backend_Error<std::runtime_error> `NOT_AN_ELEMENT` for a bad element,
  /// `TOP_PARENT_MISMATCH` when it is another: of the first kind when the element has no parent, of
  /// the second kind when it has one. Any thread.
  static void verify_element_top_parent(GstElement *element, GstElement *expected_top_parent);

  /// @}
  /// @defgroup media_types Media types
  /// Tell the kinds of media apart.
  /// @{

  /// Tells the kind of media that caps describe.
  /// @param caps the caps.
  /// @return the kind; `UNKNOWN` for EMPTY caps, ANY caps, structures of several media types (even
  /// of one kind, such as "video/mpeg" and "video/x-divx"), and media types of no kind.
  /// @throws Backend_Error<std::runtime_error> `NOT_CAPS` for bad caps. Any thread.
  static MediaType get_media_type(GstCaps *caps);

  /// Names a kind of media.
  /// @param type the kind.
  /// @return the enumerator's name; "UNKNOWN" for a value outside the list. Any thread.
  static std::string get_media_type_string(MediaType type);

  /// Tells whether a kind is video; JPEG is.
  /// @param type the kind.
  /// @param include_raw whether raw video counts.
  /// @return true when it is. Does not throw. Any thread.
  static bool is_video(MediaType type, bool include_raw) noexcept;

  /// Tells whether a kind is audio; mu-law is, RTP is not.
  /// @param type the kind.
  /// @param include_raw whether raw audio counts.
  /// @return true when it is. Does not throw. Any thread.
  static bool is_audio(MediaType type, bool include_raw) noexcept;

  /// @}
  /// @defgroup element_selection Element selection
  /// Choose the element for a file or for a kind of media.
  ///
  /// Each names an element factory and makes nothing.
  /// @{

  /// Chooses the muxer for a file by its extension: .mkv, .mp4, .avi or .mov.
  /// @param filename the file's name or path; the extension's case counts.
  /// @return the factory's name.
  /// @throws Backend_Error<std::runtime_error> `KEY_NOT_FOUND` for any other extension or none.
  /// Any thread.
  static std::string select_muxer(const std::string &filename);

  /// Chooses the demuxer for a file by its extension: .mkv.
  /// @param filename the file's name or path; the extension's case counts.
  /// @return the factory's name.
  /// @throws Backend_Error<std::runtime_error> `KEY_NOT_FOUND` for any other extension or none.
  /// Any thread.
  static std::string select_demuxer(const std::string &filename);

  /// Chooses the parser for a kind of media.
  /// @param type the kind.
  /// @return the factory's name; "identity" for a kind that needs no parser.
  /// @throws Backend_Error<std::runtime_error> `KEY_NOT_FOUND` for a kind without one. Any thread.
  static std::string select_parser(MediaType type);

  /// Chooses the decoder for a kind of media.
  /// @param type the kind.
  /// @return the factory's name.
  /// @throws Backend_Error<std::runtime_error> `KEY_NOT_FOUND` for a kind without one. Any thread.
  static std::string select_decoder(MediaType type);

  /// Chooses the RTP payloader for a kind of media.
  /// @param type the kind.
  /// @return the factory's name.
  /// @throws Backend_Error<std::runtime_error> `KEY_NOT_FOUND` for a kind without one. Any thread.
  static std::string select_payloader(MediaType type);

  /// Chooses the element that adapts the frame rate of a kind of video.
  /// @param type the kind.
  /// @return the factory's name; "identity" for a kind whose rate is left alone. The element for
  /// H.264 comes with the wider system: look for it in the registry before making it.
  /// @throws Backend_Error<std::runtime_error> `KEY_NOT_FOUND` for a kind without one. Any thread.
  static std::string select_video_rate(MediaType type);

  /// @}
  /// @defgroup proxy_selection RTP proxy selection
  /// Choose the elements that take a stream out of RTP and pack it again.
  /// @{

  /// Chooses the depayloader that takes a stream's RTP caps and the payloader that packs it again.
  ///
  /// Every depayloader that is looked at keeps one reference more to its factory; factories live as
  /// long as the process.
  /// @param caps (not nullable) the complete RTP caps of the stream; not checked.
  /// @return the names of the depayloader's and of the payloader's factory.
  /// @throws Backend_Error<std::runtime_error> `FACTORY_NOT_FOUND` when one of the six depayloaders
  /// is missing, whatever the caps; `NO_PROXY_ELEMENTS_FOR_CAPS` when none takes them. Any thread.
  static std::pair<std::string, std::string> select_proxy_elements(const GstCaps *caps);

  /// @}
  /// @defgroup media_discovery Media discovery
  /// Find out what a file or stream holds.
  /// @{

  /// Finds out what a media file or stream holds, waiting for the answer.
  /// @param uri the URI, handed on as it is; a file's path must have been made one.
  /// @param timeout how long to wait in ns, handed on as it is. The framework takes 1 s to 1 h; any
  /// other value but `GST_CLOCK_TIME_NONE` it drops, with GLib's warning, and waits 15 s. The wait
  /// is longer when a source blocks while it is opened, as a FIFO does until it has a writer.
  /// @return (not nullable) what was found; the caller is its only owner.
  /// @throws Backend_Error<std::runtime_error> `DISCOVERER_CREATION_FAILED` when no discoverer can
  /// be made, also because the timeout is `GST_CLOCK_TIME_NONE` (GStreamer 1.18 drops that value,
  /// too); `DISCOVERY_FAILED` when it gives no answer at all; `DISCOVERER_RETURNED_ERROR`, with its
  /// result, when the answer is an error. Any thread.
  static std::unique_ptr<Media_Info> get_media_info(const std::string &uri,
                                                    const GstClockTime &timeout);

  /// Names the result of a discovery.
  /// @param result the result.
  /// @return the enumerator's name; "UNKNOWN" for a value outside the list. Any thread.
  static std::string gst_discoverer_result_to_string(const GstDiscovererResult &result);

  /// @}
  /// @defgroup caps_readers Caps readers
  /// Read single facts from caps, and compare caps and sizes.
  ///
  /// The readers look at the first structure of the caps only. EMPTY and ANY caps have none:
  /// nothing is read from them, and GLib warns too.
  /// @{

  /// Reads the frame rate.
  /// @param caps the caps.
  /// @return numerator and denominator, both greater than 0.
  /// @throws Backend_Error<std::runtime_error> `NOT_CAPS` for bad caps, `CAPS_WITHOUT_FRAMERATE`
  /// when there is no single fraction, `INVALID_FRAMERATE` when it is 0 or negative. Any thread.
  static std::pair<long long, long long> get_framerate_from_caps(GstCaps *caps);

  /// Reads the picture size.
  /// @param caps the caps.
  /// @return width and height in pixels, both greater than 0.
  /// @throws Backend_Error<std::runtime_error> `NOT_CAPS` for bad caps, `CAPS_WITHOUT_RESOLUTION`
  /// when a side is missing or not a single integer, `INVALID_CAPS_RESOLUTION` when one is 0 or
  /// negative. Any thread.
  static std::pair<unsigned long long, unsigned long long> get_resolution_from_caps(GstCaps *caps);

  /// Reads the RTP encoding name.
  /// @param caps the caps.
  /// @return the name; empty when there is none.
  /// @throws Backend_Error<std::runtime_error> `NOT_CAPS` for bad caps. Any thread.
  static std::string get_encoding_name_from_caps(GstCaps *caps);

  /// Computes the largest resolution of the source's shape that fits into the bounds.
  ///
  /// One side is that of the bounds; the other is cut to whole pixels, and saturates where it would
  /// not fit its type. The source's own size is no limit.
  /// @param bounds width and height of the bounds in pixels.
  /// @param source width and height of the source in pixels.
  /// @return width and height in pixels; a side may come out as 0.
  /// @throws Tavren_Error<std::logic_error> `INVALID_RESOLUTION` when one of the four is 0.
  /// Any thread.
  static std::pair<unsigned long long, unsigned long long>
  calculate_resolution(std::pair<unsigned long long, unsigned long long> bounds,
                       std::pair<unsigned long long, unsigned long long> source);

  /// Tells whether two lists hold equal caps, in whatever order.
  /// @param first_list the one list; no null handles.
  /// @param second_list the other list; no null handles.
  /// @return true when each caps of the one has a partner of its own in the other. Any thread.
  static bool caps_equal(std::vector<boost::intrusive_ptr<GstCaps>> first_list,
                         std::vector<boost::intrusive_ptr<GstCaps>> second_list);

  /// @}
  /// @defgroup element_types Element types
  /// Find the type by which elements are searched.
  /// @{

  /// Finds the type of the elements that a factory makes, loading its plug-in.
  /// @param factory_name the factory's name.
  /// @return the type, a `GType`; never 0.
  /// @throws Backend_Error<std::runtime_error> `FACTORY_NOT_FOUND` when there is none of that name,
  /// `FACTORY_NOT_LOADED` when its plug-in cannot be loaded, `FACTORY_HAS_NO_ELEMENT_TYPE` when it
  /// names no type even then. Any thread.
  static unsigned long long get_element_type(const std::string &factory_name);

  /// @}
  /// @defgroup bin_search Bin search
  /// Find elements in a bin by their type and their caps.
  ///
  /// Searches look at the elements of a bin and of the bins inside it, not at the bin itself, and
  /// compare types exactly: a subclass does not count. Finding nothing is no error.
  /// @{

  /// What `caps_compare_func` looks for.
  struct FindElementCapsTypeHelper {
    unsigned long long element_type;  ///< the exact type of the element, a `GType`
    GstCaps *caps;                    ///< (transfer none) the caps that the element's must fit into
  };

  /// Finds the first element of a type whose caps fit into the caps wanted.
  ///
  /// An appsink's caps are those set on it; without them it does not match. The caps of any other
  /// element are those of its pad "sink", whatever the pad's direction: the current caps, else what
  /// the peer can send, else, when the pad is not linked, ANY. An element without such a pad does
  /// not match. ANY fits into ANY only; EMPTY fits into all caps.
  /// @param bin the bin.
  /// @param element_type the exact type, a `GType`.
  /// @param caps the caps wanted.
  /// @return (transfer full) (nullable) the element; null when there is none.
  /// @throws Backend_Error<std::runtime_error> `NOT_A_BIN`, `INVALID_ELEMENT_TYPE`, `NOT_CAPS` for
  /// bad arguments, in this order. Any thread; a change of the bin makes the search begin again.
  static GstElement *find_element_with_caps_and_type(GstBin *bin, unsigned long long element_type,
                                                     GstCaps *caps);

  /// Finds the first tee whose caps fit, as `find_element_with_caps_and_type`.
  /// @param bin the bin.
  /// @param caps the caps wanted.
  /// @return (transfer full) (nullable) the tee; null when there is none.
  /// @throws Backend_Error<std::runtime_error> as `get_element_type` for "tee", then as
  /// `find_element_with_caps_and_type`. Any thread.
  static GstElement *find_tee_with_caps(GstBin *bin, GstCaps *caps);

  /// Finds the first appsink whose caps fit, as `find_element_with_caps_and_type`.
  /// @param bin the bin.
  /// @param caps the caps wanted.
  /// @return (transfer full) (nullable) the appsink; null when there is none.
  /// @throws Backend_Error<std::runtime_error> as `get_element_type` for "appsink", then as
  /// `find_element_with_caps_and_type`. Any thread.
  static GstElement *find_appsink_with_caps(GstBin *bin, GstCaps *caps);

  /// Finds all appsinks.
  /// @param bin the bin.
  /// @return the appsinks in the order of the walk, each held by a reference of its own. When the
  /// bin changes meanwhile, those seen until then: the walk is not begun again.
  /// @throws Backend_Error<std::runtime_error> `NOT_A_BIN` for a bad bin, then as
  /// `get_element_type` for "appsink". Any thread.
  static std::vector<boost::intrusive_ptr<GstElement>> find_all_appsinks(GstBin *bin);

  /// Tells whether a bin holds an element of a type.
  /// @param bin the bin.
  /// @param element_type the exact type, a `GType`.
  /// @return true when it does.
  /// @throws Backend_Error<std::runtime_error> `NOT_A_BIN`, then `INVALID_ELEMENT_TYPE` for bad
  /// arguments. Any thread; a change of the bin makes the search begin again.
  static bool bin_has_element_type(GstBin *bin, unsigned long long element_type);

  /// Tells whether an element is of a type and its caps fit.
  /// @param value (not nullable) a value that holds the element.
  /// @param wanted (not nullable) the type and the caps.
  /// @return 0 when it matches, -1 when it does not. Does not throw. Any thread.
  static int caps_compare_func(const GValue *value, FindElementCapsTypeHelper *wanted) noexcept;

  /// Tells whether an element is of a type.
  /// @param value (not nullable) a value that holds the element.
  /// @param wanted_type (not nullable) the exact type, a `GType`.
  /// @return 0 when it is, -1 when it is not. Does not throw. Any thread.
  static int type_compare_func(const GValue *value, unsigned long long *wanted_type) noexcept;

  /// @}
  /// @defgroup enumeration_names Enumeration names
  /// Write the framework's enumerations out for logs.
  /// @{

  /// Names a state.
  /// @param state the state.
  /// @return the enumerator's name; "UNKNOWN" for a value outside the list. Any thread.
  static std::string gst_state_to_string(GstState state);

  /// Names a change between neighbouring states.
  /// @param change the change.
  /// @return the enumerator's name; "UNKNOWN" for every other change. Any thread.
  static std::string gst_state_change_to_string(GstStateChange change);

  /// Explains the result of a state change.
  /// @param result the result.
  /// @return its name and meaning, or a fixed text for a value outside the list. Any thread.
  static std::string gst_enum_message(GstStateChangeReturn result);

  /// Explains the result of a link.
  /// @param result the result.
  /// @return its name and meaning, or a fixed text for a value outside the list. Any thread.
  static std::string gst_enum_message(GstPadLinkReturn result);

  /// Explains a state.
  /// @param state the state.
  /// @return its name and meaning, or a fixed text for a value outside the list, to which
  /// `GST_STATE_PAUSED` belongs. Any thread.
  static std::string gst_enum_message(GstState state);

  /// Names a type of message.
  /// @param type the type, one only.
  /// @return the enumerator's name, or a fixed text for a value outside the list. Any thread.
  static std::string gst_enum_message(GstMessageType type);

  /// @}
  /// @defgroup time_and_segment_text Time and segment text
  /// Write times for logs; the texts never change with the locale.
  /// @{

  /// Writes a time as hours, minutes, seconds and nanoseconds: 1:02:03.000000001.
  /// @param time the time in ns; `GST_CLOCK_TIME_NONE` is written as 99:99:99.999999999.
  /// @return the text. Any thread.
  static std::string gst_time_to_string(GstClockTime time);

  /// Writes a segment in time format on one line.
  /// @param segment (nullable) the segment.
  /// @return the text; a fixed text for null and for another format. Any thread, while nobody
  /// changes the segment.
  static std::string gst_segment_to_string(const GstSegment *segment);

  /// @}
  /// @defgroup queue_report Queue report
  /// Write for logs how full a queue is; the text never changes with the locale.
  /// @{

  /// Writes how full a queue is on one line: buffers, bytes, whole seconds.
  /// @param queue (nullable) the queue; not checked for its type. Its levels may have any integer
  /// type.
  /// @return the text; a fixed text for null, 0 for the first level that the element does not
  /// have and for those after it, with GLib's warning; empty when the element has no name. Any
  /// thread.
  static std::string generate_queue_stats_report(GstElement *queue);

  /// @}
};

// Made once, in the library.
extern template TAVREN_CAPTURE_EXPORT std::string
Media_Helper::string_from_map_or_throw_(MediaType, const std::map<MediaType, std::string> &,
                                        const std::string &);
extern template TAVREN_CAPTURE_EXPORT std::string
Media_Helper::string_from_map_or_throw_(std::string, const std::map<std::string, std::string> &,
                                        const std::string &);

}  // namespace kel::tavren::capture

#endif
