// What a text of unknown origin needs before people or programs read it. Pure functions.

#ifndef CLIENT_BASE_UTF8_H
#define CLIENT_BASE_UTF8_H

#include <cstddef>
#include <string>
#include <string_view>

namespace topoctl {

// The text as valid UTF-8: every sequence that is not becomes one U+FFFD.
std::string validUtf8(std::string_view text);

// The text as valid UTF-8 on one line that does nothing to a terminal: control characters and those
// that change the writing direction are spelt out (\n, \x1b, \u202e).
std::string harmless(std::string_view text);

// How many columns a terminal needs for a harmless text: 2 for East Asian wide characters and
// emoji, 0 for combining marks.
std::size_t displayWidth(std::string_view text);

}  // namespace topoctl

#endif
