// Makes text of unknown origin safe to print. Pure functions; thread-safety: any thread.

#ifndef CLIENT_BASE_UTF8_H
#define CLIENT_BASE_UTF8_H

#include <cstddef>
#include <string>
#include <string_view>

namespace topoctl {

// Returns the text as valid UTF-8: U+FFFD replaces every invalid sequence.
std::string validUtf8(std::string_view text);

// Returns the text as valid UTF-8 on one line without effect on a terminal: control characters and
// characters that change the writing direction become escapes (\n, \x1b, \u202e).
std::string escapeControls(std::string_view text);

// Returns the number of terminal columns: 2 for East Asian wide characters and emoji, 0 for
// combining marks. REQUIRES: the text is a result of escapeControls().
std::size_t displayWidth(std::string_view text);

// Returns the text when it has at most `columns` terminal columns. Otherwise an ellipsis replaces
// the end or the begin of the text, so that at most `columns` columns remain. REQUIRES: the text is
// a result of escapeControls(), and columns > 0.
std::string cutEnd(std::string_view text, std::size_t columns);
std::string cutBegin(std::string_view text, std::size_t columns);

}  // namespace topoctl

#endif
