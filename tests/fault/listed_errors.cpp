#include "listed_errors.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

#include <glib.h>

namespace kel::tavren::tests {
namespace {

// In the text, <...> marks an inserted value.
std::regex outcome_pattern(std::string code, const std::string &text) {
  static const std::regex special(R"([.*+?^$|(){}\[\]\\])");
  static const std::regex value("<[^<>]+>");
  for (char &c : code)
    c = g_ascii_tolower(c);
  const std::string literal = std::regex_replace(text, special, R"(\$&)");
  return std::regex("throws (.*)" + code + " \"" + std::regex_replace(literal, value, "(.*)") +
                    "\"");
}

std::vector<Listed_Error> read_page() {
  static const std::regex heading("### (0x[0-9A-F]+) ([A-Z_]+)");
  std::vector<Listed_Error> errors;
  std::ifstream page(ERRORS_PAGE);
  std::smatch section;
  std::string title;
  for (std::string line; std::getline(page, line);) {
    if (line.rfind("### ", 0) == 0) title = line;
    if (line != "```text" || !std::regex_match(title, section, heading)) continue;
    std::vector<std::string> texts;
    while (std::getline(page, line) && line != "```")
      texts.push_back(line);
    for (std::size_t i = 0; i < texts.size(); ++i) {
      const std::string number = texts.size() > 1 ? " " + std::to_string(i + 1) : "";
      errors.push_back({section[2].str() + number, outcome_pattern(section[1], texts[i])});
    }
  }
  if (errors.empty()) throw std::runtime_error("no errors in " ERRORS_PAGE);
  return errors;
}

}  // namespace

const std::vector<Listed_Error> &listed_errors() {
  static const std::vector<Listed_Error> errors = read_page();
  return errors;
}

const Listed_Error *find_listed_error(const std::string &outcome) {
  const auto found =
      std::find_if(listed_errors().begin(), listed_errors().end(), [&](const Listed_Error &error) {
        return std::regex_match(outcome, error.outcome);
      });
  return found != listed_errors().end() ? &*found : nullptr;
}

std::string abridge(const std::string &outcome) {
  const Listed_Error *const error = find_listed_error(outcome);
  if (error == nullptr) return outcome;
  std::smatch parts;
  std::regex_match(outcome, parts, error->outcome);
  std::string abridged = "throws " + parts[1].str() + error->name;
  for (std::size_t i = 2; i < parts.size(); ++i)
    abridged += " \"" + parts[i].str() + "\"";
  return abridged;
}

}  // namespace kel::tavren::tests
