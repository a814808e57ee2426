#include "agent/base/PrintableText.h"

#include <utf8.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace agent {
namespace {

constexpr std::size_t kMostQuoted = 80;

struct Range {
  std::uint32_t first;
  std::uint32_t last;
};

// Characters that move cursors, end lines, change the writing direction or are invisible. The two
// joiners (U+200C, U+200D) are allowed because words of some languages contain them.
constexpr std::array<Range, 12> kHarmful = {{
    {0x00, 0x1f},
    {0x7f, 0x9f},
    {0xad, 0xad},
    {0x61c, 0x61c},
    {0x180e, 0x180e},
    {0x200b, 0x200b},
    {0x200e, 0x200f},
    {0x2028, 0x202e},
    {0x2060, 0x206f},
    {0xfeff, 0xfeff},
    {0xfff9, 0xfffb},
    {0xe0000, 0xe007f},
}};

bool isHarmless(std::uint32_t character) {
  return std::none_of(kHarmful.begin(), kHarmful.end(), [character](const Range& range) {
    return range.first <= character && character <= range.last;
  });
}

// The length of the harmless character at the start of a text; 0 for any other start.
std::size_t harmlessLength(std::string_view text) {
  auto next = text.begin();
  try {
    const std::uint32_t character = utf8::next(next, text.end());
    return isHarmless(character) ? static_cast<std::size_t>(next - text.begin()) : 0;
  } catch (const utf8::exception&) {
    return 0;
  }
}

void appendEscaped(std::string& out, char byte) {
  constexpr char kDigits[] = "0123456789abcdef";
  const auto value = static_cast<unsigned char>(byte);
  out += "\\x";
  out += kDigits[value >> 4];
  out += kDigits[value & 0xf];
}

// Escapes harmful bytes, replaces each backslash by the given text, and cuts a long result.
std::string onOneLine(std::string_view text, std::size_t mostBytes, std::string_view backslash) {
  std::string out;
  while (!text.empty() && out.size() < mostBytes) {
    const std::size_t length = harmlessLength(text);
    if (length == 0) {
      appendEscaped(out, text.front());
    } else {
      out += text.front() == '\\' ? backslash : text.substr(0, length);
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  if (!text.empty()) {
    out += "...";
  }
  return out;
}

}  // namespace

std::string printable(std::string_view text, std::size_t mostBytes) {
  return onOneLine(text, mostBytes, "\\");
}

std::string escaped(std::string_view text, std::size_t mostBytes) {
  return onOneLine(text, mostBytes, "\\\\");
}

std::string inQuotes(std::string_view text) {
  return '"' + printable(text, kMostQuoted) + '"';
}

}  // namespace agent
