// Explains an error code of the library with its section in the page on errors.

#ifndef TAVREN_PROGRAMS_ERROR_EXPLANATION_H
#define TAVREN_PROGRAMS_ERROR_EXPLANATION_H

#include <string>

namespace kel::tavren::programs {

// Returns the section as plain text: the number and the name, the operations that throw the code,
// the message, the cause, and what to check. The code is a number in hexadecimal, with or without
// "0x", or in decimal, or a name; case does not matter. Throws std::runtime_error for any other.
std::string explain_error(const std::string &code);

}  // namespace kel::tavren::programs

#endif
