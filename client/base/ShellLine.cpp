#include "client/base/ShellLine.h"

#include <cstddef>

namespace topoctl {
namespace {

bool isBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n';
}

// Characters that bash never interprets outside of quotes. Bytes of UTF-8 sequences are safe too.
bool isSafe(char c) {
  const bool isAlphanumeric =
      (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
  return isAlphanumeric || static_cast<unsigned char>(c) >= 0x80 ||
         std::string_view("_-./=:,+@%").find(c) != std::string_view::npos;
}

// Reads one character after another.
class Splitter {
 public:
  void read(char c) {
    if (escaped_) {
      readEscaped(c);
    } else if (c == '\\' && line_.quote != ShellQuote::kSingle) {
      escaped_ = true;
      isWord_ = true;
    } else if (line_.quote == ShellQuote::kNone) {
      readUnquoted(c);
      noteExpansion(c);
    } else if (c == (line_.quote == ShellQuote::kSingle ? '\'' : '"')) {
      line_.quote = ShellQuote::kNone;
    } else {
      word_ += c;
      noteExpansion(c);
    }
  }

  ShellLine end() {
    line_.words.push_back(word_);
    return line_;
  }

 private:
  void readEscaped(char c) {
    const bool keepsBackslash = line_.quote == ShellQuote::kDouble &&
                                std::string_view("$`\"\\").find(c) == std::string_view::npos;
    word_ += keepsBackslash ? std::string{'\\', c} : std::string{c};
    escaped_ = false;
  }

  void noteExpansion(char c) {
    line_.expands |= line_.quote != ShellQuote::kSingle && (c == '$' || c == '`' || c == '!');
  }

  void readUnquoted(char c) {
    if (isBlank(c)) {
      line_.expands = false;
      if (isWord_) {
        line_.words.push_back(word_);
      }
      word_.clear();
      isWord_ = false;
      return;
    }
    isWord_ = true;
    if (c == '\'') {
      line_.quote = ShellQuote::kSingle;
    } else if (c == '"') {
      line_.quote = ShellQuote::kDouble;
    } else {
      word_ += c;
    }
  }

  ShellLine line_;
  std::string word_;
  bool isWord_ = false;
  bool escaped_ = false;
};

std::string quotedCharacter(char c, ShellQuote quote) {
  switch (quote) {
    case ShellQuote::kNone:
      return isSafe(c) ? std::string{c} : std::string{'\\', c};
    case ShellQuote::kSingle:
      return c == '\'' ? "'\\''" : std::string{c};
    case ShellQuote::kDouble:
      break;
  }
  if (c == '!') {
    return "\"'!'\"";  // a backslash before it would remain in the word
  }
  return std::string_view("$`\"\\").find(c) == std::string_view::npos ? std::string{c}
                                                                      : std::string{'\\', c};
}

}  // namespace

ShellLine splitShellLine(std::string_view line) {
  Splitter splitter;
  for (const char c : line) {
    splitter.read(c);
  }
  return splitter.end();
}

std::string shellQuoted(std::string_view text, ShellQuote quote) {
  std::string quoted;
  for (const char c : text) {
    quoted += quotedCharacter(c, quote);
  }
  return quoted;
}

}  // namespace topoctl
