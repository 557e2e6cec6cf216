// Parts of file names.

#ifndef TAVREN_PROGRAMS_FILE_NAMES_H
#define TAVREN_PROGRAMS_FILE_NAMES_H

#include <string>

namespace kel::tavren::programs {

// A regular expression for the end of a name with a UTC time and, if there were several in that
// second, a number: -20261231T235959Z or -20261231T235959Z-0001.
constexpr const char *time_ending_pattern = "-[0-9]{8}T[0-9]{6}Z(-[0-9]{4,})?";

// Returns the current UTC time in that form: 20261231T235959Z.
std::string utc_now_in_name();

// Returns a number with at least four digits.
std::string four_digits(unsigned int number);

}  // namespace kel::tavren::programs

#endif
