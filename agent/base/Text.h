// Texts: fit for messages, and numbers in them. Stateless, any thread.

#ifndef AGENT_BASE_TEXT_H
#define AGENT_BASE_TEXT_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace agent {

// A text fit for one line of a message, whoever wrote it: every byte of a control character, of a
// line separator, of an invisible format character (those that change the writing direction
// included) and of a sequence that is not UTF-8 becomes \xNN. A text of more than mostBytes is cut
// and ends in "...".
std::string printable(std::string_view text, std::size_t mostBytes = 400);

// The same, but unambiguous: a backslash becomes two, so that the original bytes can be told from
// the result.
std::string escaped(std::string_view text, std::size_t mostBytes);

// The same between double quotes, and short: for quoting input.
std::string inQuotes(std::string_view text);

// The text; empty for null.
inline std::string_view textOrEmpty(const char* text) {
  return text == nullptr ? std::string_view() : std::string_view(text);
}

// The offset of the first byte that is no UTF-8; nothing when all of it is.
std::optional<std::size_t> findInvalidUtf8(std::string_view text);

// What keeps a text from being stored by a change at run time: such as "is not UTF-8 at byte 3".
// Empty when nothing does.
constexpr std::size_t kMostTextBytes = std::size_t{1} << 20;
std::string problemWith(std::string_view text);

// The number that a text writes in the one canonical way: decimal digits without sign and without
// leading zeros, within a signed 32-bit integer. Nothing for any other text.
std::optional<std::int32_t> canonicalNumber(std::string_view text);

// "line:column" of a byte offset, both from 1; columns count characters.
std::string linePlace(std::string_view text, std::size_t offset);

}  // namespace agent

#endif
