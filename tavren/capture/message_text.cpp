#include <tavren/capture/message_text.h>

#include <locale>

#include <boost/format.hpp>

namespace kel::tavren::capture {

Text object_name(gpointer object) noexcept {
  return Text(gst_object_get_name(GST_OBJECT_CAST(object)));
}

const char *factory_name(GstElement *element) noexcept {
  GstElementFactory *const factory = gst_element_get_factory(element);
  return factory != nullptr ? gst_element_factory_get_metadata(factory, "name") : nullptr;
}

std::ios &rethrow_failures(std::ios &stream) {
  stream.exceptions(std::ios::badbit);
  return stream;
}

std::string fill(const char *format, std::initializer_list<const char *> values) {
  boost::format text(format, std::locale::classic());
  for (const char *const value : values)
    text % boost::io::group(rethrow_failures, value != nullptr ? value : "");
  return text.str();
}

}  // namespace kel::tavren::capture
