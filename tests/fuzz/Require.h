// Checks of fuzz targets.

#ifndef TESTS_FUZZ_REQUIRE_H
#define TESTS_FUZZ_REQUIRE_H

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "agent/base/TextChecks.h"

namespace fuzz {

// Ends the program with the text when the condition is false, so that libFuzzer keeps the input.
// Thread-safety: any thread. Owns nothing. Errors: none.
inline void require(bool condition, const std::string& text) {
  if (!condition) {
    std::fprintf(stderr, "fuzz: %s\n", text.c_str());
    std::abort();
  }
}

// Requires one line of valid UTF-8. Thread-safety: any thread.
inline void requireOneLine(std::string_view line) {
  const bool isOneLine = std::none_of(line.begin(), line.end(), [](char character) {
    return static_cast<unsigned char>(character) < 0x20;
  });
  require(isOneLine, "a line has a control character");
  require(!agent::findInvalidUtf8(line), "a line is not UTF-8");
}

// As requireOneLine(), also without the character DEL. Thread-safety: any thread.
inline void requirePrintable(std::string_view line) {
  requireOneLine(line);
  require(line.find('\x7f') == std::string_view::npos, "a line has a control character");
}

}  // namespace fuzz

#endif
