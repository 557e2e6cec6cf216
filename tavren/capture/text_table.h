// Not installed: how the sources here write tables from keys to texts.

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

// The rows as an ordered map. Each text is made where it stays: none is copied. A row that follows
// the one before in order is compared with that one only.
template <typename Key, std::size_t Size>
std::map<Key, std::string> make_text_table(const Text_Row<Key> (&rows)[Size]) {
  std::map<Key, std::string> table;
  for (const Text_Row<Key> &row : rows)
    table.emplace_hint(table.end(), row.key, row.text);
  return table;
}

// The text of a key, or the fallback when the key has none.
template <typename Key>
std::string text_or(const std::map<Key, std::string> &table, Key key, const char *fallback) {
  const auto row = table.find(key);
  return row != table.end() ? row->second : fallback;
}

}  // namespace kel::tavren::capture

#endif
