// Text of unknown origin, made safe for one line of a message. Pure functions; thread-safety: any
// thread.

#ifndef AGENT_BASE_PRINTABLETEXT_H
#define AGENT_BASE_PRINTABLETEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace agent {

// Replaces each byte of control characters, line separators, invisible format characters (with the
// characters that change the writing direction) and invalid UTF-8 by \xNN. A text of more than
// mostBytes is cut and ends in "...".
std::string printable(std::string_view text, std::size_t mostBytes = 400);

// As printable(), and doubles each backslash, so that a reader can recover the original bytes.
std::string escaped(std::string_view text, std::size_t mostBytes);

// As printable(), cut after 80 bytes and between double quotes: quotes input in a message.
std::string inQuotes(std::string_view text);

}  // namespace agent

#endif
