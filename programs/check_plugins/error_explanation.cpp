#include "check_plugins/error_explanation.h"

#include <algorithm>
#include <iterator>
#include <regex>
#include <sstream>
#include <stdexcept>

#include <glib.h>

#include "check_plugins/error_page.h"

namespace kel::tavren::programs {

namespace {

// A heading is the number and the name: "0x15010 NO_PROXY_ELEMENTS_FOR_CAPS".
bool names_code(const std::string &heading, const std::string &code) {
  const std::size_t space = heading.find(' ');
  const std::string number = heading.substr(0, space);
  const std::string spellings[] = {number, number.substr(2),
                                   std::to_string(std::stoul(number, nullptr, 16)),
                                   heading.substr(space + 1)};
  return std::any_of(std::begin(spellings), std::end(spellings),
                     [&code](const std::string &spelling) {
                       return g_ascii_strcasecmp(spelling.c_str(), code.c_str()) == 0;
                     });
}

// Returns the section on a code, without the marker of its heading.
std::string section_on(const std::string &code) {
  const std::string page(error_page);
  const std::string marker = "\n### ";
  for (std::size_t begin = page.find(marker); begin != std::string::npos;) {
    begin += marker.size();
    const std::size_t end = page.find(marker, begin);
    if (names_code(page.substr(begin, page.find('\n', begin) - begin), code))
      return page.substr(begin, end - begin);
    begin = end;
  }
  throw std::runtime_error("the library has no error code \"" + code +
                           "\"; give a number, such as 0x152E0, or a name");
}

// Replaces links with their text, and indents code blocks instead of fencing them.
std::string plain_text(const std::string &markdown) {
  static const std::regex link(R"(\[([^\]]*)\]\([^)]*\))");
  std::istringstream lines(std::regex_replace(markdown, link, "$1"));
  std::string text;
  bool in_block = false;
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind("```", 0) == 0)
      in_block = !in_block;
    else
      text += (in_block ? "    " : "") + line + '\n';
  }
  return text;
}

}  // namespace

std::string explain_error(const std::string &code) {
  return plain_text(section_on(code));
}

}  // namespace kel::tavren::programs
