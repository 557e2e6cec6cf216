// The errors of the library as docs/errors.md lists them.

#ifndef TAVREN_TESTS_LISTED_ERRORS_H
#define TAVREN_TESTS_LISTED_ERRORS_H

#include <regex>
#include <string>
#include <vector>

namespace kel::tavren::tests {

// One text of a code.
struct Listed_Error {
  // The name of the code and, if the code has several texts, the number of the text.
  std::string name;
  // Matches an outcome with this code and text. Its groups are the class of the error and the
  // values that the library inserts into the text.
  std::regex outcome;
};

const std::vector<Listed_Error> &listed_errors();

// Returns the error that is thrown in an outcome, or null if it is not listed.
const Listed_Error *find_listed_error(const std::string &outcome);

// Replaces the code and the text of an error by its name and the inserted values.
std::string abridge(const std::string &outcome);

}  // namespace kel::tavren::tests

#endif
