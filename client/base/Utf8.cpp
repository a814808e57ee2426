#include "client/base/Utf8.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

namespace topoctl {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
constexpr std::string_view kEllipsis = "\xE2\x80\xA6";

struct Range {
  char32_t first;
  char32_t last;
};

constexpr std::array<Range, 7> kTerminalControls = {{
    {0x00, 0x1F},
    {0x7F, 0x9F},
    {0x061C, 0x061C},  // marks of the writing direction
    {0x200E, 0x200F},  // left-to-right and right-to-left mark
    {0x2028, 0x2029},  // line and paragraph separator
    {0x202A, 0x202E},  // embeddings and overrides of the direction
    {0x2066, 0x2069},  // isolates
}};

constexpr std::array<Range, 10> kZeroWidth = {{
    {0x0300, 0x036F},
    {0x0483, 0x0489},
    {0x0591, 0x05BD},
    {0x0610, 0x061A},
    {0x064B, 0x065F},
    {0x1AB0, 0x1AFF},
    {0x200B, 0x200D},
    {0x20D0, 0x20F0},
    {0xFE00, 0xFE0F},
    {0xFE20, 0xFE2F},
}};

constexpr std::array<Range, 10> kDoubleWidth = {{
    {0x1100, 0x115F},
    {0x2E80, 0x303E},
    {0x3041, 0xA4CF},
    {0xAC00, 0xD7A3},
    {0xF900, 0xFAFF},
    {0xFE30, 0xFE6F},
    {0xFF00, 0xFF60},
    {0xFFE0, 0xFFE6},
    {0x1F300, 0x1F9FF},
    {0x20000, 0x3FFFD},
}};

template <std::size_t N>
bool isIn(const std::array<Range, N>& ranges, char32_t codePoint) {
  return std::any_of(ranges.begin(), ranges.end(), [codePoint](const Range& range) {
    return range.first <= codePoint && codePoint <= range.last;
  });
}

// The first `length` bytes of a text: a code point, or an invalid sequence.
struct Decoded {
  char32_t codePoint;
  std::size_t length;
  bool valid;
};

// The sequence that a lead byte begins. Only the second byte has a range that depends on the lead
// byte: the range excludes overlong forms, surrogates and code points above U+10FFFF.
struct Lead {
  std::size_t length;  // of the whole sequence; 0: the byte is not a lead byte
  unsigned char secondFirst = 0x80;
  unsigned char secondLast = 0xBF;
};

Lead leadOf(unsigned char byte) {
  if (byte < 0x80) {
    return {1};
  }
  if (byte >= 0xC2 && byte <= 0xDF) {
    return {2};
  }
  if (byte >= 0xE0 && byte <= 0xEF) {
    return {3, static_cast<unsigned char>(byte == 0xE0 ? 0xA0 : 0x80),
            static_cast<unsigned char>(byte == 0xED ? 0x9F : 0xBF)};
  }
  if (byte >= 0xF0 && byte <= 0xF4) {
    return {4, static_cast<unsigned char>(byte == 0xF0 ? 0x90 : 0x80),
            static_cast<unsigned char>(byte == 0xF4 ? 0x8F : 0xBF)};
  }
  return {0};
}

// REQUIRES: the text is not empty.
Decoded decode(std::string_view text) {
  const auto first = static_cast<unsigned char>(text.front());
  const Lead lead = leadOf(first);
  if (lead.length == 0) {
    return {0, 1, false};
  }
  if (lead.length == 1) {
    return {first, 1, true};
  }
  char32_t codePoint = first & (0xFFU >> (lead.length + 1));
  for (std::size_t i = 1; i < lead.length; ++i) {
    const unsigned char low = i == 1 ? lead.secondFirst : 0x80;
    const unsigned char high = i == 1 ? lead.secondLast : 0xBF;
    const auto byte = i < text.size() ? static_cast<unsigned char>(text[i]) : std::uint8_t{0};
    if (byte < low || byte > high) {
      return {0, i, false};
    }
    codePoint = (codePoint << 6) | (byte & 0x3FU);
  }
  return {codePoint, lead.length, true};
}

// Calls visit(Decoded, bytes) for each sequence of the text.
template <typename Visit>
void forEachSequence(std::string_view text, Visit visit) {
  while (!text.empty()) {
    const Decoded decoded = decode(text);
    visit(decoded, text.substr(0, decoded.length));
    text.remove_prefix(decoded.length);
  }
}

std::size_t widthOf(const Decoded& decoded) {
  if (isIn(kDoubleWidth, decoded.codePoint)) {
    return 2;
  }
  return isIn(kZeroWidth, decoded.codePoint) ? 0 : 1;
}

std::string spellOut(char32_t control) {
  if (control == '\n') {
    return "\\n";
  }
  if (control == '\r') {
    return "\\r";
  }
  if (control == '\t') {
    return "\\t";
  }
  std::array<char, 16> spelt{};
  std::snprintf(spelt.data(), spelt.size(), control < 0x80 ? "\\x%02x" : "\\u%04x",
                static_cast<unsigned>(control));
  return spelt.data();
}

bool isPrintableAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c < 0x7F; });
}

}  // namespace

std::string validUtf8(std::string_view text) {
  if (isPrintableAscii(text)) {
    return std::string(text);
  }
  std::string result;
  result.reserve(text.size());
  forEachSequence(text, [&result](const Decoded& decoded, std::string_view bytes) {
    result += decoded.valid ? bytes : kReplacement;
  });
  return result;
}

std::string escapeControls(std::string_view text) {
  if (isPrintableAscii(text)) {
    return std::string(text);
  }
  std::string result;
  result.reserve(text.size());
  forEachSequence(text, [&result](const Decoded& decoded, std::string_view bytes) {
    if (!decoded.valid) {
      result += kReplacement;
    } else if (isIn(kTerminalControls, decoded.codePoint)) {
      result += spellOut(decoded.codePoint);
    } else {
      result += bytes;
    }
  });
  return result;
}

std::size_t displayWidth(std::string_view text) {
  if (isPrintableAscii(text)) {
    return text.size();
  }
  std::size_t width = 0;
  forEachSequence(
      text, [&width](const Decoded& decoded, std::string_view) { width += widthOf(decoded); });
  return width;
}

std::string cutEnd(std::string_view text, std::size_t columns) {
  if (displayWidth(text) <= columns) {
    return std::string(text);
  }
  std::string result;
  std::size_t width = 0;
  forEachSequence(text, [&](const Decoded& decoded, std::string_view bytes) {
    width += widthOf(decoded);
    if (width < columns) {  // leaves a column for the ellipsis
      result += bytes;
    }
  });
  return result.append(kEllipsis);
}

std::string cutBegin(std::string_view text, std::size_t columns) {
  std::size_t rest = displayWidth(text);
  if (rest <= columns) {
    return std::string(text);
  }
  std::string result(kEllipsis);
  forEachSequence(text, [&](const Decoded& decoded, std::string_view bytes) {
    if (rest < columns && (widthOf(decoded) > 0 || result.size() > kEllipsis.size())) {
      result += bytes;
    }
    rest -= widthOf(decoded);
  });
  return result;
}

}  // namespace topoctl
