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

void addPart(FdnParts& parts, std::string_view term) {
  const std::size_t equals = term.find('=');
  if (equals != std::string_view::npos) {
    parts.emplace(term.substr(0, equals), term.substr(equals + 1));
  }
}

}  // namespace

void splitFdn(FdnParts& parts, std::string_view fdn, std::string_view separator) {
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
  const std::string_view term = fdn.substr(fdn.rfind(kTermSeparator) + 1);
  const std::size_t equals = term.find('=');
  return equals == std::string_view::npos ? std::string_view() : term.substr(0, equals);
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
