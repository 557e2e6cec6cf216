// Branches of tees and multiqueues.

#include "log_watch.h"
#include "scenario.h"

namespace kel::tavren::tests {

using capture::Media_Helper;

namespace {

// A request pad that is released at the end.
class Request_Pad {
public:
  Request_Pad(Element element, GstPad *pad) : element_(std::move(element)), pad_(pad, false) {}
  ~Request_Pad() { gst_element_release_request_pad(element_.get(), pad_.get()); }
  Request_Pad(const Request_Pad &) = delete;
  Request_Pad &operator=(const Request_Pad &) = delete;

  std::string name() const { return name_of(pad_.get()); }

private:
  Element element_;
  Pad pad_;
};

// Releases the pads that a failed request left on the multiqueue, as its caller must.
void drop_requested_streams(const Element &multiqueue) {
  for (const Pad &pad : Media_Helper::get_element_sink_pads(multiqueue.get())) {
    gst_element_release_request_pad(multiqueue.get(), pad.get());
    gst_object_unref(pad.get());
  }
}

// Requests a stream, returns the names of its pads, and releases it.
std::string request_stream(const Element &multiqueue, const std::string &name, GstCaps *caps) {
  std::pair<GstPad *, GstPad *> pads;
  try {
    pads = disturbed(
        [&] { return Media_Helper::request_new_multiqueue_pads(multiqueue.get(), name, caps); });
  } catch (...) {
    drop_requested_streams(multiqueue);
    throw;
  }
  const Pad src(pads.second, false);
  const Request_Pad sink(multiqueue, pads.first);
  return sink.name() + ", " + name_of(src.get());
}

// Returns the name of the pad that corresponds to a multiqueue's pad.
std::string partner_of(const Pad &pad) {
  return pad_from([&] { return Media_Helper::get_corresponding_multiqueue_pad(pad.get()); });
}

// An element with one pad of the given name.
std::pair<Element, Pad> make_with_pad(const char *name, GstPadDirection direction) {
  const Element bin = make_bin("bin");
  const Pad pad = make_pad(name, direction);
  gst_element_add_pad(bin.get(), pad.get());
  return {bin, pad};
}

}  // namespace

std::vector<Scenario> branch_scenarios() {
  return {
      {"get_tee_src_pad", "a pad",
       [] {
         const Element tee = make_tee(0);
         return Call{{{"tee", tee}}, [tee] {
                       return Request_Pad(tee, disturbed([&] {
                                            return Media_Helper::get_tee_src_pad(tee.get());
                                          }))
                           .name();
                     }};
       }},
      {"get_tee_src_pad", "no template",
       [] {
         const Element queue = make_element("queue");
         return Call{{{"element", queue}}, [queue] {
                       return Request_Pad(queue, disturbed([&] {
                                            return Media_Helper::get_tee_src_pad(queue.get());
                                          }))
                           .name();
                     }};
       }},
      {"get_tee_src_pad", "no element",
       [] {
         return Call{
             {}, [] { return pad_from([] { return Media_Helper::get_tee_src_pad(nullptr); }); }};
       }},
      {"link_tee_to_element", "linked",
       [] {
         const Element tee = make_tee(0);
         const Element sink = make_element("fakesink");
         return Call{{{"tee", tee}, {"element", sink}, {"sink pad", static_pad(sink, "sink")}},
                     [tee, sink] {
                       return done(
                           [&] { Media_Helper::link_tee_to_element(tee.get(), sink.get()); });
                     }};
       }},
      {"link_tee_to_element", "refused",
       [] {
         const Element tee = make_tee(1);
         const auto [source, sink] = make_linked();
         return Call{{{"tee", tee},
                      {"tee pad", static_pad(tee, "src_0")},
                      {"element", sink},
                      {"sink pad", static_pad(sink, "sink")}},
                     [tee, source = source, sink = sink] {
                       return done(
                           [&] { Media_Helper::link_tee_to_element(tee.get(), sink.get()); });
                     }};
       }},
      {"link_tee_to_element", "no sink pad",
       [] {
         const Element tee = make_tee(0);
         const Element source = make_element("fakesrc");
         return Call{{{"tee", tee}, {"element", source}}, [tee, source] {
                       return done(
                           [&] { Media_Helper::link_tee_to_element(tee.get(), source.get()); });
                     }};
       }},
      {"link_tee_to_element", "no tee",
       [] {
         const Element sink = make_element("fakesink");
         return Call{{{"element", sink}}, [sink] {
                       return done([&] { Media_Helper::link_tee_to_element(nullptr, sink.get()); });
                     }};
       }},
      {"link_tee_to_element", "no element",
       [] {
         const Element tee = make_tee(0);
         return Call{{{"tee", tee}}, [tee] {
                       return done([&] { Media_Helper::link_tee_to_element(tee.get(), nullptr); });
                     }};
       }},
      {"get_corresponding_multiqueue_pad", "of a sink pad",
       [] {
         const Element multiqueue = make_element("multiqueue", "a_multiqueue");
         const Pad pad = request_pad(multiqueue.get(), "sink_1234567890");
         return Call{{{"multiqueue", multiqueue},
                      {"pad", pad},
                      {"partner", static_pad(multiqueue, "src_1234567890")}},
                     [multiqueue, pad] { return partner_of(pad); }};
       }},
      {"get_corresponding_multiqueue_pad", "of a source pad",
       [] {
         const Element multiqueue = make_element("multiqueue", "a_multiqueue");
         const Pad partner = request_pad(multiqueue.get(), "sink_1234567890");
         const Pad pad = static_pad(multiqueue, "src_1234567890");
         return Call{{{"multiqueue", multiqueue}, {"pad", pad}, {"partner", partner}},
                     [multiqueue, pad] { return partner_of(pad); }};
       }},
      {"get_corresponding_multiqueue_pad", "no partner",
       [] {
         const auto [bin, pad] = make_with_pad("sink_1234567890", GST_PAD_SINK);
         return Call{{{"element", bin}, {"pad", pad}},
                     [bin = bin, pad = pad] { return partner_of(pad); }};
       }},
      // The partner's name must be allocated, but not its number.
      {"get_corresponding_multiqueue_pad", "no partner of a sink pad, a long name",
       [] {
         const auto [bin, pad] = make_with_pad("sink_123456789012", GST_PAD_SINK);
         return Call{{{"element", bin}, {"pad", pad}},
                     [bin = bin, pad = pad] { return partner_of(pad); }};
       }},
      {"get_corresponding_multiqueue_pad", "no partner of a source pad, a long name",
       [] {
         const auto [bin, pad] = make_with_pad("src_12345678901", GST_PAD_SRC);
         return Call{{{"element", bin}, {"pad", pad}},
                     [bin = bin, pad = pad] { return partner_of(pad); }};
       }},
      {"get_corresponding_multiqueue_pad", "another name",
       [] {
         const auto [bin, pad] = make_with_pad("a_pad_of_another_name", GST_PAD_SRC);
         return Call{{{"element", bin}, {"pad", pad}},
                     [bin = bin, pad = pad] { return partner_of(pad); }};
       }},
      {"get_corresponding_multiqueue_pad", "a name without a number",
       [] {
         const auto [bin, pad] = make_with_pad("src", GST_PAD_SRC);
         return Call{{{"element", bin}, {"pad", pad}},
                     [bin = bin, pad = pad] { return partner_of(pad); }};
       }},
      {"get_corresponding_multiqueue_pad", "a pad of no element",
       [] {
         const Pad pad = make_pad("src_0", GST_PAD_SRC);
         return Call{{{"pad", pad}}, [pad] { return partner_of(pad); }};
       }},
      {"get_corresponding_multiqueue_pad", "no pad",
       [] {
         return Call{{}, [] { return partner_of(nullptr); }};
       }},
      {"request_new_multiqueue_pads", "named",
       [] {
         const Element multiqueue = make_element("multiqueue", "a_multiqueue");
         return Call{{{"multiqueue", multiqueue}}, [multiqueue] {
                       return request_stream(multiqueue, "sink_1234567890", nullptr);
                     }};
       }},
      {"request_new_multiqueue_pads", "named by the framework, with caps",
       [] {
         const Element multiqueue = make_element("multiqueue", "a_multiqueue");
         const Caps caps = make_caps("video/x-h264");
         return Call{{{"multiqueue", multiqueue}, {"caps", caps}},
                     [multiqueue, caps] { return request_stream(multiqueue, "", caps.get()); }};
       }},
      {"request_new_multiqueue_pads", "no partner",
       [] {
         const Element concat = make_element("concat", "a_concat");
         return Call{{{"element", concat}},
                     [concat] { return request_stream(concat, "", nullptr); }};
       },
       Trait::KEEPS_PARTIAL_WORK},
      {"request_new_multiqueue_pads", "a pad of another name",
       [] {
         const Element funnel = make_element("funnel", "a_funnel");
         return Call{{{"element", funnel}},
                     [funnel] { return request_stream(funnel, "", nullptr); }};
       }},
      {"request_new_multiqueue_pads", "a taken name",
       [] {
         const Element multiqueue = make_element("multiqueue", "a_multiqueue");
         const Pad pad = request_pad(multiqueue.get(), "sink_1234567890");
         return Call{{{"multiqueue", multiqueue}, {"pad", pad}}, [multiqueue] {
                       const Allowed_Log taken("already has a pad named sink_1234567890");
                       const std::string name = "sink_1234567890";
                       disturbed([&] {
                         return Media_Helper::request_new_multiqueue_pads(multiqueue.get(), name,
                                                                          nullptr);
                       });
                       return std::string("a stream");
                     }};
       }},
      {"request_new_multiqueue_pads", "no template",
       [] {
         const Element tee = make_tee(0);
         return Call{{{"element", tee}}, [tee] {
                       disturbed([&] {
                         return Media_Helper::request_new_multiqueue_pads(tee.get(), "", nullptr);
                       });
                       return std::string("a stream");
                     }};
       }},
      {"request_new_multiqueue_pads", "no element",
       [] {
         return Call{{}, [] {
                       disturbed([] {
                         return Media_Helper::request_new_multiqueue_pads(nullptr, "", nullptr);
                       });
                       return std::string("a stream");
                     }};
       }},
  };
}

}  // namespace kel::tavren::tests
