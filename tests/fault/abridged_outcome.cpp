#include "abridged_outcome.h"

#include <regex>
#include <sstream>

namespace kel::tavren::tests {
namespace {

std::string hexadecimal(int code) {
  std::ostringstream text;
  text << "0x" << std::hex << code;
  return text.str();
}

// Returns a pattern whose groups are the class of the error and the inserted values.
std::regex outcome_pattern(const Listed_Error &error) {
  static const std::regex special(R"([.*+?^$|(){}\[\]\\])");
  static const std::regex value("<[^<>]+>");
  const std::string literal = std::regex_replace(error.text, special, R"(\$&)");
  return std::regex("throws (.*)" + hexadecimal(error.code) + " \"" +
                    std::regex_replace(literal, value, "(.*)") + "\"");
}

}  // namespace

std::string title_of(const Listed_Error &error) {
  return error.number == 0 ? error.name : error.name + " " + std::to_string(error.number);
}

const Listed_Error *find_listed_error(const std::string &outcome) {
  for (const Listed_Error &error : listed_errors()) {
    if (outcome.find(hexadecimal(error.code)) == std::string::npos) continue;
    if (std::regex_match(outcome, outcome_pattern(error))) return &error;
  }
  return nullptr;
}

std::string abridge(const std::string &outcome) {
  const Listed_Error *const error = find_listed_error(outcome);
  if (error == nullptr) return outcome;
  std::smatch parts;
  std::regex_match(outcome, parts, outcome_pattern(*error));
  std::string abridged = "throws " + parts[1].str() + title_of(*error);
  for (std::size_t i = 2; i < parts.size(); ++i)
    abridged += " \"" + parts[i].str() + "\"";
  return abridged;
}

}  // namespace kel::tavren::tests
