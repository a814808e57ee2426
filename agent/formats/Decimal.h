// Decimal numbers in texts. Pure functions; thread-safety: any thread.

#ifndef AGENT_FORMATS_DECIMAL_H
#define AGENT_FORMATS_DECIMAL_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace agent {

// The value of a decimal number in thousandths, rounded to the nearest, halves away from zero. A
// decimal number is an optional minus sign, digits with at most one point, and an optional exponent
// (e or E, an optional sign, digits). Empty for any other text, and for a value beyond a signed
// 32-bit integer.
//
// The result is exact for any number of digits. Takes time linear in the text.
std::optional<std::int32_t> thousandthsOf(std::string_view decimal);

}  // namespace agent

#endif
