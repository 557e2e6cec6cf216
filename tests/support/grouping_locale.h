// A global C++ locale with an unusual number format.

#ifndef TAVREN_TESTS_GROUPING_LOCALE_H
#define TAVREN_TESTS_GROUPING_LOCALE_H

#include <locale>
#include <string>

namespace kel::tavren::tests {

// Groups digits and uses a decimal comma, until the end of its scope.
class Grouping_Locale {
public:
  explicit Grouping_Locale(const char *groups = "\3")
      : previous_(
            std::locale::global(std::locale(std::locale::classic(), new Punctuation(groups)))) {}
  ~Grouping_Locale() { std::locale::global(previous_); }

  Grouping_Locale(const Grouping_Locale &) = delete;
  Grouping_Locale &operator=(const Grouping_Locale &) = delete;

private:
  class Punctuation : public std::numpunct<char> {
  public:
    explicit Punctuation(const char *groups) : groups_(groups) {}

  private:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return groups_; }

    std::string groups_;
  };

  std::locale previous_;
};

}  // namespace kel::tavren::tests

#endif
