// Searches of bins.

#include <gst/app/gstappsink.h>

#include "scenario.h"

namespace kel::tavren::tests {

using capture::Media_Helper;

namespace {

// A bin with an appsink without caps, a nested bin that contains an appsink with caps, and a tee
// that gets its caps from a filter.
struct Searched_Bin {
  Element bin = make_bin("bin");
  Element plain = make_element("appsink", "plain_appsink");
  Element nested = make_bin("nested");
  Element inner = make_element("appsink", "inner_appsink");
  Element filter = make_element("capsfilter", "filter");
  Element tee = make_element("tee", "tee");
  Caps caps = make_caps("video/x-h264");

  Searched_Bin() {
    gst_app_sink_set_caps(GST_APP_SINK_CAST(inner.get()), caps.get());
    g_object_set(filter.get(), "caps", caps.get(), nullptr);
    gst_bin_add_many(as_bin(bin), plain.get(), nested.get(), filter.get(), tee.get(), nullptr);
    gst_bin_add(as_bin(nested), inner.get());
    gst_element_link(filter.get(), tee.get());
  }

  void send_caps() const {
    const Pad pad = static_pad(tee, "sink");
    gst_pad_set_active(pad.get(), TRUE);
    gst_pad_send_event(pad.get(), gst_event_new_stream_start("stream"));
    gst_pad_send_event(pad.get(), gst_event_new_caps(caps.get()));
  }

  std::vector<Involved> involved() const {
    return {{"bin", bin},
            {"plain appsink", plain},
            {"nested bin", nested},
            {"inner appsink", inner},
            {"filter", filter},
            {"tee", tee},
            {"tee's pad", static_pad(tee, "sink")},
            {"filter's pad", static_pad(filter, "src")},
            {"appsink factory", find_factory("appsink").get()},
            {"tee factory", find_factory("tee").get()}};
  }
};

Searched_Bin with_sent_caps() {
  Searched_Bin searched;
  searched.send_caps();
  return searched;
}

// A call on such a bin that returns an element.
template <typename Find>
Call search(const Searched_Bin &searched, Find find) {
  return {searched.involved(),
          [searched, find] { return element_from([&] { return find(searched); }); }};
}

// A call on such a bin that returns a number.
template <typename Ask>
Call ask(const Searched_Bin &searched, Ask question) {
  return {searched.involved(),
          [searched, question] { return number_from([&] { return question(searched); }); }};
}

// A value that contains an element, as passed by searches.
class Element_Value {
public:
  explicit Element_Value(const Element &element) {
    g_value_init(&value_, GST_TYPE_ELEMENT);
    g_value_set_object(&value_, element.get());
  }
  ~Element_Value() { g_value_unset(&value_); }
  Element_Value(const Element_Value &) = delete;
  Element_Value &operator=(const Element_Value &) = delete;

