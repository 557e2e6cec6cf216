// The errors of the library as docs/errors.md lists them. error_codes_test compares each text with
// a literal; other tests take the texts from the page.

#ifndef TAVREN_TESTS_LISTED_ERRORS_H
#define TAVREN_TESTS_LISTED_ERRORS_H

#include <string>
#include <vector>

namespace kel::tavren::tests {

// One text of a code. <...> marks a value that the library inserts.
struct Listed_Error {
  int code;
  std::string name;
  // A code with several texts numbers them from 1; otherwise the number is 0.
  int number;
  std::string text;
};

const std::vector<Listed_Error> &listed_errors();

// An error that a test expects, with the inserted values.
struct Expected_Error {
  int code = 0;
  std::vector<std::string> values = {};
  int number = 0;
};

// Returns the whole text. Throws if the page does not list such a text.
std::string text_of(const Expected_Error &error);

}  // namespace kel::tavren::tests

#endif
