// Checks for exceptions of the library: class, code and whole text.

#ifndef TAVREN_TESTS_ERRORS_H
#define TAVREN_TESTS_ERRORS_H

#include <string>
#include <utility>

#include <gtest/gtest.h>
#include <tavren/capture/media_helper.h>

#include "listed_errors.h"

namespace kel::tavren::tests {

// Runs a call that must throw Backend_Error<std::runtime_error>, and compares the error's code and
// whole text.
template <typename Call>
void expect_error(int code, const std::string &text, Call &&call) {
  try {
    call();
  } catch (const Backend_Error<std::runtime_error> &error) {
    const Tavren_Error<std::exception> &root = error;
    EXPECT_EQ(static_cast<int>(root.code()), code);
    EXPECT_EQ(std::string(error.what()), text);
    return;
  } catch (const std::exception &error) {
    ADD_FAILURE() << "threw another class: " << error.what();
    return;
  }
  ADD_FAILURE() << "threw nothing; expected: " << text;
}

// The text is that of docs/errors.md.
template <typename Call>
void expect_error(const Expected_Error &error, Call &&call) {
  expect_error(error.code, text_of(error), std::forward<Call>(call));
}

}  // namespace kel::tavren::tests

#endif
