#include "agent/ConfigFile.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <sstream>

#include "agent/Options.h"
#include "agent/process/ReadFile.h"

namespace agent {
namespace {

constexpr std::size_t kLargestFile = std::size_t{1} << 20;
constexpr const char* kBlanks = " \t\r\f\v";

std::string readText(const std::filesystem::path& file) {
  try {
    return readFile(file, kLargestFile);
  } catch (const FileError& failure) {
    throw UsageError(failure.what());
  }
}

bool isBlankOrComment(const std::string& line) {
  return line.empty() || line.front() == '#' || line.front() == ';';
}

std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  return first == std::string::npos
             ? ""
             : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// The text up to the closing quote. REQUIRES: the text begins with a quote.
std::string quotedValue(const std::string& name, const std::string& text) {
  const std::size_t end = text.find(text.front(), 1);
  if (end == std::string::npos) {
    throw UsageError("the value of '" + name + "' has no closing quote");
  }
  const std::string rest = trimmed(text.substr(end + 1));
  if (!rest.empty() && rest.front() != '#') {
    throw UsageError("text follows the closing quote of the value of '" + name + "'");
  }
  return text.substr(1, end - 1);
}

// The text up to a comment.
std::string bareValue(const std::string& name, const std::string& text) {
  std::string value = trimmed(text.substr(0, text.find('#')));
  if (value.find_first_of(std::string(kBlanks) + ",") != std::string::npos) {
    throw UsageError("'" + name +
                     "' has more than one value; put a value with spaces or commas in quotes");
  }
  return value;
}

// text: the text after the equals sign.
std::string parseValue(const std::string& name, const std::string& text) {
  const bool isQuoted = !text.empty() && (text.front() == '"' || text.front() == '\'');
  std::string value = isQuoted ? quotedValue(name, text) : bareValue(name, text);
  if (value.empty()) {
    throw UsageError("'" + name + "' has no value");
  }
  return value;
}

// The parser of CLI11 does not know the line numbers, skips short lines, and cuts a quoted value at
// a '#'.
ConfigLine parseLine(const std::string& line) {
  if (line.find('\0') != std::string::npos) {
    throw UsageError("a NUL character");
  }
  if (line.front() == '[') {
    throw UsageError("a section; each line is NAME = VALUE");
  }
  const std::size_t equals = line.find('=');
  const std::string name = trimmed(line.substr(0, std::min(equals, line.find('#'))));
  if (name.empty() || name.find_first_of(kBlanks) != std::string::npos) {
    throw UsageError("'" + line + "' is not NAME = VALUE");
  }
  if (equals == std::string::npos) {
    return {0, name, std::nullopt};
  }
  return {0, name, parseValue(name, trimmed(line.substr(equals + 1)))};
}

// Levenshtein distance: insertions, deletions and replacements of single characters, row by row.
std::size_t editDistance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (const char c : a) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (c == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

}  // namespace

std::vector<ConfigLine> readConfigFile(const std::filesystem::path& file,
                                       const std::set<std::string>& lists) {
  std::istringstream text(readText(file));
  std::vector<ConfigLine> result;
  std::map<std::string, std::size_t> lineOf;
  std::string line;
  for (std::size_t number = 1; std::getline(text, line); ++number) {
    line = trimmed(line);
    if (isBlankOrComment(line)) {
      continue;
    }
    try {
      ConfigLine parsed = parseLine(line);
      parsed.number = number;
      const auto [first, isNew] = lineOf.emplace(parsed.name, number);
      if (!isNew && lists.count(parsed.name) == 0) {
        throw UsageError("'" + parsed.name + "' is already in line " +
                         std::to_string(first->second));
      }
      result.push_back(std::move(parsed));
    } catch (const std::exception& failure) {
      throw UsageError(file.string() + ":" + std::to_string(number) + ": " + failure.what());
    }
  }
  return result;
}

std::string mostSimilarName(const std::string& name, const std::vector<std::string>& names) {
  constexpr std::size_t kLongestName = 100;
  if (name.size() > kLongestName) {
    return "";
  }
  std::string best;
  std::size_t bestDistance = name.size();
  for (const std::string& candidate : names) {
    const std::size_t distance = editDistance(name, candidate);
    if (distance < bestDistance && 3 * distance <= std::max(name.size(), candidate.size())) {
      best = candidate;
      bestDistance = distance;
    }
  }
  return best;
}

}  // namespace agent
