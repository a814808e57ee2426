#include "conformance/HostProtocol.h"

#include <set>
#include <sstream>
#include <utility>

#include "conformance/shared/ProbeProtocol.h"

namespace conformance {
namespace {

// The text after the prefix and one space; "" when the line equals the prefix.
std::optional<std::string> textAfter(const std::string& line, const std::string& prefix) {
  if (line == prefix) {
    return "";
  }
  const std::string start = prefix + ' ';
  return line.compare(0, start.size(), start) == 0 ? std::optional(line.substr(start.size()))
                                                   : std::nullopt;
}

std::vector<std::string> split(const std::string& line, char separator) {
  std::vector<std::string> parts(1);
  for (const char c : line) {
    if (c == separator) {
      parts.emplace_back();
    } else {
      parts.back().push_back(c);
    }
  }
  return parts;
}

std::optional<Outcome> outcomeNamed(const std::string& name) {
  if (name == probe::kPass) {
    return Outcome::kPass;
  }
  if (name == probe::kFail) {
    return Outcome::kFail;
  }
  return name == probe::kSkip ? std::optional(Outcome::kSkip) : std::nullopt;
}

// Gives the outcome to the latest check of the rule.
void conclude(std::vector<Result>& results, const std::vector<std::string>& parts) {
  const auto outcome = outcomeNamed(parts[0]);
  if (!outcome || results.empty() || results.back().rule != parts[1]) {
    return;
  }
  results.back().outcome = *outcome;
  results.back().reason = parts.size() > 2 ? parts[2] : "";
}

}  // namespace

std::optional<std::string> referenceInReadyLine(const std::string& line) {
  if (auto reference = textAfter(line, "ready"); reference && !reference->empty()) {
    return reference;
  }
  const std::string mark = ", reference ";
  const std::size_t at = line.find(mark);
  if (at == std::string::npos) {
    return std::nullopt;
  }
  const std::size_t begin = at + mark.size();
  return line.substr(begin, line.find(',', begin) - begin);
}

std::optional<Answer> parseAnswer(const std::string& line) {
  if (const auto text = textAfter(line, "ok")) {
    return Answer{true, *text};
  }
  if (const auto reason = textAfter(line, "failed")) {
    return Answer{false, *reason};
  }
  return std::nullopt;
}

std::vector<std::string> expand(const std::vector<std::string>& texts,
                                const std::string& placeholder, const std::string& value) {
  std::vector<std::string> result = texts;
  for (std::string& text : result) {
    for (std::size_t at = text.find(placeholder); at != std::string::npos;
         at = text.find(placeholder, at + value.size())) {
      text.replace(at, placeholder.size(), value);
    }
  }
  return result;
}

std::vector<Result> parseProbeReport(const std::string& report, const std::string& unfinished) {
  std::vector<Result> results;
  std::istringstream lines(report);
  for (std::string line; std::getline(lines, line);) {
    const std::vector<std::string> parts = split(line, '\t');
    if (parts[0] == probe::kBegin && parts.size() == 3) {
      results.push_back({Outcome::kFail, parts[1], parts[2], unfinished});
    } else if (parts.size() > 1) {
      conclude(results, parts);
    }
  }
  return results;
}

std::size_t countMappedFiles(const std::string& maps, const std::string& baseName) {
  std::set<std::pair<std::string, std::string>> files;
  std::istringstream lines(maps);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream fields(line);
    std::string range, permissions, offset, device, inode, path;
    fields >> range >> permissions >> offset >> device >> inode;
    std::getline(fields >> std::ws, path);
    const std::string deleted = " (deleted)";
    if (path.size() > deleted.size() &&
        path.compare(path.size() - deleted.size(), deleted.size(), deleted) == 0) {
      path.resize(path.size() - deleted.size());
    }
    if (path.substr(path.rfind('/') + 1) == baseName) {
      files.emplace(device, inode);
    }
  }
  return files.size();
}

}  // namespace conformance
