// Handles errors by code: a bad argument, a missing plugin, a refused link.

#include <functional>
#include <iostream>

#include <tavren/capture/media_helper.h>

using kel::tavren::Backend_Error;
using kel::tavren::capture::Media_Helper;
namespace TEC = kel::tavren::TEC;

namespace {

using Element = boost::intrusive_ptr<GstElement>;

const char *advice_for(TEC::Tavren_Error_Code code) {
  switch (code) {
  case TEC::NOT_AN_ELEMENT:
    return "pass an element that is not null";
  case TEC::ELEMENT_CREATION_FAILED:
    return "install the plugin with this element";
  case TEC::ELEMENT_LINK_FAILED:
    return "compare the caps of the two elements";
  default:
    return "see docs/errors.md";
  }
}

void attempt(const std::function<void()> &step) {
  try {
    step();
  } catch (const Backend_Error<std::runtime_error> &error) {
    std::cout << "0x" << std::hex << error.code() << ": " << error.what() << '\n'
              << "  " << advice_for(error.code()) << '\n';
  }
}

Element make(const std::string &factory) {
  return Element(GST_ELEMENT(gst_object_ref_sink(
                     Media_Helper::gst_element_factory_make_or_throw(factory, factory))),
                 false);
}

}  // namespace

int main(int argc, char **argv) {
  gst_init(&argc, &argv);
  attempt([] { Media_Helper::get_tee_src_pad(nullptr); });
  attempt([] { make("no-such-element"); });
  attempt([] {
    const Element camera = make("videotestsrc");
    const Element speaker = make("audioresample");
    Media_Helper::gst_element_link_many_or_throw(camera.get(), speaker.get(), nullptr);
  });
}
