// platform/util/: domain names such as "NE=1".
#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <limits>
#include "platform/util/UtilCommon.h"

using NS_UTIL::UtilCommon;

UtilCommon* UtilCommon::Instance() {
  static UtilCommon instance;
  return &instance;
}

void UtilCommon::GetSpliteFDNData(std::map<std::string, std::string>& parts, const std::string& fdn,
                                  const std::string& separator) {
  for (std::size_t begin = 0, end = 0; begin < fdn.size(); begin = end + separator.size()) {
    end = std::min(fdn.find(separator, begin), fdn.size());
    const std::string term = fdn.substr(begin, end - begin);
    const std::size_t equals = term.find('=');
    if (equals < term.size()) parts.emplace(term.substr(0, equals), term.substr(equals + 1));
  }
}

std::string UtilCommon::GetMoc(const std::string& fdn) {
  const std::string term = fdn.substr(fdn.rfind(',') + 1);
  return term.find('=') == std::string::npos ? "" : term.substr(0, term.find('='));
}

bool UtilCommon::GetIntegerValueByName(const std::map<std::string, std::string>& parts,
                                       const std::string& name, int& value) {
  const auto part = parts.find(name);
  if (part == parts.end()) return false;
  const char* const end = part->second.data() + part->second.size();
  const auto result = std::from_chars(part->second.data(), end, value);
  return result.ec == std::errc() && result.ptr == end;
}

int NS_UTIL::Str2Int(const std::string& text) {
  using Int = std::numeric_limits<int>;
  const long value = std::strtol(text.c_str(), nullptr, 10);
  return static_cast<int>(std::clamp<long>(value, Int::min(), Int::max()));
}
