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

void throw_quoting(TEC::Tavren_Error_Code code, const char *before, const std::string &text,
                   const char *after) {
  throw Error(code, before + text + after);
}

void throw_naming(TEC::Tavren_Error_Code code, const char *format, GstElement *element) {
  throw Error(code, fill(format, {object_name(element).get()}));
}

void throw_naming_with_factory(TEC::Tavren_Error_Code code, const char *format,
                               GstElement *element) {
  throw Error(code, fill(format, {object_name(element).get(), factory_name(element)}));
}

}  // namespace kel::tavren::capture
