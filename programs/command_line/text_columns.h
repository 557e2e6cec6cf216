// Prints text tables with columns as wide as their widest cell.

#ifndef TAVREN_PROGRAMS_TEXT_COLUMNS_H
#define TAVREN_PROGRAMS_TEXT_COLUMNS_H

#include <iosfwd>
#include <string>
#include <vector>

namespace kel::tavren::programs {

using Text_Row = std::vector<std::string>;

// Writes one row per line, with two spaces between columns. All rows have as many cells as the
// first one.
void print_columns(std::ostream &out, const std::vector<Text_Row> &rows);

}  // namespace kel::tavren::programs

#endif
