#include "agent/base/Text.h"

#include <utf8.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace agent {
namespace {

constexpr std::size_t kMostQuoted = 80;

struct Range {
  std::uint32_t first;
  std::uint32_t last;
};

// Characters that move cursors, end lines, change the writing direction or show nothing at all. The
// two joiners (U+200C, U+200D) are not among them: ordinary words of some languages need them.
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

// The length of the harmless character at the start of a text, 0 when there is none.
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

// The text with its harmful bytes escaped and with each backslash as given, cut when it is too
// long.
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

bool startsCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xc0) != 0x80;
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

std::optional<std::size_t> findInvalidUtf8(std::string_view text) {
  const auto invalid = utf8::find_invalid(text.begin(), text.end());
  if (invalid == text.end()) {
    return std::nullopt;
  }
  return static_cast<std::size_t>(invalid - text.begin());
}

std::string problemWith(std::string_view text) {
  if (text.size() > kMostTextBytes) {
    return "has more than " + std::to_string(kMostTextBytes) + " bytes";
  }
  if (text.find('\0') != std::string_view::npos) {
    return "holds a NUL character";
  }
  const auto invalid = findInvalidUtf8(text);
  return invalid ? "is not UTF-8 at byte " + std::to_string(*invalid) : std::string();
}

std::optional<std::int32_t> canonicalNumber(std::string_view text) {
  const bool startsWell = !text.empty() && text.front() >= '0' && text.front() <= '9';
  if (!startsWell || (text.front() == '0' && text.size() > 1)) {
    return std::nullopt;
  }
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) {
    return std::nullopt;
  }
  return number;
}

std::string linePlace(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, std::min(offset, text.size()));
  const auto line = std::count(before.begin(), before.end(), '\n') + 1;
  const std::string_view inLine = before.substr(before.rfind('\n') + 1);
  const auto column = std::count_if(inLine.begin(), inLine.end(), startsCharacter) + 1;
  return std::to_string(line) + ':' + std::to_string(column);
}

}  // namespace agent