  const GValue *get() const { return &value_; }

private:
  GValue value_ = G_VALUE_INIT;
};

// Compares an element with the caps of the bin and the type of another element.
std::string compare_caps(const Searched_Bin &searched, const Element &element,
                         const Element &wanted_type) {
  const Element_Value value(element);
  Media_Helper::FindElementCapsTypeHelper wanted{G_OBJECT_TYPE(wanted_type.get()),
                                                 searched.caps.get()};
  return number_from([&] { return Media_Helper::caps_compare_func(value.get(), &wanted); });
}

std::string compare_types(const Element &element, const Element &wanted_type) {
  const Element_Value value(element);
  unsigned long long wanted = G_OBJECT_TYPE(wanted_type.get());
  return number_from([&] { return Media_Helper::type_compare_func(value.get(), &wanted); });
}

}  // namespace

std::vector<Scenario> search_scenarios() {
  return {
      {"find_element_with_caps_and_type", "found",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_element_with_caps_and_type(
               as_bin(searched.bin), GST_TYPE_APP_SINK, searched.caps.get());
         });
       }},
      {"find_element_with_caps_and_type", "not found",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_element_with_caps_and_type(as_bin(searched.bin), GST_TYPE_BIN,
                                                                searched.caps.get());
         });
       }},
      {"find_element_with_caps_and_type", "a tee, found by what its peer can send",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_element_with_caps_and_type(
               as_bin(searched.bin), G_OBJECT_TYPE(searched.tee.get()), searched.caps.get());
         });
       }},
      {"find_element_with_caps_and_type", "a tee, found by its current caps",
       [] {
         return search(with_sent_caps(), [](const Searched_Bin &searched) {
           return Media_Helper::find_element_with_caps_and_type(
               as_bin(searched.bin), G_OBJECT_TYPE(searched.tee.get()), searched.caps.get());
         });
       }},
      {"find_element_with_caps_and_type", "no bin",
       [] {
         const Caps caps = make_caps("video/x-h264");
         return Call{{{"caps", caps}}, [caps] {
                       return element_from([&] {
                         return Media_Helper::find_element_with_caps_and_type(
                             nullptr, GST_TYPE_APP_SINK, caps.get());
                       });
                     }};
       }},
      {"find_element_with_caps_and_type", "no type",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_element_with_caps_and_type(
               as_bin(searched.bin), G_TYPE_INVALID, searched.caps.get());
         });
       }},
      {"find_element_with_caps_and_type", "no caps",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_element_with_caps_and_type(as_bin(searched.bin),
                                                                GST_TYPE_APP_SINK, nullptr);
         });
       }},
      {"find_tee_with_caps", "found by what its peer can send",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_tee_with_caps(as_bin(searched.bin), searched.caps.get());
         });
       }},
      {"find_tee_with_caps", "found by its current caps",
       [] {
         return search(with_sent_caps(), [](const Searched_Bin &searched) {
           return Media_Helper::find_tee_with_caps(as_bin(searched.bin), searched.caps.get());
         });
       }},
      {"find_appsink_with_caps", "found",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_appsink_with_caps(as_bin(searched.bin), searched.caps.get());
         });
       }},
      {"find_tee_with_caps", "no bin",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_tee_with_caps(nullptr, searched.caps.get());
         });
       }},
      {"find_tee_with_caps", "no caps",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_tee_with_caps(as_bin(searched.bin), nullptr);
         });
       }},
      {"find_tee_with_caps", "other caps",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_tee_with_caps(as_bin(searched.bin),
                                                   make_caps("audio/x-raw").get());
         });
       }},
      {"find_appsink_with_caps", "no bin",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_appsink_with_caps(nullptr, searched.caps.get());
         });
       }},
      {"find_appsink_with_caps", "no caps",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_appsink_with_caps(as_bin(searched.bin), nullptr);
         });
       }},
      {"find_appsink_with_caps", "other caps",
       [] {
         return search(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::find_appsink_with_caps(as_bin(searched.bin),
                                                       make_caps("audio/x-raw").get());
         });
       }},
      {"find_all_appsinks", "two",
       [] {
         const Searched_Bin searched;
         return Call{searched.involved(), [searched] {
                       const auto found = disturbed(
                           [&] { return Media_Helper::find_all_appsinks(as_bin(searched.bin)); });
                       return std::to_string(found.size()) + " appsinks";
                     }};
       }},
      {"find_all_appsinks", "no bin",
       [] {
         return Call{{}, [] {
                       const auto found =
                           disturbed([] { return Media_Helper::find_all_appsinks(nullptr); });
                       return std::to_string(found.size()) + " appsinks";
                     }};
       }},
      {"bin_has_element_type", "has",
       [] {
         return ask(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::bin_has_element_type(as_bin(searched.bin), GST_TYPE_APP_SINK);
         });
       }},
      {"bin_has_element_type", "has not",
       [] {
         return ask(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::bin_has_element_type(as_bin(searched.bin), GST_TYPE_PIPELINE);
         });
       }},
      {"bin_has_element_type", "no bin",
       [] {
         return Call{{}, [] {
                       return number_from([] {
                         return Media_Helper::bin_has_element_type(nullptr, GST_TYPE_PIPELINE);
                       });
                     }};
       }},
      {"bin_has_element_type", "no type",
       [] {
         return ask(Searched_Bin(), [](const Searched_Bin &searched) {
           return Media_Helper::bin_has_element_type(as_bin(searched.bin), G_TYPE_INVALID);
         });
       }},
      {"caps_compare_func", "an appsink that fits",
       [] {
         const Searched_Bin searched;
         return Call{searched.involved(),
                     [searched] { return compare_caps(searched, searched.inner, searched.inner); }};
       }},
      {"caps_compare_func", "a tee whose peer's caps fit",
       [] {
         const Searched_Bin searched;
         return Call{searched.involved(),
                     [searched] { return compare_caps(searched, searched.tee, searched.tee); }};
       }},
      {"caps_compare_func", "a tee whose current caps fit",
       [] {
         const Searched_Bin searched;
         searched.send_caps();
         return Call{searched.involved(),
                     [searched] { return compare_caps(searched, searched.tee, searched.tee); }};
       }},
      {"caps_compare_func", "no sink pad",
       [] {
         const Searched_Bin searched;
         return Call{searched.involved(), [searched] {
                       return compare_caps(searched, searched.nested, searched.nested);
                     }};
       }},
      {"caps_compare_func", "another type",
       [] {
         const Searched_Bin searched;
         return Call{searched.involved(),
                     [searched] { return compare_caps(searched, searched.tee, searched.inner); }};
       }},
      {"type_compare_func", "the type",
       [] {
         const Searched_Bin searched;
         return Call{searched.involved(),
                     [searched] { return compare_types(searched.tee, searched.tee); }};
       }},
      {"type_compare_func", "another type",
       [] {
         const Searched_Bin searched;
         return Call{searched.involved(),
                     [searched] { return compare_types(searched.tee, searched.inner); }};
       }},
  };
}

}  // namespace kel::tavren::tests
