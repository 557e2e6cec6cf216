#include "program.h"

#include <clocale>
#include <iostream>
#include <memory>
#include <sstream>

#include <tavren/capture/media_helper.h>

namespace kel::tavren::programs {

namespace {

using Text = std::unique_ptr<char, Emancipator<char>>;

std::string code_text(GQuark domain, int code) {
  return std::string(g_quark_to_string(domain)) + ' ' + std::to_string(code);
}

// Returns the code of an exception of the library: 0x15010. Empty for other exceptions.
std::string library_code(const std::exception &error) {
  const auto *const coded_error = dynamic_cast<const Tavren_Error<std::exception> *>(&error);
  if (coded_error == nullptr) return "";
  std::ostringstream text;
  text << "0x" << std::hex << std::uppercase << coded_error->code();
  return text.str();
}

// Returns the reason in an element's debug text: the text after the source location.
std::string reason_in(const char *debug) {
  const std::string text = debug != nullptr ? debug : "";
  const std::size_t line_end = text.find('\n');
  std::string reason = line_end == std::string::npos ? "" : text.substr(line_end + 1);
  for (char &character : reason)
    if (character == '\n') character = ' ';
  return reason;
}

// Quotes an argument in a message. An address may contain a password.
std::string quoted(const std::string &argument) {
  return argument.find('@') == std::string::npos ? argument : "(an address)";
}

}  // namespace

struct Bus_Error::Report {
  explicit Report(GstMessage *message) {
    GError *error = nullptr;
    gchar *debug = nullptr;
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_WARNING)
      gst_message_parse_warning(message, &error, &debug);
    else
      gst_message_parse_error(message, &error, &debug);
    const Text owned_debug(debug);
    const std::unique_ptr<GError, decltype(&g_error_free)> owned_error(error, g_error_free);
    domain = error->domain;
    code = error->code;
    text = std::string(error->message) + " (from " + GST_MESSAGE_SRC_NAME(message) + ')';
    if (const std::string reason = reason_in(debug); !reason.empty()) text += ": " + reason;
  }

  GQuark domain = 0;
  int code = 0;
  std::string text;
};

Bus_Error::Bus_Error(GstMessage *message) : Bus_Error(Report(message)) {}

Bus_Error::Bus_Error(const Report &report)
    : std::runtime_error(code_text(report.domain, report.code) + ": " + report.text),
      domain_(report.domain), code_(report.code) {}

Bus_Error::Bus_Error(GstResourceError error, const std::string &text)
    : std::runtime_error(code_text(GST_RESOURCE_ERROR, error) + ": " + text),
      domain_(GST_RESOURCE_ERROR), code_(error) {}

std::string Bus_Error::code() const {
  return code_text(domain_, code_);
}

std::string failure_code(const std::exception_ptr &failure) {
  try {
    std::rethrow_exception(failure);
  } catch (const Bus_Error &error) {
    return error.code();
  } catch (const std::exception &error) {
    return library_code(error);
  }
}

std::string failure_text(const std::exception_ptr &failure) {
  try {
    std::rethrow_exception(failure);
  } catch (const std::exception &error) {
    return error.what();
  }
}

//! [print a failure]
void print_failure(const std::string &subject, const std::exception &error) {
  const std::string code = library_code(error);
  std::cerr << subject << ": error " << code << (code.empty() ? "" : ": ") << error.what()
            << std::endl;
}
//! [print a failure]

int run_program(int argc, char **argv, const char *summary, std::vector<GOptionEntry> options,
                const std::function<void()> &body) {
  // GLib converts the help to the locale's encoding. Without that locale it stays in ASCII.
  // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread runs yet.
  static_cast<void>(std::setlocale(LC_CTYPE, ""));
  const Text program(g_path_get_basename(argv[0]));
  try {
    const std::unique_ptr<GOptionContext, decltype(&g_option_context_free)> context(
        g_option_context_new(nullptr), g_option_context_free);
    g_option_context_set_summary(context.get(), summary);
    int version = 0;
    options.push_back({"version", 0, 0, G_OPTION_ARG_NONE, &version, "print the version", nullptr});
    options.push_back({nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr});
    g_option_context_add_main_entries(context.get(), options.data(), nullptr);
    g_option_context_add_group(context.get(), gst_init_get_option_group());
    GError *error = nullptr;
    if (!g_option_context_parse(context.get(), &argc, &argv, &error)) {
      const std::unique_ptr<GError, decltype(&g_error_free)> owned(error, g_error_free);
      throw std::runtime_error(error->message);
    }
    if (version != 0) {
      std::cout << program.get() << ' ' << TAVREN_CAPTURE_VERSION << std::endl;
      return 0;
    }
    if (argc > 1) throw std::runtime_error("unexpected argument " + quoted(argv[1]));
    body();
    return 0;
  } catch (const std::exception &error) {
    print_failure(program.get(), error);
    return 1;
  }
}

}  // namespace kel::tavren::programs
