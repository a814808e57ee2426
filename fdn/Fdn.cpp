#include "fdn/Fdn.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

namespace fdn {
namespace {

constexpr char kTermSeparator = ',';

struct Decimal {
  std::int32_t value = 0;  // clamped to the limits of the type
  bool isExact = false;    // there are digits, and the value is not clamped
  std::size_t length = 0;  // sign and digits
};

bool isDigit(char character) {
  return character >= '0' && character <= '9';
}

// An optional sign and the digits after the sign, at the start of a text.
Decimal leadingDecimal(std::string_view text) {
  using Limits = std::numeric_limits<std::int32_t>;
  const bool isNegative = !text.empty() && text.front() == '-';
  const bool hasSign = isNegative || (!text.empty() && text.front() == '+');
  const std::size_t start = hasSign ? 1 : 0;
  const std::int64_t limit = isNegative ? -std::int64_t{Limits::min()} : Limits::max();
  std::int64_t magnitude = 0;
  std::size_t end = start;
  for (; end < text.size() && isDigit(text[end]); ++end) {
    if (magnitude <= limit) {
      magnitude = magnitude * 10 + (text[end] - '0');
    }
  }
  const std::int64_t clamped = std::min(magnitude, limit);
  Decimal decimal;
  decimal.value = static_cast<std::int32_t>(isNegative ? -clamped : clamped);
  decimal.isExact = end > start && magnitude <= limit;
  decimal.length = end;
  return decimal;
}

// `equals` is the position of the first "=" of the term, or npos.
void addPart(FdnParts& parts, std::string_view term, std::size_t equals) {
  if (equals != std::string_view::npos) {
    parts.emplace(term.substr(0, equals), term.substr(equals + 1));
  }
}

void addPart(FdnParts& parts, std::string_view term) {
  addPart(parts, term, term.find('='));
}

// In one pass, because a view splits the FDN of every element, and FDNs are short.
void splitAt(FdnParts& parts, std::string_view fdn, char separator) {
  constexpr std::size_t kNone = std::string_view::npos;
  std::size_t start = 0;
  std::size_t equals = kNone;  // counts from the start of the term
  for (std::size_t i = 0; i < fdn.size(); ++i) {
    if (fdn[i] == separator) {
      addPart(parts, fdn.substr(start, i - start), equals);
      start = i + 1;
      equals = kNone;
    } else if (fdn[i] == '=' && equals == kNone) {
      equals = i - start;
    }
  }
  addPart(parts, fdn.substr(start), equals);
}

}  // namespace

void splitFdn(FdnParts& parts, std::string_view fdn, std::string_view separator) {
  if (separator.size() == 1) {
    splitAt(parts, fdn, separator.front());
    return;
  }
  std::size_t start = 0;
  std::size_t end = separator.empty() ? std::string_view::npos : fdn.find(separator);
  while (end != std::string_view::npos) {
    addPart(parts, fdn.substr(start, end - start));
    start = end + separator.size();
    end = fdn.find(separator, start);
  }
  addPart(parts, fdn.substr(start));
}

std::string_view classOfFdn(std::string_view fdn) {
  std::size_t equals = std::string_view::npos;  // the first of the last term
  std::size_t start = fdn.size();
  for (; start > 0 && fdn[start - 1] != kTermSeparator; --start) {
    if (fdn[start - 1] == '=') {
      equals = start - 1;
    }
  }
  return equals == std::string_view::npos ? std::string_view() : fdn.substr(start, equals - start);
}

std::optional<std::int32_t> wholeNumber(std::string_view text) {
  const Decimal decimal = leadingDecimal(text);
  if (!decimal.isExact || decimal.length != text.size()) {
    return std::nullopt;
  }
  return decimal.value;
}

std::int32_t leadingNumber(std::string_view text) {
  return leadingDecimal(text).value;
}

std::optional<std::int32_t> canonicalNumber(std::string_view text) {
  const bool startsWell = !text.empty() && isDigit(text.front());
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

}  // namespace fdn
