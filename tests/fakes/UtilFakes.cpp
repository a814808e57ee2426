// Parsing of domain names: as in production, unless a test sets CorbaUtilAnswers::className. The
// calls are in the journal.

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "platform/util/UtilCommon.h"
#include "tests/fakes/CorbaUtil.h"
#include "tests/fakes/Journal.h"

namespace {

long long clamped(const std::string& text) {
  return std::strtoll(text.c_str(), nullptr, 10);
}

bool isSignedDecimal(const std::string& text) {
  const std::size_t digits = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
  return text.size() > digits && text.find_first_not_of("0123456789", digits) == std::string::npos;
}

bool fits(long long number) {
  return number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<int>::max();
}

}  // namespace

namespace NS_UTIL {

using fakes::called;
using fakes::quoted;

UtilCommon* UtilCommon::Instance() {
  static UtilCommon util;
  return &util;
}

void UtilCommon::GetSpliteFDNData(std::map<std::string, std::string>& parts, const std::string& fdn,
                                  const std::string& separator) {
  called("GetSpliteFDNData", quoted(fdn) + ", " + quoted(separator));
  std::size_t begin = 0;
  while (begin <= fdn.size()) {
    const std::size_t next = separator.empty() ? std::string::npos : fdn.find(separator, begin);
    const std::size_t end = std::min(next, fdn.size());
    const std::string term = fdn.substr(begin, end - begin);
    const std::size_t equals = term.find('=');
    if (equals != std::string::npos) {
      parts.emplace(term.substr(0, equals), term.substr(equals + 1));
    }
    begin = end + std::max<std::size_t>(separator.size(), 1);
  }
}

std::string UtilCommon::GetMoc(const std::string& fdn) {
  called("GetMoc", quoted(fdn));
  if (!fakes::corbaUtilAnswers().className.empty()) {
    return fakes::corbaUtilAnswers().className;
  }
  const std::size_t comma = fdn.rfind(',');
  const std::string last = comma == std::string::npos ? fdn : fdn.substr(comma + 1);
  const std::size_t equals = last.find('=');
  return equals == std::string::npos ? "" : last.substr(0, equals);
}

bool UtilCommon::GetIntegerValueByName(const std::map<std::string, std::string>& parts,
                                       const std::string& name, int& value) {
  called("GetIntegerValueByName", quoted(name));
  const auto part = parts.find(name);
  if (part == parts.end() || !isSignedDecimal(part->second) || !fits(clamped(part->second))) {
    return false;
  }
  value = static_cast<int>(clamped(part->second));
  return true;
}

int Str2Int(const std::string& text) {
  called("Str2Int", quoted(text));
  const bool startsWithDigit =
      !text.empty() && std::string("+-0123456789").find(text[0]) != std::string::npos;
  if (!startsWithDigit) {
    return 0;
  }
  const long long number = clamped(text);
  if (number < std::numeric_limits<int>::min()) {
    return std::numeric_limits<int>::min();
  }
  if (number > std::numeric_limits<int>::max()) {
    return std::numeric_limits<int>::max();
  }
  return static_cast<int>(number);
}

}  // namespace NS_UTIL
