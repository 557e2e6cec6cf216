#include "listed_errors.h"

#include <fstream>
#include <regex>
#include <stdexcept>

namespace kel::tavren::tests {
namespace {

// Reads the lines of a code block, of which the first has been read.
std::vector<std::string> read_block(std::istream &page) {
  std::vector<std::string> lines;
  for (std::string line; std::getline(page, line) && line != "```";)
    lines.push_back(line);
  return lines;
}

std::vector<Listed_Error> read_page() {
  static const std::regex heading("### (0x[0-9A-F]+) ([A-Z_]+)");
  std::vector<Listed_Error> errors;
  std::ifstream page(ERRORS_PAGE);
  int code = 0;
  std::string name;
  for (std::string line; std::getline(page, line);) {
    if (std::smatch parts; std::regex_match(line, parts, heading)) {
      code = std::stoi(parts[1], nullptr, 16);
      name = parts[2];
    }
    if (line != "```text" || code == 0) continue;
    const std::vector<std::string> texts = read_block(page);
    int number = texts.size() > 1 ? 1 : 0;
    for (const std::string &text : texts)
      errors.push_back({code, name, number++, text});
  }
  if (errors.empty()) throw std::runtime_error("no errors in " ERRORS_PAGE);
  return errors;
}

const std::string &find_text(int code, int number) {
  for (const Listed_Error &listed : listed_errors())
    if (listed.code == code && listed.number == number) return listed.text;
  throw std::runtime_error("no such text in " ERRORS_PAGE);
}

}  // namespace

const std::vector<Listed_Error> &listed_errors() {
  static const std::vector<Listed_Error> errors = read_page();
  return errors;
}

std::string text_of(const Expected_Error &error) {
  std::string text = find_text(error.code, error.number);
  std::size_t mark = text.find('<');
  for (const std::string &value : error.values) {
    if (mark == std::string::npos) throw std::runtime_error("too many values: " + text);
    text.replace(mark, text.find('>', mark) + 1 - mark, value);
    mark = text.find('<', mark + value.size());
  }
  if (mark != std::string::npos) throw std::runtime_error("too few values: " + text);
  return text;
}

}  // namespace kel::tavren::tests
