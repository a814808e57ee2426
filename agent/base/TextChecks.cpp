#include "agent/base/TextChecks.h"

#include <utf8.h>

#include "agent/base/FailureCodes.h"

namespace agent {

std::optional<std::size_t> findInvalidUtf8(std::string_view text) {
  const auto invalid = utf8::find_invalid(text.begin(), text.end());
  if (invalid == text.end()) {
    return std::nullopt;
  }
  return static_cast<std::size_t>(invalid - text.begin());
}

std::string problemWith(std::string_view text) {
  if (text.size() > kMostTextBytes) {
    return "has more than " + std::to_string(kMostTextBytes) + " bytes";
  }
  if (text.find('\0') != std::string_view::npos) {
    return "contains a NUL character";
  }
  const auto invalid = findInvalidUtf8(text);
  return invalid ? "is not UTF-8 at byte " + std::to_string(*invalid) : std::string();
}

Outcome checkText(const std::string& subject, std::string_view text) {
  const std::string problem = problemWith(text);
  return problem.empty() ? Outcome() : Outcome{kInvalidName, subject + ' ' + problem};
}

}  // namespace agent
