// Passes arbitrary bytes as a name to everything that has a name: factories, elements, pads,
// signals, files, keys, and the descriptions in messages.

#include <cstring>
#include <memory>
#include <stdexcept>
#include <utility>

#include "depayloader_references.h"
#include "elements.h"
#include "fuzzing.h"

using namespace kel::tavren::capture;
using namespace kel::tavren::fuzz;
using namespace kel::tavren::tests;
namespace TEC = kel::tavren::TEC;

namespace {

bool ends_with(const std::string &text, const std::string &end) {
  return text.size() >= end.size() &&
         text.compare(text.size() - end.size(), std::string::npos, end) == 0;
}

void check_factories(const std::string &name) {
  const Factory factory = find_factory(name);
  const bool exists = factory != nullptr;
  const guint before = exists ? reference_count(static_cast<gpointer>(factory.get())) : 0;

  GstElementFactory *found = nullptr;
  const Outcome find = run({exists ? 0 : TEC::FACTORY_NOT_FOUND},
                           [&] { found = Media_Helper::gst_element_factory_find_or_throw(name); });
  require(found == factory.get(), "the framework finds the same factory");
  require(exists || find.text == shown("Could not find factory for \"" + name +
                                       "\" in gst_element_factory_find_or_throw"),
          "the error shows the factory's name");
  if (exists) gst_object_unref(found);

  GstElement *made = nullptr;
  const Outcome make = run({exists ? 0 : TEC::ELEMENT_CREATION_FAILED}, [&] {
    made = Media_Helper::gst_element_factory_make_or_throw(name, "");
  });
  require(exists || make.text == shown("Could not create " + name + " "),
          "the error shows the factory's name");
  unsigned long long type = 0;
  run({exists ? 0 : TEC::FACTORY_NOT_FOUND}, [&] { type = Media_Helper::get_element_type(name); });
  if (!exists) return;
  require(g_object_is_floating(made), "the reference is floating");
  require(G_OBJECT_TYPE(made) == type, "the element has its factory's type");
  gst_object_unref(gst_object_ref_sink(made));
  require(reference_count(static_cast<gpointer>(factory.get())) == before,
          "no reference to a factory is kept");
}

void check_elements(const std::string &name) {
  const Element bin = make_bin("bin");
  const Element other = make_element("identity", ("not " + name).c_str());
  gst_bin_add(GST_BIN(bin.get()), other.get());

  GstElement *const added = Media_Helper::create_and_add_element_to_bin("queue", bin.get(), name);
  const Element queue(added);
  const std::unique_ptr<char, decltype(&g_free)> given(gst_object_get_name(GST_OBJECT(added)),
                                                       g_free);
  const std::string element_name = given.get();
  require(name.empty() || element_name == shown(name), "the element has the requested name");

  // The name is taken: another element must not get it.
  const std::vector<guint> before = reference_counts({bin.get(), other.get(), added});
  const Outcome again = run({TEC::BIN_ADD_FAILED}, [&] {
    Media_Helper::create_and_add_element_to_pipeline("queue", bin.get(),
                                                     name.empty() ? element_name : name);
  });
  require(again.text == "Failed to add element " + element_name + " () to bin.",
          "the error shows the element's name");
  GstElement *const found =
      Media_Helper::gst_bin_get_by_name_or_throw(GST_BIN(bin.get()), element_name);
  require(found == added, "the element is found by its name");
  gst_object_unref(found);
  const std::string absent = "nor " + name;
  const Outcome lost = run({TEC::ELEMENT_NOT_IN_BIN}, [&] {
    Media_Helper::gst_bin_get_by_name_or_throw(GST_BIN(bin.get()), absent);
  });
  require(lost.text == shown("Could not retrieve element '" + absent + "' from bin"),
          "the error shows the name wanted");

  require(Media_Helper::generate_queue_stats_report(added) ==
              element_name + " Stats : Num Buffers = 0, Num Bytes = 0, Num Seconds = 0",
          "the report shows the queue's name");
  require(reference_counts({bin.get(), other.get(), added}) == before,
          "no reference to an element is kept");
}

// Checks all messages that contain an element's name, which may look like a format string.
void check_messages(const std::string &name) {
  const std::string read = shown(name);
  const Element element = make_element("filesrc", name.c_str());
  const Element sink = make_element("fakesink", name.c_str());
  const std::vector<guint> before = reference_counts({element.get(), sink.get()});
  const auto expect = [](int code, const std::string &text, auto call) {
    require(run({code}, call).text == text, ("the error contains the names: " + text).c_str());
  };
  expect(TEC::ELEMENT_HAS_NO_PARENT, "Failed to get parent for element " + read + " ().",
         [&] { Media_Helper::gst_element_get_parent_or_throw(element.get()); });
  expect(TEC::ELEMENT_HAS_NO_BUS, "Could not retrieve pipeline bus for element \"" + read + "\".",
         [&] { Media_Helper::gst_element_get_bus_or_throw(element.get()); });
  expect(TEC::STATE_SYNC_WITH_PARENT_FAILED, "Failed to sync element " + read + " () with parent.",
         [&] { Media_Helper::gst_element_sync_state_with_parent_or_throw(element.get()); });
  expect(TEC::ELEMENT_LINK_FAILED,
         "Failed to link element \"" + read + "\" and element \"" + read + "\".",
         [&] { Media_Helper::gst_element_link_many_or_throw(sink.get(), element.get(), nullptr); });
  const Pad src_pad = static_pad(element, "src");
  const Element other_bin = make_bin("bin");
  gst_bin_add(GST_BIN(other_bin.get()), sink.get());
  expect(TEC::PAD_LINK_FAILED,
         "Failed to link \"src\" pad from element \"" + read +
             "\" with \"sink\" pad from element \"" + read +
             "\" (GST_PAD_LINK_WRONG_HIERARCHY: pads have no common grandparent).",
         [&] { Media_Helper::link_pad_to_element_or_throw(src_pad.get(), sink.get()); });
  gst_bin_remove(GST_BIN(other_bin.get()), sink.get());
  // A source without a file cannot start.
  expect(
      TEC::STATE_CHANGE_FAILED,
      "Failed to set state GST_STATE_PAUSED on element " + read + " ()" +
          (name.empty() ? "" : ", " + read),
      [&] { Media_Helper::gst_element_set_state_or_throw(element.get(), GST_STATE_PAUSED, name); });
  gst_element_set_state(element.get(), GST_STATE_NULL);
  require(reference_counts({element.get(), sink.get()}) == before,
          "no reference to an element is kept");
}

// The name of the partner, if a pad with this name and direction has one.
enum class Partner { NONE, TOO_SHORT, NAMED };
std::pair<Partner, std::string> partner_of(const std::string &name, GstPadDirection direction) {
  const std::string own = direction == GST_PAD_SRC ? "src" : "sink";
  if (name.rfind(own, 0) != 0) return {Partner::NONE, ""};
  if (name == own) return {Partner::TOO_SHORT, ""};
  return {Partner::NAMED,
          (direction == GST_PAD_SRC ? "sink_" : "src_") + name.substr(own.size() + 1)};
}

void check_pad(const std::string &name, GstPadDirection direction) {
  const std::string read = shown(name);
  const Element owner = make_bin("owner");
  GstPad *const pad = gst_pad_new(name.c_str(), direction);
  gst_element_add_pad(owner.get(), pad);
  const std::vector<guint> before = reference_counts({owner.get(), pad});

  GstPad *const found =
      Media_Helper::gst_element_get_static_pad_or_throw(owner.get(), read.c_str());
  require(found == pad, "a pad is found by its name");
  gst_object_unref(found);
  const std::string absent = "not " + read;
  const Outcome lost = run({TEC::STATIC_PAD_NOT_FOUND}, [&] {
    Media_Helper::gst_element_get_static_pad_or_throw(owner.get(), absent.c_str());
  });
  require(lost.text == "Failed to get static pad \"" + absent + "\" for element owner ().",
          "the error shows the pad's name");

  const auto [kind, partner] = partner_of(read, direction);
  bool out_of_range = false;
  const auto look = [&, code = kind == Partner::NONE ? TEC::NOT_A_MULTIQUEUE_PAD_NAME
                                                     : TEC::STATIC_PAD_NOT_FOUND] {
    try {
      run({code}, [&] { Media_Helper::get_corresponding_multiqueue_pad(pad); });
    } catch (const std::out_of_range &) {
      out_of_range = true;
    }
  };
  look();
  require(out_of_range == (kind == Partner::TOO_SHORT),
          "only a name without a suffix is too short");
  require(reference_counts({owner.get(), pad}) == before, "no reference to a pad is kept");
  if (kind != Partner::NAMED) return;

  GstPad *const other =
      gst_pad_new(partner.c_str(), direction == GST_PAD_SRC ? GST_PAD_SINK : GST_PAD_SRC);
  gst_element_add_pad(owner.get(), other);
  const Pad answer(Media_Helper::get_corresponding_multiqueue_pad(pad), false);
  require(answer.get() == other, "the partner has the same suffix");
}

void check_multiqueue(const std::string &name) {
  const Element multiqueue = make_element("multiqueue", "multiqueue");
  const guint before = reference_count(static_cast<gpointer>(multiqueue.get()));
  // The framework rejects names that do not match the template.
  const Tolerated_Criticals refusal;
  std::pair<GstPad *, GstPad *> pads;
  const Outcome outcome = run({0, TEC::MULTIQUEUE_SINK_PAD_REQUEST_FAILED}, [&] {
    pads = Media_Helper::request_new_multiqueue_pads(multiqueue.get(), name, nullptr);
  });
  if (outcome.code == 0) {
    require(gst_pad_get_direction(pads.first) == GST_PAD_SINK &&
                gst_pad_get_direction(pads.second) == GST_PAD_SRC,
            "a stream has both its pads");
    gst_element_release_request_pad(multiqueue.get(), pads.first);
    gst_object_unref(pads.first);
    gst_object_unref(pads.second);
  }
  require(multiqueue->numpads == 0, "no stream is left");
  require(reference_count(static_cast<gpointer>(multiqueue.get())) == before,
          "the multiqueue is not kept");
}

// Returns whether elements of a type have a signal, with its detail if the name contains one.
bool has_signal(GType type, const char *name) {
  guint signal = 0;
  GQuark detail = 0;
  if (!g_signal_parse_name(name, type, &signal, &detail, FALSE)) return false;
  GSignalQuery query;
  g_signal_query(signal, &query);
  return (query.signal_flags & G_SIGNAL_DETAILED) != 0 || std::strstr(name, "::") == nullptr;
}

void check_signal(const std::string &name) {
  const Element element = make_element("identity", "identity");
  const guint before = reference_count(static_cast<gpointer>(element.get()));
  const bool exists = has_signal(G_OBJECT_TYPE(element.get()), name.c_str());
  // GLib logs criticals about names that are not signals.
  const Tolerated_Criticals refusal;
  gulong handler = 0;
  const Outcome outcome = run({exists ? 0 : TEC::SIGNAL_CONNECTION_FAILED}, [&] {
    handler = Media_Helper::g_signal_connect_or_throw(
        element.get(), name, [] {}, nullptr);
  });
  require(exists == (handler != 0), "a connection has an id");
  require(exists || outcome.text == "Failed to connect to signal \"" + shown(name) +
                                        "\" on element \"identity\".",
          "the error shows the signal's name");
  if (exists) g_signal_handler_disconnect(element.get(), handler);
  require(reference_count(static_cast<gpointer>(element.get())) == before,
          "the element is not kept");
}

void check_selection(const std::string &name) {
  const bool mkv = ends_with(name, ".mkv");
  const bool muxed =
      mkv || ends_with(name, ".mp4") || ends_with(name, ".avi") || ends_with(name, ".mov");
  run({muxed ? 0 : TEC::KEY_NOT_FOUND},
      [&] { require(ends_with(Media_Helper::select_muxer(name), "mux"), "a muxer is chosen"); });
  run({mkv ? 0 : TEC::KEY_NOT_FOUND}, [&] {
    require(Media_Helper::select_demuxer(name) == "matroskademux", "the demuxer is chosen");
  });

  const std::map<std::string, std::string> rows = {{name, name}, {"other", ""}};
  require(Media_Helper::string_from_map_or_throw_(name, rows, "message") == name,
          "a text is found by its key");
  const Outcome lost = run({TEC::KEY_NOT_FOUND}, [&] {
    Media_Helper::string_from_map_or_throw_("not " + name, rows, "message " + name);
  });
  require(lost.text == shown("message " + name), "the error contains the message");
}

void check_checks(const std::string &name) {
  const auto expect = [&name](int code, const std::string &type, auto check) {
    const Outcome outcome = run({code}, [&] { check(nullptr, name); });
    require(outcome.text == shown(name + " is not a " + type + "."),
            "the error shows the description");
  };
  // A description that consists of a single zero byte would result in an error without a text.
  if (!name.empty() && name[0] == '\0') return;
  expect(TEC::NOT_AN_ELEMENT, "GstElement *", Media_Helper::is_element_or_throw);
  expect(TEC::NOT_A_PAD, "GstPad *", Media_Helper::is_pad_or_throw);
  expect(TEC::NOT_A_BIN, "GstBin *", Media_Helper::is_bin_or_throw);
  expect(TEC::NOT_A_BUS, "GstBus *", Media_Helper::is_bus_or_throw);
  expect(TEC::NOT_CAPS, "GstCaps *", Media_Helper::is_caps_or_throw);
  expect(TEC::INVALID_ELEMENT_TYPE, "valid GType",
         [](std::nullptr_t, const std::string &description) {
           Media_Helper::is_valid_element_type_or_throw(G_TYPE_INVALID, description);
         });
  Media_Helper::gst_is_initialized_or_throw(name);
}

}  // namespace

int LLVMFuzzerInitialize(int *, char ***) {
  kel::tavren::fuzz::start_framework({"coreelements"});
  return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  const std::string name(reinterpret_cast<const char *>(data), size);
  check_factories(name);
  check_elements(name);
  check_messages(name);
  check_pad(name, GST_PAD_SRC);
  check_pad(name, GST_PAD_SINK);
  check_multiqueue(name);
  check_signal(name);
  check_selection(name);
  check_checks(name);
  return 0;
}
