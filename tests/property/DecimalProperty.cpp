// Compares the rounding of decimal texts with an oracle that divides integers.

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "agent/formats/Decimal.h"
#include "tests/property/Random.h"

namespace {

// The number coefficient * 10^-places.
struct Number {
  std::int64_t coefficient;
  int places;
};

__extension__ using Wide = __int128;

std::optional<std::int32_t> expected(const Number& number) {
  Wide divisor = 1;
  for (int i = 0; i < number.places; ++i) {
    divisor *= 10;
  }
  const bool negative = number.coefficient < 0;
  const Wide thousandths = Wide{negative ? -number.coefficient : number.coefficient} * 1000;
  const Wide rounded = (2 * thousandths + divisor) / (2 * divisor);
  const Wide value = negative ? -rounded : rounded;
  if (value > std::numeric_limits<std::int32_t>::max() ||
      value < std::numeric_limits<std::int32_t>::min()) {
    return std::nullopt;
  }
  return static_cast<std::int32_t>(value);
}

// A random spelling of a number.
std::string written(const Number& number, Random& random) {
  const bool negative = number.coefficient < 0;
  std::string digits = std::to_string(number.coefficient).substr(negative ? 1 : 0);
  const int zeros = random.number(0, 3);
  digits += std::string(static_cast<std::size_t>(zeros), '0');
  const int fraction = random.number(0, 25);
  if (digits.size() < static_cast<std::size_t>(fraction)) {
    digits.insert(0, static_cast<std::size_t>(fraction) - digits.size(), '0');
  }
  const std::size_t point = digits.size() - static_cast<std::size_t>(fraction);
  const int exponent = fraction - zeros - number.places;
  const std::string exponentText =
      (random.number(0, 1) == 0 ? "e" : "E") +
      std::string(exponent >= 0 && random.number(0, 1) == 0 ? "+" : "") + std::to_string(exponent);
  return (negative ? "-" : "") + std::string(static_cast<std::size_t>(random.number(0, 2)), '0') +
         digits.substr(0, point) + (fraction > 0 || random.number(0, 1) == 0 ? "." : "") +
         digits.substr(point) + (exponent != 0 || random.number(0, 1) == 0 ? exponentText : "");
}

// Numbers of every size; many of them are halfway between two results.
Number randomNumber(Random& random) {
  std::int64_t coefficient = 0;
  for (int digits = random.number(1, 14); digits > 0; --digits) {
    coefficient = coefficient * 10 + random.number(0, 9);
  }
  if (random.number(0, 2) == 0) {
    coefficient = coefficient * 10 + 5;
  }
  return {random.number(0, 1) == 0 ? coefficient : -coefficient, random.number(0, 18)};
}

TEST(DecimalProperty, RoundsLikeIntegerDivision) {
  Random random;
  for (int round = 0; round < 20000; ++round) {
    const Number number = randomNumber(random);
    const std::string text = written(number, random);
    ASSERT_EQ(expected(number), agent::thousandthsOf(text)) << text;
  }
}

}  // namespace
