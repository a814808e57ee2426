// FDNs (full distinguished names) of the domain, and the numbers in them. An FDN is a list of
// CLASS=value terms with a separator, usually ",". Pure functions; thread-safety: any thread.

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

// Adds the class and value of every term to parts. A term without "=" is ignored. The first term of
// a class wins, and a class that is in parts already keeps its value. An empty separator makes the
// whole text one term.
void splitFdn(FdnParts& parts, std::string_view fdn, std::string_view separator);

// The class of the last term; empty when the last term has no "=".
std::string_view classOfFdn(std::string_view fdn);

// The value of a text of an optional sign and decimal digits, within a signed 32-bit integer. Empty
// for any other text.
std::optional<std::int32_t> wholeNumber(std::string_view text);

// The value of the optional sign and decimal digits at the start of a text, clamped to a signed
// 32-bit integer. 0 without digits.
std::int32_t leadingNumber(std::string_view text);

// The value of a text of decimal digits without sign and without leading zeros, within a signed
// 32-bit integer. Empty for any other text, so that every number has one spelling.
std::optional<std::int32_t> canonicalNumber(std::string_view text);

}  // namespace agent

#endif
