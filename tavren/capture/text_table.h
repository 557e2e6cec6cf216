// Not installed: tables that map keys to strings.

#ifndef TAVREN_CAPTURE_TEXT_TABLE_H
#define TAVREN_CAPTURE_TEXT_TABLE_H

#include <cstddef>
#include <map>
#include <string>

namespace kel::tavren::capture {

template <typename Key>
struct Text_Row {
  Key key;
  const char *text;
};

// Returns the rows as an ordered map. The strings are constructed in place, not copied. A row that
// is in order is compared only with the previous row.
template <typename Key, std::size_t Size>
std::map<Key, std::string> make_text_table(const Text_Row<Key> (&rows)[Size]) {
  std::map<Key, std::string> table;
  for (const Text_Row<Key> &row : rows)
    table.emplace_hint(table.end(), row.key, row.text);
  return table;
}

// Returns the text of a key, or the fallback if the key is not in the table.
template <typename Key>
std::string text_or(const std::map<Key, std::string> &table, Key key, const char *fallback) {
  const auto row = table.find(key);
  return row != table.end() ? row->second : fallback;
}

}  // namespace kel::tavren::capture

#endif
