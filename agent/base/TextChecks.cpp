#include "agent/base/TextChecks.h"

#include <utf8.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "agent/base/FailureCodes.h"

namespace agent {

namespace {

bool isAscii(char character) {
  return static_cast<unsigned char>(character) < 0x80;
}

// The first byte at or after `start` that is not ASCII, or the end of the text.
std::size_t endOfAscii(std::string_view text, std::size_t start) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080;
  std::uint64_t word = 0;
  while (text.size() - start >= sizeof word) {
    std::memcpy(&word, text.data() + start, sizeof word);
    if ((word & kHighBits) != 0) {
      break;
    }
    start += sizeof word;
  }
  while (start < text.size() && isAscii(text[start])) {
    ++start;
  }
  return start;
}

}  // namespace

// Checks each run of bytes that are not ASCII, because a character of UTF-8 has either one ASCII
// byte or no ASCII byte.
std::optional<std::size_t> findInvalidUtf8(std::string_view text) {
  for (std::size_t start = endOfAscii(text, 0); start < text.size();) {
    const auto run = text.begin() + static_cast<std::ptrdiff_t>(start);
    const auto end = std::find_if(run, text.end(), isAscii);
    if (const auto invalid = utf8::find_invalid(run, end); invalid != end) {
      return static_cast<std::size_t>(invalid - text.begin());
    }
    start = endOfAscii(text, static_cast<std::size_t>(end - text.begin()));
  }
  return std::nullopt;
}

std::string problemWith(std::string_view text) {
  if (text.size() > kMostTextBytes) {
    return "has more than " + std::to_string(kMostTextBytes) + " bytes";
  }
  if (text.find('\0') != std::string_view::npos) {
    return "contains a NUL character";
  }
  const auto invalid = findInvalidUtf8(text);
  return invalid ? "is not UTF-8 at byte " + std::to_string(*invalid) : std::string();
}

Outcome checkText(const std::string& subject, std::string_view text) {
  const std::string problem = problemWith(text);
  return problem.empty() ? Outcome() : Outcome{kInvalidName, subject + ' ' + problem};
}

}  // namespace agent
