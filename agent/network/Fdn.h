// FDNs (full distinguished names) of the domain: CLASS=value terms joined by a separator, usually
// ",". Pure functions; thread-safety: any thread.

#ifndef AGENT_NETWORK_FDN_H
#define AGENT_NETWORK_FDN_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace agent {

// The value of each class of an FDN.
using FdnParts = std::map<std::string, std::string>;

// Adds the class and value of every term to parts. A term without "=" adds nothing. Of several
// terms of one class the first is kept, and so is a class that parts holds already. An empty
// separator makes the whole text one term.
void splitFdn(FdnParts& parts, std::string_view fdn, std::string_view separator);

// The class of the last term; empty when the last term has no "=".
std::string_view classOfFdn(std::string_view fdn);

// The number that a whole text writes: an optional sign and decimal digits, within a signed 32-bit
// integer. Nothing for any other text.
std::optional<std::int32_t> wholeNumber(std::string_view text);

// The number that a text begins with: an optional sign and decimal digits, clamped to a signed
// 32-bit integer. 0 for a text that begins with no digits.
std::int32_t leadingNumber(std::string_view text);

}  // namespace agent

#endif
