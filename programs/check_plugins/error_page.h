// The page on errors, docs/errors.md, which the build compiles into the program.

#ifndef TAVREN_PROGRAMS_ERROR_PAGE_H
#define TAVREN_PROGRAMS_ERROR_PAGE_H

#include <string_view>

namespace kel::tavren::programs {

extern const std::string_view error_page;

}  // namespace kel::tavren::programs

#endif
