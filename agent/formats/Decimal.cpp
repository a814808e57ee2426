#include "agent/formats/Decimal.h"

#include <algorithm>
#include <limits>
#include <string>

namespace agent {
namespace {

constexpr std::string_view kDigits = "0123456789";

// Larger than the number of digits of any text, so that no text can compensate this exponent.
constexpr std::int64_t kHugeExponent = std::int64_t{1} << 48;

// A decimal number without its sign: the value 0.DIGITS times ten to the power of `point`. The
// first digit is not 0; zero has no digits.
struct Magnitude {
  std::string digits;
  std::int64_t point = 0;
};

// Removes the digits at the front of a text and returns them.
std::string_view takeDigits(std::string_view& text) {
  const std::string_view digits = text.substr(0, text.find_first_not_of(kDigits));
  text.remove_prefix(digits.size());
  return digits;
}

bool takeAny(std::string_view& text, std::string_view characters) {
  const bool found = !text.empty() && characters.find(text.front()) != std::string_view::npos;
  text.remove_prefix(found ? 1 : 0);
  return found;
}

std::int64_t valueOf(std::string_view digits) {
  std::int64_t value = 0;
  for (const char digit : digits) {
    value = std::min(value * 10 + (digit - '0'), kHugeExponent);
  }
  return value;
}

// The exponent at the end of a number: 0 for no text, empty for a malformed exponent.
std::optional<std::int64_t> exponentIn(std::string_view text) {
  if (text.empty()) {
    return 0;
  }
  if (!takeAny(text, "eE")) {
    return std::nullopt;
  }
  const bool negative = !text.empty() && text.front() == '-';
  takeAny(text, "+-");
  const std::string_view digits = takeDigits(text);
  if (digits.empty() || !text.empty()) {
    return std::nullopt;
  }
  return negative ? -valueOf(digits) : valueOf(digits);
}

std::optional<Magnitude> parse(std::string_view text) {
  const std::string_view whole = takeDigits(text);
  const std::string_view fraction = takeAny(text, ".") ? takeDigits(text) : std::string_view();
  const auto exponent = exponentIn(text);
  if ((whole.empty() && fraction.empty()) || !exponent) {
    return std::nullopt;
  }
  Magnitude number;
  number.digits = std::string(whole) + std::string(fraction);
  const std::size_t zeros = std::min(number.digits.find_first_not_of('0'), number.digits.size());
  number.digits.erase(0, zeros);
  number.point =
      static_cast<std::int64_t>(whole.size()) - static_cast<std::int64_t>(zeros) + *exponent;
  return number;
}

// Rounds to the nearest whole number, halves up. REQUIRES: the whole part has at most 18 digits.
std::int64_t rounded(const Magnitude& number) {
  if (number.point < 0) {
    return 0;
  }
  std::int64_t value = 0;
  const auto point = static_cast<std::size_t>(number.point);
  for (std::size_t i = 0; i < point; ++i) {
    value = value * 10 + (i < number.digits.size() ? number.digits[i] - '0' : 0);
  }
  const bool up = point < number.digits.size() && number.digits[point] >= '5';
  return value + (up ? 1 : 0);
}

}  // namespace

std::optional<std::int32_t> thousandthsOf(std::string_view decimal) {
  constexpr std::int64_t kMostDigits = std::numeric_limits<std::int32_t>::digits10 + 1;
  const bool negative = takeAny(decimal, "-");
  auto number = parse(decimal);
  if (!number) {
    return std::nullopt;
  }
  number->point += 3;
  if (number->digits.empty()) {
    return 0;
  }
  if (number->point > kMostDigits) {
    return std::nullopt;
  }
  const std::int64_t value = negative ? -rounded(*number) : rounded(*number);
  if (value < std::numeric_limits<std::int32_t>::min() ||
      value > std::numeric_limits<std::int32_t>::max()) {
    return std::nullopt;
  }
  return static_cast<std::int32_t>(value);
}

}  // namespace agent
