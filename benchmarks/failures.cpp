// The cost of a failure: detecting it, formatting the message, reporting and catching it.

#include <exception>
#include <stdexcept>
#include <string>

#include <benchmark/benchmark.h>

#include "gstreamermm_calls.h"
#include "library_calls.h"
#include "owned.h"
#include "raw_calls.h"
#include "trial.h"

namespace kel::tavren::benchmarks {

namespace {

using benchmark::DoNotOptimize;

// Frees the message of a hand-written failure.
void drop_message(gchar *message) {
  DoNotOptimize(message);
  g_free(message);
}

template <typename Step>
void must_throw(Step step) {
  try {
    step();
  } catch (const std::exception &error) {
    DoNotOptimize(error.what());
    return;
  }
  require(false, "failing");
}

// Two elements in one bin whose caps are incompatible.
struct Strangers {
  Owned_Element bin = owned(gst_pipeline_new(nullptr));
  GstElement *video = gst_element_factory_make("h264parse", nullptr);
  GstElement *audio = gst_element_factory_make("mulawdec", nullptr);

  Strangers() { gst_bin_add_many(GST_BIN_CAST(bin.get()), video, audio, nullptr); }
};

void add_refused_link(Programme &programme) {
  const Strangers strangers;
  const Owned_Element bin = strangers.bin;
  GstElement *const video = strangers.video;
  GstElement *const audio = strangers.audio;

  programme.add_call(
      "failures/a refused link", "raw",
      [bin, video, audio] {
        require(GST_IS_ELEMENT(video) && GST_IS_ELEMENT(audio), "the check of elements");
        require(!gst_element_link(video, audio), "failing");
        gchar *const video_name = gst_object_get_name(GST_OBJECT_CAST(video));
        gchar *const audio_name = gst_object_get_name(GST_OBJECT_CAST(audio));
        drop_message(g_strdup_printf("Failed to link element \"%s\" and element \"%s\".",
                                     video_name, audio_name));
        g_free(audio_name);
        g_free(video_name);
      },
      1);
  programme.add_call(
      "failures/a refused link", "library",
      [bin, video, audio] {
        must_throw([video, audio] {
          Media_Helper::gst_element_link_many_or_throw(video, audio, nullptr);
        });
      },
      1);
  const Gstreamermm_Calls::Element seen_video = Gstreamermm_Calls::see(video);
  const Gstreamermm_Calls::Element seen_audio = Gstreamermm_Calls::see(audio);
  programme.add_call(
      "failures/a refused link", "gstreamermm",
      [bin, seen_video, seen_audio] {
        must_throw([&seen_video, &seen_audio] { seen_video->link(seen_audio); });
      },
      1);
}

void add_unknown_factory(Programme &programme) {
  programme.add_call("failures/an unknown factory", "raw", [] {
    require(gst_element_factory_make("nosuchelement", nullptr) == nullptr, "failing");
    drop_message(g_strdup_printf("Could not create %s %s", "nosuchelement", ""));
  });
  programme.add_call("failures/an unknown factory", "library", [] {
    must_throw([] { Media_Helper::gst_element_factory_make_or_throw("nosuchelement", ""); });
  });
  // Returns null without reporting an error.
  programme.add_call("failures/an unknown factory", "gstreamermm", [] {
    require(!Gst::ElementFactory::create_element("nosuchelement"), "failing");
  });
}

void add_bad_argument(Programme &programme) {
  const Owned_Element queue = owned(gst_element_factory_make("queue", nullptr));
  const Owned_Pad pad(gst_element_get_static_pad(queue.get(), "sink"), false);
  GstElement *const no_element = reinterpret_cast<GstElement *>(pad.get());
  programme.add_call("failures/a bad argument", "raw", [pad, no_element] {
    require(!GST_IS_ELEMENT(no_element), "failing");
    drop_message(g_strconcat("element in gst_element_get_static_pad_or_throw",
                             " is not a GstElement *.", nullptr));
  });
  programme.add_call("failures/a bad argument", "library", [pad, no_element] {
    must_throw(
        [no_element] { Media_Helper::gst_element_get_static_pad_or_throw(no_element, "sink"); });
  });
}

}  // namespace

void add_failures(Programme &programme) {
  add_refused_link(programme);
  add_unknown_factory(programme);
  add_bad_argument(programme);
}

}  // namespace kel::tavren::benchmarks
