// The words of a command line of bash, and words in the notation of bash. Nothing is expanded or
// executed. Pure functions; thread-safety: any thread.

#ifndef CLIENT_BASE_SHELLLINE_H
#define CLIENT_BASE_SHELLLINE_H

#include <string>
#include <string_view>
#include <vector>

namespace topoctl {

enum class ShellQuote { kNone, kSingle, kDouble };

struct ShellLine {
  std::vector<std::string> words;        // without quotes; the last word can be empty
  ShellQuote quote = ShellQuote::kNone;  // that is open at the end of the last word
  bool expands = false;                  // bash would expand a $, ` or ! of the last word
};

// Splits an incomplete line. There is always a last word: the one at the end of the line.
ShellLine splitShellLine(std::string_view line);

// Returns `text` so that bash reads exactly this text inside the quote, without expansion.
// REQUIRES: no control characters in `text`.
std::string shellQuoted(std::string_view text, ShellQuote quote);

}  // namespace topoctl

#endif
