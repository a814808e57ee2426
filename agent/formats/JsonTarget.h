// Assigns single values of a network file in the native format to variables, and checks the values.
// Part of the network reader.

#ifndef AGENT_FORMATS_JSONTARGET_H
#define AGENT_FORMATS_JSONTARGET_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace agent {

// A JSON value that is neither a list nor an object. Borrows its text. The parser reports
// fractions, exponents and integers beyond 64 bits as floating point, and non-negative integers as
// unsigned.
using JsonScalar =
    std::variant<std::nullptr_t, bool, std::int64_t, std::uint64_t, double, std::string_view>;

enum class JsonContainer { kObject, kList };

struct JsonIgnored {};  // any value
struct JsonNonEmptyText {
  std::string* text;
};
struct JsonNumberPair {  // a list of two numbers
  std::int32_t* first;
  std::int32_t* second;
};
struct JsonTextPair {};  // a list of two texts
using JsonTextPairs = std::vector<std::pair<std::string, std::string>>;
struct JsonRecord {};      // an object
struct JsonRecordList {};  // a list of objects

// The kind of value that a field must have, with the variable for the value. Borrows the variable.
using JsonTarget =
    std::variant<JsonIgnored, std::string*, JsonNonEmptyText, bool*, std::int32_t*, std::uint32_t*,
                 JsonNumberPair, JsonTextPairs*, JsonTextPair, JsonRecord, JsonRecordList>;

// Thread-safety of the functions: any thread; the caller owns the variable.

// Assigns a value. Returns the reason to refuse the value; empty after an assignment.
std::string assign(const JsonTarget& target, const JsonScalar& value);

// Returns the reason to refuse a list or an object. REQUIRES: the target is of another kind.
std::string refusalOf(const JsonTarget& target, JsonContainer container);

}  // namespace agent

#endif
