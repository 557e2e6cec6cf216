#include "text_columns.h"

#include <algorithm>
#include <ostream>

namespace kel::tavren::programs {

void print_columns(std::ostream &out, const std::vector<Text_Row> &rows) {
  if (rows.empty()) return;
  std::vector<std::size_t> widths(rows.front().size(), 0);
  for (const Text_Row &row : rows)
    for (std::size_t i = 0; i < widths.size(); ++i)
      widths[i] = std::max(widths[i], row[i].size());

  for (const Text_Row &row : rows) {
    std::string line;
    for (std::size_t i = 0; i < widths.size(); ++i)
      line += row[i] + std::string(widths[i] - row[i].size() + 2, ' ');
    out << line.substr(0, line.find_last_not_of(' ') + 1) << '\n';
  }
}

}  // namespace kel::tavren::programs
