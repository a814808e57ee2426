#include "agent/ConfigFile.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <fstream>
#include <map>
#include <numeric>
#include <sstream>
#include <system_error>

#include "agent/Options.h"

namespace agent {
namespace {

constexpr std::size_t kLargestFile = std::size_t{1} << 20;

std::string readText(const std::filesystem::path& file) {
  std::error_code status;
  if (std::filesystem::is_directory(file, status)) {
    throw UsageError(file.string() + ": is a directory");
  }
  std::ifstream stream(file, std::ios::binary);
  if (!stream) {
    throw UsageError(file.string() + ": " + std::generic_category().message(errno));
  }
  std::string text(kLargestFile + 1, '\0');
  stream.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(stream.gcount()));
  if (stream.bad()) {
    throw UsageError(file.string() + ": cannot be read");
  }
  if (text.size() > kLargestFile) {
    throw UsageError(file.string() + ": is larger than 1 MiB");
  }
  return text;
}

bool isBlankOrComment(const std::string& trimmed) {
  return trimmed.empty() || trimmed.front() == '#' || trimmed.front() == ';';
}

// The parser of CLI11 silently skips lines of one or two characters and reports no line numbers,
// so the parser gets one line at a time.
ConfigLine parseLine(const std::string& trimmed) {
  if (trimmed.front() == '[') {
    throw UsageError("a section; each line is NAME = VALUE");
  }
  std::istringstream stream(trimmed);
  const std::vector<CLI::ConfigItem> items = CLI::ConfigTOML().from_config(stream);
  if (items.size() != 1 || items[0].name.empty()) {
    throw UsageError("'" + trimmed + "' is not NAME = VALUE");
  }
  const CLI::ConfigItem& item = items[0];
  if (item.inputs.size() != 1) {
    throw UsageError("'" + item.fullname() +
                     "' has more than one value; put a value with spaces or commas in quotes");
  }
  return {0, item.fullname(), item.inputs[0]};
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

std::vector<ConfigLine> readConfigFile(const std::filesystem::path& file) {
  std::istringstream text(readText(file));
  std::vector<ConfigLine> result;
  std::map<std::string, std::size_t> lineOf;
  std::string line;
  for (std::size_t number = 1; std::getline(text, line); ++number) {
    CLI::detail::trim(line);
    if (isBlankOrComment(line)) {
      continue;
    }
    try {
      ConfigLine parsed = parseLine(line);
      parsed.number = number;
      const auto [first, isNew] = lineOf.emplace(parsed.name, number);
      if (!isNew) {
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
