// FDNs (full distinguished names) of the domain, and the numbers in them. An FDN is a list of
// CLASS=value terms with a separator, usually ",". Pure functions; thread-safety: any thread.

#ifndef FDN_FDN_H
#define FDN_FDN_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace fdn {

// The value of each class of an FDN.
using FdnParts = std::map<std::string, std::string>;

// Adds the class and value of every term to parts. A term without "=" is ignored. The first term of
// a class wins, and a class that is in parts already keeps its value. An empty separator makes the
// whole text one term.
void splitFdn(FdnParts& parts, std::string_view fdn, std::string_view separator);

// The class of the last term; empty when the last term has no "=".
std::string_view classOfFdn(std::string_view fdn);

// Parses decimal digits with an optional sign. Empty for any other text, and for a value beyond a
// signed 32-bit integer.
std::optional<std::int32_t> wholeNumber(std::string_view text);

// Parses the decimal digits at the start of a text, with an optional sign, and ignores the rest.
// Clamps the value to a signed 32-bit integer. 0 without digits.
std::int32_t leadingNumber(std::string_view text);

// As wholeNumber(), but also empty for a sign and for leading zeros, so that every number has
// exactly one text.
std::optional<std::int32_t> canonicalNumber(std::string_view text);

}  // namespace fdn

#endif
