// Control of elements.

#include "log_watch.h"
#include "scenario.h"

namespace kel::tavren::tests {

using capture::Media_Helper;

namespace {

// Sets a state, then resets the element to NULL.
std::string set_state(const Element &element, GstState state, const std::string &context) {
  const struct Rest {
    GstElement *element;
    ~Rest() { gst_element_set_state(element, GST_STATE_NULL); }
  } rest{element.get()};
  return number_from(
      [&] { return Media_Helper::gst_element_set_state_or_throw(element.get(), state, context); });
}

}  // namespace

std::vector<Scenario> control_scenarios() {
  return {
      {"gst_element_set_state_or_throw", "follows",
       [] {
         const Element sink = make_element("fakesink", "sink");
         return Call{{{"element", sink}}, [sink] {
                       return set_state(sink, GST_STATE_READY, "while the camera is tuned");
                     }};
       }},
      {"gst_element_set_state_or_throw", "fails in a context",
       [] {
         const Element source = make_element("filesrc", "source");
         return Call{{{"element", source}}, [source] {
                       return set_state(source, GST_STATE_PLAYING, "starting the capture");
                     }};
       }},
      {"gst_element_set_state_or_throw", "fails without a context",
       [] {
         const Element source = make_element("filesrc", "source");
         return Call{{{"element", source}},
                     [source] { return set_state(source, GST_STATE_PLAYING, ""); }};
       }},
      {"gst_element_set_state_or_throw", "no element",
       [] {
         return Call{{}, [] {
                       return number_from([] {
                         return Media_Helper::gst_element_set_state_or_throw(nullptr,
                                                                             GST_STATE_PLAYING, "");
                       });
                     }};
       }},
      {"gst_element_sync_state_with_parent_or_throw", "follows",
       [] {
         const Element bin = make_bin("bin");
         const Element element = make_element("identity", "identity");
         gst_bin_add(as_bin(bin), element.get());
         return Call{{{"bin", bin}, {"element", element}}, [element] {
                       return done([&] {
                         Media_Helper::gst_element_sync_state_with_parent_or_throw(element.get());
                       });
                     }};
       }},
      {"gst_element_sync_state_with_parent_or_throw", "no parent",
       [] {
         const Element element = make_element("identity", "identity");
         return Call{{{"element", element}}, [element] {
                       return done([&] {
                         Media_Helper::gst_element_sync_state_with_parent_or_throw(element.get());
                       });
                     }};
       }},
      {"gst_element_sync_state_with_parent_or_throw", "no element",
       [] {
         return Call{{}, [] {
                       return done([] {
                         Media_Helper::gst_element_sync_state_with_parent_or_throw(nullptr);
                       });
                     }};
       }},
      {"gst_element_get_bus_or_throw", "a bus",
       [] {
         const Element pipeline = make_element("pipeline", "pipeline");
         const Bus bus(gst_element_get_bus(pipeline.get()), false);
         return Call{{{"pipeline", pipeline}, {"bus", bus}}, [pipeline] {
                       const Bus got(disturbed([&] {
                                       return Media_Helper::gst_element_get_bus_or_throw(
                                           pipeline.get());
                                     }),
                                     false);
                       return std::string("a bus");
                     }};
       }},
      {"gst_element_get_bus_or_throw", "no bus",
       [] {
         const Element element = make_element("identity", "identity");
         return Call{{{"element", element}}, [element] {
                       const Bus got(disturbed([&] {
                                       return Media_Helper::gst_element_get_bus_or_throw(
                                           element.get());
                                     }),
                                     false);
                       return std::string("a bus");
                     }};
       }},
      {"gst_element_get_bus_or_throw", "no element",
       [] {
         return Call{{}, [] {
                       const Bus got(disturbed([] {
                                       return Media_Helper::gst_element_get_bus_or_throw(nullptr);
                                     }),
                                     false);
                       return std::string("a bus");
                     }};
       }},
      {"gst_bus_create_watch_or_throw", "a watch",
       [] {
         const Bus bus(gst_bus_new(), false);
         return Call{{{"bus", bus}}, [bus] {
                       const boost::intrusive_ptr<GSource> watch(
                           disturbed([&] {
                             return Media_Helper::gst_bus_create_watch_or_throw(bus.get());
                           }),
                           false);
                       return std::string("a watch");
                     }};
       }},
      {"gst_bus_create_watch_or_throw", "has one",
       [] {
         const Bus bus(gst_bus_new(), false);
         const boost::intrusive_ptr<GSource> first(gst_bus_create_watch(bus.get()), false);
         return Call{{{"bus", bus}}, [bus, first] {
                       const boost::intrusive_ptr<GSource> watch(
                           disturbed([&] {
                             return Media_Helper::gst_bus_create_watch_or_throw(bus.get());
                           }),
                           false);
                       return std::string("a watch");
                     }};
       }},
      {"gst_bus_create_watch_or_throw", "no bus",
       [] {
         return Call{
             {}, [] {
               const boost::intrusive_ptr<GSource> watch(
                   disturbed([] { return Media_Helper::gst_bus_create_watch_or_throw(nullptr); }),
                   false);
               return std::string("a watch");
             }};
       }},
      {"gst_element_get_parent_or_throw", "a parent",
       [] {
         const Element bin = make_bin("bin");
         const Element element = make_element("identity", "identity");
         gst_bin_add(as_bin(bin), element.get());
         return Call{{{"bin", bin}, {"element", element}}, [element] {
                       return element_from([&] {
                         return Media_Helper::gst_element_get_parent_or_throw(element.get());
                       });
                     }};
       }},
      {"gst_element_get_parent_or_throw", "no parent",
       [] {
         const Element element = make_element("identity", "identity");
         return Call{{{"element", element}}, [element] {
                       return element_from([&] {
                         return Media_Helper::gst_element_get_parent_or_throw(element.get());
                       });
                     }};
       }},
      {"gst_element_get_parent_or_throw", "no element",
       [] {
         return Call{{}, [] {
                       return element_from(
                           [] { return Media_Helper::gst_element_get_parent_or_throw(nullptr); });
                     }};
       }},
      {"g_signal_connect_or_throw", "connected",
       [] {
         const Element element = make_element("identity", "identity");
         return Call{{{"element", element}}, [element] {
                       const gulong handler = disturbed([&] {
                         return Media_Helper::g_signal_connect_or_throw(
                             element.get(), "notify::last-message", [] {}, nullptr);
                       });
                       g_signal_handler_disconnect(element.get(), handler);
                       return std::string("connected");
                     }};
       }},
      {"g_signal_connect_or_throw", "no such signal",
       [] {
         const Element element = make_element("identity", "identity");
         return Call{{{"element", element}}, [element] {
                       const Allowed_Log invalid("is invalid for instance");
                       return done([&] {
                         Media_Helper::g_signal_connect_or_throw(
                             element.get(), "there-is-no-such-signal", [] {}, nullptr);
                       });
                     }};
       }},
      {"g_signal_connect_or_throw", "no element",
       [] {
         return Call{{}, [] {
                       return done([] {
                         Media_Helper::g_signal_connect_or_throw(
                             nullptr, "pad-added", [] {}, nullptr);
                       });
                     }};
       }},
  };
}

}  // namespace kel::tavren::tests
