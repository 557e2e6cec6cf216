// The outcomes of the fault tests without the texts that docs/errors.md lists.

#ifndef TAVREN_TESTS_ABRIDGED_OUTCOME_H
#define TAVREN_TESTS_ABRIDGED_OUTCOME_H

#include <string>

#include "listed_errors.h"

namespace kel::tavren::tests {

// The name of a code and, if the code has several texts, the number of the text.
std::string title_of(const Listed_Error &error);

// Returns the error that is thrown in an outcome, or null if it is not listed.
const Listed_Error *find_listed_error(const std::string &outcome);

// Replaces the code and the text of a listed error by its title and the inserted values.
std::string abridge(const std::string &outcome);

}  // namespace kel::tavren::tests

#endif
