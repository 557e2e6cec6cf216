// Pads, links, branches of tees and multiqueues, peers and ancestors.

#include "log_watch.h"
#include "scenario.h"

namespace kel::tavren::tests {

using capture::Media_Helper;

namespace {

std::string count_of(const Media_Helper::Pad_List &pads) {
  return std::to_string(pads.size()) + " pads";
}

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

Element make_tee(int pads) {
  Element tee = make_element("tee", "tee");
  for (int i = 0; i < pads; ++i)
    request_pad(tee.get(), "src_%u");
  return tee;
}

// A source linked to a sink.
std::pair<Element, Element> make_linked() {
  const Element source = make_element("fakesrc", "a_source_with_a_name");
  const Element sink = make_element("fakesink", "a_sink_with_a_name");
  gst_element_link(source.get(), sink.get());
  return {source, sink};
}

// Releases the streams that a request left behind, which keep their pads. That is the caller's
// responsibility.
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

// Adds a probe that removes itself immediately. Rethrows the exception of the call, and appends how
// often the data was freed.
std::string probe_with_data(const Element &element, GstPadProbeType mask) {
  const Allowed_Log no_mask("mask != 0");
  int freed = 0;
  try {
    disturbed([&] {
      Media_Helper::add_probe_to_sink_pad_or_throw(
          element.get(), mask,
          [](GstPad *, GstPadProbeInfo *, gpointer) { return GST_PAD_PROBE_REMOVE; }, &freed,
          [](gpointer data) { ++*static_cast<int *>(data); });
    });
  } catch (const Backend_Error<std::runtime_error> &error) {
    return std::string(error.what()) + ", data freed " + std::to_string(freed) + " times";
  }
  return "done";
}

}  // namespace

std::vector<Scenario> pad_and_link_scenarios() {
  return {
      {"get_element_pads", "all pads",
       [] {
         const Element tee = make_tee(5);
         return Call{{{"tee", tee}, {"pad", static_pad(tee, "src_0")}}, [tee] {
                       return count_of(disturbed([&] {
                         return Media_Helper::get_element_pads(tee.get(), gst_element_iterate_pads);
                       }));
                     }};
       }},
      {"get_element_pads", "no element",
       [] {
         return Call{{}, [] {
                       return count_of(disturbed([] {
                         return Media_Helper::get_element_pads(nullptr, gst_element_iterate_pads);
                       }));
                     }};
       }},
      {"get_element_pads", "no iterator",
       [] {
         const Element tee = make_tee(1);
         return Call{{{"tee", tee}}, [tee] {
                       const Media_Helper::Pad_Iterator_Source none =
                           [](GstElement *) -> GstIterator * { return nullptr; };
                       return count_of(disturbed(
                           [&] { return Media_Helper::get_element_pads(tee.get(), none); }));
                     }};
       }},
      {"get_element_src_pads", "five pads",
       [] {
         const Element tee = make_tee(5);
         return Call{{{"tee", tee}, {"pad", static_pad(tee, "src_4")}}, [tee] {
                       return count_of(disturbed(
                           [&] { return Media_Helper::get_element_src_pads(tee.get()); }));
                     }};
       }},
      {"get_element_src_pads", "no pads",
       [] {
         const Element sink = make_element("fakesink", "sink");
         return Call{{{"element", sink}}, [sink] {
                       return count_of(disturbed(
                           [&] { return Media_Helper::get_element_src_pads(sink.get()); }));
                     }};
       }},
      {"get_element_src_pads", "no element",
       [] {
         return Call{{}, [] {
                       return count_of(
                           disturbed([] { return Media_Helper::get_element_src_pads(nullptr); }));
                     }};
       }},
      {"get_element_sink_pads", "one pad",
       [] {
         const Element tee = make_tee(5);
         return Call{{{"tee", tee}, {"pad", static_pad(tee, "sink")}}, [tee] {
                       return count_of(disturbed(
                           [&] { return Media_Helper::get_element_sink_pads(tee.get()); }));
                     }};
       }},
      {"get_element_sink_pads", "no element",
       [] {
         return Call{{}, [] {
                       return count_of(
                           disturbed([] { return Media_Helper::get_element_sink_pads(nullptr); }));
                     }};
       }},
      {"link_pad_to_element", "linked",
       [] {
         const Element source = make_element("fakesrc");
         const Element sink = make_element("fakesink");
         const Pad pad = static_pad(source, "src");
         return Call{{{"pad", pad}, {"element", sink}, {"sink pad", static_pad(sink, "sink")}},
                     [pad, source, sink] {
                       return number_from([&] {
                         return Media_Helper::link_pad_to_element(pad.get(), sink.get());
                       });
                     }};
       }},
      {"link_pad_to_element", "refused",
       [] {
         const auto [source, sink] = make_linked();
         const Pad pad = static_pad(source, "src");
         return Call{{{"pad", pad}, {"element", sink}, {"sink pad", static_pad(sink, "sink")}},
                     [pad, source = source, sink = sink] {
                       return number_from([&] {
                         return Media_Helper::link_pad_to_element(pad.get(), sink.get());
                       });
                     }};
       }},
      {"link_pad_to_element", "nulls",
       [] {
         return Call{{}, [] {
                       return number_from(
                           [] { return Media_Helper::link_pad_to_element(nullptr, nullptr); });
                     }};
       }},
      {"unlink_pad_from_element", "unlinked",
       [] {
         const auto [source, sink] = make_linked();
         const Pad pad = static_pad(source, "src");
         return Call{{{"pad", pad}, {"element", sink}, {"sink pad", static_pad(sink, "sink")}},
                     [pad, source = source, sink = sink] {
                       return number_from([&] {
                         return Media_Helper::unlink_pad_from_element(pad.get(), sink.get());
                       });
                     }};
       }},
      {"unlink_pad_from_element", "not linked",
       [] {
         const Element source = make_element("fakesrc");
         const Element sink = make_element("fakesink");
         const Pad pad = static_pad(source, "src");
         return Call{{{"pad", pad}, {"element", sink}, {"sink pad", static_pad(sink, "sink")}},
                     [pad, sink] {
                       return number_from([&] {
                         return Media_Helper::unlink_pad_from_element(pad.get(), sink.get());
                       });
                     }};
       }},
      {"unlink_pad_from_element", "nulls",
       [] {
         return Call{{}, [] {
                       return number_from(
                           [] { return Media_Helper::unlink_pad_from_element(nullptr, nullptr); });
                     }};
       }},
      {"link_element_to_pad", "linked",
       [] {
         const Element source = make_element("fakesrc");
         const Element sink = make_element("fakesink");
         const Pad pad = static_pad(sink, "sink");
         return Call{{{"element", source}, {"pad", pad}, {"src pad", static_pad(source, "src")}},
                     [source, sink, pad] {
                       return number_from([&] {
                         return Media_Helper::link_element_to_pad(source.get(), pad.get());
                       });
                     }};
       }},
      {"link_element_to_pad", "no src pad",
       [] {
         const Element sink = make_element("fakesink");
         const Pad pad = static_pad(sink, "sink");
         return Call{{{"element", sink}, {"pad", pad}}, [sink, pad] {
                       return number_from([&] {
                         return Media_Helper::link_element_to_pad(sink.get(), pad.get());
                       });
                     }};
       }},
      {"link_element_to_pad", "refused",
       [] {
         const auto [source, sink] = make_linked();
         const Element other = make_element("fakesrc");
         const Pad pad = static_pad(sink, "sink");
         return Call{{{"element", other}, {"pad", pad}, {"src pad", static_pad(other, "src")}},
                     [source = source, sink = sink, other, pad] {
                       return number_from([&] {
                         return Media_Helper::link_element_to_pad(other.get(), pad.get());
                       });
                     }};
       }},
      {"link_element_to_pad", "nulls",
       [] {
         return Call{{}, [] {
                       return number_from(
                           [] { return Media_Helper::link_element_to_pad(nullptr, nullptr); });
                     }};
       }},
      {"link_pad_to_element_or_throw", "linked",
       [] {
         const Element source = make_element("fakesrc", "a_source_with_a_name");
         const Element sink = make_element("fakesink", "a_sink_with_a_name");
         const Pad pad = static_pad(source, "src");
         return Call{{{"source", source},
                      {"pad", pad},
                      {"element", sink},
                      {"sink pad", static_pad(sink, "sink")}},
                     [source, pad, sink] {
                       return done([&] {
                         Media_Helper::link_pad_to_element_or_throw(pad.get(), sink.get());
                       });
                     }};
       }},
      {"link_pad_to_element_or_throw", "refused",
       [] {
         const auto [source, sink] = make_linked();
         const Pad pad = static_pad(source, "src");
         return Call{{{"source", source},
                      {"pad", pad},
                      {"element", sink},
                      {"sink pad", static_pad(sink, "sink")}},
                     [pad, sink = sink] {
                       return done([&] {
                         Media_Helper::link_pad_to_element_or_throw(pad.get(), sink.get());
                       });
                     }};
       }},
      {"link_pad_to_element_or_throw", "a pad of no element, refused",
       [] {
         const auto [source, sink] = make_linked();
         const Pad pad = make_pad("a_pad_of_no_element", GST_PAD_SRC);
         return Call{{{"pad", pad}, {"element", sink}, {"sink pad", static_pad(sink, "sink")}},
                     [pad, source = source, sink = sink] {
                       return done([&] {
                         Media_Helper::link_pad_to_element_or_throw(pad.get(), sink.get());
                       });
                     }};
       }},
      {"link_pad_to_element_or_throw", "no sink pad",
       [] {
         const Element source = make_element("fakesrc", "a_source_with_a_name");
         const Pad pad = static_pad(source, "src");
         return Call{{{"pad", pad}, {"element", source}}, [pad, source] {
                       return done([&] {
                         Media_Helper::link_pad_to_element_or_throw(pad.get(), source.get());
                       });
                     }};
       }},
      {"link_pad_to_element_or_throw", "no element",
       [] {
         const Pad pad = make_pad("src", GST_PAD_SRC);
         return Call{{{"pad", pad}}, [pad] {
                       return done(
                           [&] { Media_Helper::link_pad_to_element_or_throw(pad.get(), nullptr); });
                     }};
       }},
      {"link_pad_to_element_or_throw", "no pad",
       [] {
         const Element sink = make_element("fakesink");
         return Call{{{"element", sink}}, [sink] {
                       return done([&] {
                         Media_Helper::link_pad_to_element_or_throw(nullptr, sink.get());
                       });
                     }};
       }},
      {"gst_element_link_many_or_throw", "a chain of four",
       [] {
         const Element source = make_element("fakesrc", "a_source_with_a_name");
         const Element first = make_element("identity", "the_first_parser");
         const Element second = make_element("identity", "the_second_parser");
         const Element sink = make_element("fakesink", "a_sink_with_a_name");
         return Call{{{"source", source}, {"first", first}, {"second", second}, {"sink", sink}},
                     [source, first, second, sink] {
                       return done([&] {
                         Media_Helper::gst_element_link_many_or_throw(
                             source.get(), first.get(), second.get(), sink.get(), nullptr);
                       });
                     }};
       },
       Trait::KEEPS_PARTIAL_WORK},
      {"gst_element_link_many_or_throw", "the last refuses",
       [] {
         const Element source = make_element("fakesrc", "a_source_with_a_name");
         const Element first = make_element("identity", "the_first_parser");
         const Element other = make_element("fakesrc", "another_source");
         return Call{{{"source", source}, {"first", first}, {"other", other}},
                     [source, first, other] {
                       return done([&] {
                         Media_Helper::gst_element_link_many_or_throw(source.get(), first.get(),
                                                                      other.get(), nullptr);
                       });
                     }};
       },
       Trait::KEEPS_PARTIAL_WORK},
      {"gst_element_link_many_or_throw", "the last is a pad",
       [] {
         const Element source = make_element("fakesrc", "a_source_with_a_name");
         const Element first = make_element("identity", "the_first_parser");
         const Pad pad = make_pad("src", GST_PAD_SRC);
         return Call{{{"source", source}, {"first", first}, {"pad", pad}}, [source, first, pad] {
                       return done([&] {
                         Media_Helper::gst_element_link_many_or_throw(
                             source.get(), first.get(), disguise<GstElement>(pad), nullptr);
                       });
                     }};
       },
       Trait::KEEPS_PARTIAL_WORK},
      {"gst_element_link_many_or_throw", "one element alone",
       [] {
         const Element source = make_element("fakesrc", "a_source_with_a_name");
         return Call{{{"source", source}}, [source] {
                       return done([&] {
                         Media_Helper::gst_element_link_many_or_throw(source.get(), nullptr);
                       });
                     }};
       }},
      {"gst_element_get_static_pad_or_throw", "a pad",
       [] {
         const Element queue = make_element("queue", "a_queue_with_a_name");
         return Call{{{"element", queue}, {"pad", static_pad(queue, "sink")}}, [queue] {
                       return pad_from([&] {
                         return Media_Helper::gst_element_get_static_pad_or_throw(queue.get(),
                                                                                  "sink");
                       });
                     }};
       }},
      {"gst_element_get_static_pad_or_throw", "no pad",
       [] {
         const Element queue = make_element("queue", "a_queue_with_a_name");
         return Call{{{"element", queue}}, [queue] {
                       return pad_from([&] {
                         return Media_Helper::gst_element_get_static_pad_or_throw(
                             queue.get(), "no_pad_of_that_name");
                       });
                     }};
       }},
      {"gst_element_get_static_pad_or_throw", "no element",
       [] {
         return Call{{}, [] {
                       return pad_from([] {
                         return Media_Helper::gst_element_get_static_pad_or_throw(nullptr, "sink");
                       });
                     }};
       }},
      {"add_probe_to_sink_pad_or_throw", "added",
       [] {
         const Element sink = make_element("fakesink", "a_sink_with_a_name");
         return Call{{{"element", sink}, {"pad", static_pad(sink, "sink")}}, [sink] {
                       return done([&] {
                         Media_Helper::add_probe_to_sink_pad_or_throw(
                             sink.get(), GST_PAD_PROBE_TYPE_BUFFER,
                             [](GstPad *, GstPadProbeInfo *, gpointer) { return GST_PAD_PROBE_OK; },
                             nullptr, nullptr);
                       });
                     }};
       }},
      {"add_probe_to_sink_pad_or_throw", "removes itself at once",
       [] {
         const Element sink = make_element("fakesink", "a_sink_with_a_name");
         return Call{
             {{"element", sink}, {"pad", static_pad(sink, "sink")}}, [sink] {
               return done([&] {
                 Media_Helper::add_probe_to_sink_pad_or_throw(
                     sink.get(), GST_PAD_PROBE_TYPE_IDLE,
                     [](GstPad *, GstPadProbeInfo *, gpointer) { return GST_PAD_PROBE_REMOVE; },
                     nullptr, nullptr);
               });
             }};
       }},
      {"add_probe_to_sink_pad_or_throw", "no sink pad",
       [] {
         const Element source = make_element("fakesrc", "a_source_with_a_name");
         return Call{{{"element", source}}, [source] {
                       return done([&] {
                         Media_Helper::add_probe_to_sink_pad_or_throw(
                             source.get(), GST_PAD_PROBE_TYPE_BUFFER, nullptr, nullptr, nullptr);
                       });
                     }};
       }},
      {"add_probe_to_sink_pad_or_throw", "removes itself at once, with data",
       [] {
         const Element sink = make_element("fakesink", "a_sink_with_a_name");
         return Call{{{"element", sink}, {"pad", static_pad(sink, "sink")}},
                     [sink] { return probe_with_data(sink, GST_PAD_PROBE_TYPE_IDLE); }};
       }},
      {"add_probe_to_sink_pad_or_throw", "asks for nothing, with data",
       [] {
         const Element sink = make_element("fakesink", "a_sink_with_a_name");
         return Call{{{"element", sink}, {"pad", static_pad(sink, "sink")}},
                     [sink] { return probe_with_data(sink, GST_PAD_PROBE_TYPE_INVALID); }};
       }},
      {"add_probe_to_sink_pad_or_throw", "no element",
       [] {
         return Call{{}, [] {
                       return done([] {
                         Media_Helper::add_probe_to_sink_pad_or_throw(
                             nullptr, GST_PAD_PROBE_TYPE_BUFFER, nullptr, nullptr, nullptr);
                       });
                     }};
       }},
  };
}

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

std::vector<Scenario> ancestry_scenarios() {
  return {
      {"get_element_sink_peer_pad_or_throw", "linked",
       [] {
         const auto [source, sink] = make_linked();
         return Call{{{"source", source},
                      {"peer", static_pad(source, "src")},
                      {"sink", sink},
                      {"pad", static_pad(sink, "sink")}},
                     [source = source, sink = sink] {
                       return pad_from([&] {
                         return Media_Helper::get_element_sink_peer_pad_or_throw(sink.get());
                       });
                     }};
       }},
      {"get_element_sink_peer_pad_or_throw", "not linked",
       [] {
         const Element sink = make_element("fakesink", "a_sink_with_a_name");
         return Call{{{"sink", sink}, {"pad", static_pad(sink, "sink")}}, [sink] {
                       return pad_from([&] {
                         return Media_Helper::get_element_sink_peer_pad_or_throw(sink.get());
                       });
                     }};
       }},
      {"get_element_sink_peer_pad_or_throw", "no sink pad",
       [] {
         const Element source = make_element("fakesrc", "a_source_with_a_name");
         return Call{{{"source", source}}, [source] {
                       return pad_from([&] {
                         return Media_Helper::get_element_sink_peer_pad_or_throw(source.get());
                       });
                     }};
       }},
      {"get_element_sink_peer_pad_or_throw", "no element",
       [] {
         return Call{{}, [] {
                       return pad_from([] {
                         return Media_Helper::get_element_sink_peer_pad_or_throw(nullptr);
                       });
                     }};
       }},
      {"get_element_sink_peer_or_throw", "linked",
       [] {
         const auto [source, sink] = make_linked();
         return Call{{{"source", source},
                      {"peer", static_pad(source, "src")},
                      {"sink", sink},
                      {"pad", static_pad(sink, "sink")}},
                     [source = source, sink = sink] {
                       return element_from([&] {
                         return Media_Helper::get_element_sink_peer_or_throw(sink.get());
                       });
                     }};
       }},
      {"get_element_sink_peer_or_throw", "linked to a pad of no element",
       [] {
         const Pad pad = make_pad("src", GST_PAD_SRC);
         const Element sink = make_element("fakesink", "a_sink_with_a_name");
         gst_pad_link(pad.get(), static_pad(sink, "sink").get());
         return Call{{{"peer", pad}, {"sink", sink}, {"pad", static_pad(sink, "sink")}},
                     [pad, sink] {
                       return element_from([&] {
                         return Media_Helper::get_element_sink_peer_or_throw(sink.get());
                       });
                     }};
       }},
      {"get_element_sink_peer_or_throw", "not linked",
       [] {
         const Element sink = make_element("fakesink", "a_sink_with_a_name");
         return Call{{{"sink", sink}, {"pad", static_pad(sink, "sink")}}, [sink] {
                       return element_from([&] {
                         return Media_Helper::get_element_sink_peer_or_throw(sink.get());
                       });
                     }};
       }},
      {"get_element_sink_peer_or_throw", "no sink pad",
       [] {
         const Element source = make_element("fakesrc", "a_source_with_a_name");
         return Call{{{"source", source}}, [source] {
                       return element_from([&] {
                         return Media_Helper::get_element_sink_peer_or_throw(source.get());
                       });
                     }};
       }},
      {"get_element_sink_peer_or_throw", "no element",
       [] {
         return Call{{}, [] {
                       return element_from(
                           [] { return Media_Helper::get_element_sink_peer_or_throw(nullptr); });
                     }};
       }},
      {"get_most_parent", "two bins deep",
       [] {
         const Element pipeline = make_element("pipeline", "a_pipeline_with_a_name");
         const Element bin = make_bin("bin");
         const Element element = make_element("identity");
         gst_bin_add(as_bin(pipeline), bin.get());
         gst_bin_add(as_bin(bin), element.get());
         return Call{{{"pipeline", pipeline}, {"bin", bin}, {"element", element}},
                     [pipeline, bin, element] {
                       return element_from(
                           [&] { return Media_Helper::get_most_parent(element.get()); });
                     }};
       }},
      {"get_most_parent", "no parent",
       [] {
         const Element pipeline = make_element("pipeline", "a_pipeline_with_a_name");
         return Call{{{"pipeline", pipeline}}, [pipeline] {
                       return element_from(
                           [&] { return Media_Helper::get_most_parent(pipeline.get()); });
                     }};
       }},
      {"get_most_parent", "no element",
       [] {
         return Call{{}, [] {
                       return element_from([] { return Media_Helper::get_most_parent(nullptr); });
                     }};
       }},
      {"verify_element_top_parent", "its pipeline",
       [] {
         const Element pipeline = make_element("pipeline");
         const Element element = make_element("identity");
         gst_bin_add(as_bin(pipeline), element.get());
         return Call{{{"pipeline", pipeline}, {"element", element}}, [pipeline, element] {
                       return done([&] {
                         Media_Helper::verify_element_top_parent(element.get(), pipeline.get());
                       });
                     }};
       }},
      {"verify_element_top_parent", "another pipeline",
       [] {
         const Element pipeline = make_element("pipeline");
         const Element other = make_element("pipeline");
         const Element element = make_element("identity");
         gst_bin_add(as_bin(pipeline), element.get());
         return Call{{{"pipeline", pipeline}, {"other pipeline", other}, {"element", element}},
                     [pipeline, other, element] {
                       return done([&] {
                         Media_Helper::verify_element_top_parent(element.get(), other.get());
                       });
                     }};
       }},
      {"verify_element_top_parent", "itself, alone",
       [] {
         const Element pipeline = make_element("pipeline");
         return Call{{{"pipeline", pipeline}}, [pipeline] {
                       return done([&] {
                         Media_Helper::verify_element_top_parent(pipeline.get(), pipeline.get());
                       });
                     }};
       }},
      {"verify_element_top_parent", "alone, and not the pipeline",
       [] {
         const Element pipeline = make_element("pipeline");
         const Element element = make_element("identity");
         return Call{{{"pipeline", pipeline}, {"element", element}}, [pipeline, element] {
                       return done([&] {
                         Media_Helper::verify_element_top_parent(element.get(), pipeline.get());
                       });
                     }};
       }},
      {"verify_element_top_parent", "no element",
       [] {
         const Element pipeline = make_element("pipeline");
         return Call{{{"pipeline", pipeline}}, [pipeline] {
                       return done([&] {
                         Media_Helper::verify_element_top_parent(nullptr, pipeline.get());
                       });
                     }};
       }},
      {"verify_element_top_parent", "no pipeline",
       [] {
         const Element element = make_element("identity");
         return Call{{{"element", element}}, [element] {
                       return done([&] {
                         Media_Helper::verify_element_top_parent(element.get(), nullptr);
                       });
                     }};
       }},
  };
}

}  // namespace kel::tavren::tests
