#include "agent/network/Fdn.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

namespace agent {
namespace {

constexpr char kTermSeparator = ',';

struct Decimal {
  std::int64_t value = 0;  // clamped to the limits of a signed 32-bit integer
  bool isExact = true;     // not clamped
  std::size_t digits = 0;
  std::size_t length = 0;  // sign and digits
};

constexpr std::int64_t kLeast = std::numeric_limits<std::int32_t>::min();
constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();

bool isDigit(char character) {
  return character >= '0' && character <= '9';
}

// An optional sign and the digits after the sign, at the start of a text.
Decimal leadingDecimal(std::string_view text) {
  Decimal decimal;
  const bool isNegative = !text.empty() && text.front() == '-';
  const bool hasSign = isNegative || (!text.empty() && text.front() == '+');
  decimal.length = hasSign ? 1 : 0;
  for (; decimal.length < text.size() && isDigit(text[decimal.length]); ++decimal.length) {
    const int digit = text[decimal.length] - '0';
    const std::int64_t next = decimal.value * 10 + (isNegative ? -digit : digit);
    decimal.value = std::clamp(next, kLeast, kMost);
    decimal.isExact = decimal.isExact && decimal.value == next;
    ++decimal.digits;
  }
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
  if (decimal.digits == 0 || !decimal.isExact || decimal.length != text.size()) {
    return std::nullopt;
  }
  return static_cast<std::int32_t>(decimal.value);
}

std::int32_t leadingNumber(std::string_view text) {
  return static_cast<std::int32_t>(leadingDecimal(text).value);
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

}  // namespace agent
