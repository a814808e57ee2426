// Decimal numbers in texts from outside.

#ifndef CLIENT_BASE_DECIMAL_H
#define CLIENT_BASE_DECIMAL_H

#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace topoctl {

// The integer that the whole text spells in decimal digits, after a '-' when Number is signed.
// Empty for any other text and for a number that Number cannot represent.
template <typename Number>
std::optional<Number> parseDecimal(std::string_view text) {
  Number number = 0;
  const char* const end = text.data() + text.size();
  const auto [last, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || last != end) {
    return std::nullopt;
  }
  return number;
}

}  // namespace topoctl

#endif
