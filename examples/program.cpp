#include "program.h"

#include <iomanip>
#include <iostream>
#include <memory>
#include <sstream>

#include <tavren/capture/media_helper.h>

namespace kel::tavren::examples {

namespace {

using Text = std::unique_ptr<char, Emancipator<char>>;

std::string text_of(GstMessage *message) {
  GError *error = nullptr;
  gchar *details = nullptr;
  if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_WARNING)
    gst_message_parse_warning(message, &error, &details);
  else
    gst_message_parse_error(message, &error, &details);
  const Text owned_details(details);
  const std::unique_ptr<GError, decltype(&g_error_free)> owned_error(error, g_error_free);

  std::ostringstream text;
  text << g_quark_to_string(error->domain) << ' ' << error->code << ": " << error->message
       << " (from " << GST_MESSAGE_SRC_NAME(message) << ')';
  return text.str();
}

void print_failure(const char *program, const std::exception &error) {
  const std::unique_ptr<char, Emancipator<char>> name(g_path_get_basename(program));
  std::cerr << name.get() << ": error ";
  if (const auto *coded = dynamic_cast<const Tavren_Error<std::exception> *>(&error))
    std::cerr << "0x" << std::hex << std::uppercase << coded->code() << std::dec << ": ";
  std::cerr << error.what() << std::endl;
}

}  // namespace

Bus_Error::Bus_Error(GstMessage *message) : std::runtime_error(text_of(message)) {}

int run_program(int argc, char **argv, const char *summary, const GOptionEntry *options,
                const std::function<void(int argc, char **argv)> &body) {
  const std::string program = argv[0];
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
    body(argc, argv);
    return 0;
  } catch (const std::exception &error) {
    print_failure(program.c_str(), error);
    return 1;
  }
}

}  // namespace kel::tavren::examples
