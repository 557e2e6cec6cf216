#include "program.h"

#include <iostream>
#include <memory>

#include <tavren/capture/media_helper.h>

namespace kel::tavren::programs {

namespace {

using Text = std::unique_ptr<char, Emancipator<char>>;

std::string coded(GQuark domain, int code, const std::string &text) {
  return std::string(g_quark_to_string(domain)) + ' ' + std::to_string(code) + ": " + text;
}

std::string text_of(GstMessage *message) {
  GError *error = nullptr;
  gchar *details = nullptr;
  if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_WARNING)
    gst_message_parse_warning(message, &error, &details);
  else
    gst_message_parse_error(message, &error, &details);
  const Text owned_details(details);
  const std::unique_ptr<GError, decltype(&g_error_free)> owned_error(error, g_error_free);

  return coded(error->domain, error->code,
               std::string(error->message) + " (from " + GST_MESSAGE_SRC_NAME(message) + ')');
}

}  // namespace

Bus_Error::Bus_Error(GstMessage *message) : std::runtime_error(text_of(message)) {}

Bus_Error::Bus_Error(GstResourceError error, const std::string &text)
    : std::runtime_error(coded(GST_RESOURCE_ERROR, error, text)) {}

//! [tell a failure]
void print_failure(const std::string &subject, const std::exception &error) {
  std::cerr << subject << ": error ";
  if (const auto *coded_error = dynamic_cast<const Tavren_Error<std::exception> *>(&error))
    std::cerr << "0x" << std::hex << std::uppercase << coded_error->code() << std::dec << ": ";
  std::cerr << error.what() << std::endl;
}
//! [tell a failure]

int run_program(int argc, char **argv, const char *summary, const GOptionEntry *options,
                const std::function<void()> &body) {
  const Text program(g_path_get_basename(argv[0]));
  try {
    const std::unique_ptr<GOptionContext, decltype(&g_option_context_free)> context(
        g_option_context_new(nullptr), g_option_context_free);
    g_option_context_set_summary(context.get(), summary);
    g_option_context_add_main_entries(context.get(), options, nullptr);
    g_option_context_add_group(context.get(), gst_init_get_option_group());
    GError *error = nullptr;
    if (!g_option_context_parse(context.get(), &argc, &argv, &error)) {
      const std::unique_ptr<GError, decltype(&g_error_free)> owned(error, g_error_free);
      throw std::runtime_error(error->message);
    }
    if (argc > 1) throw std::runtime_error(std::string("unexpected argument ") + argv[1]);
    body();
    return 0;
  } catch (const std::exception &error) {
    print_failure(program.get(), error);
    return 1;
  }
}

}  // namespace kel::tavren::programs
