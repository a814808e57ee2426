// Decimal numbers in texts. Stateless, any thread.

#ifndef AGENT_FORMATS_DECIMAL_H
#define AGENT_FORMATS_DECIMAL_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace agent {

// Thousandths of a decimal number, rounded to the nearest, halves away from zero. A decimal number
// is a minus sign or none, digits with at most one point among them, and an exponent (e or E, a
// sign or none, digits) or none. Nothing for any other text, and for thousandths that a signed
// 32-bit integer cannot hold.
//
// Exact, however many digits there are, in time linear in the text.
std::optional<std::int32_t> thousandthsOf(std::string_view decimal);

}  // namespace agent

#endif
