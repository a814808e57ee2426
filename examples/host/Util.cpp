// platform/util/: domain names such as "NE=1".

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <limits>

#include "platform/util/UtilCommon.h"

namespace NS_UTIL {

UtilCommon* UtilCommon::Instance() {
  static UtilCommon instance;
  return &instance;
}

void UtilCommon::GetSpliteFDNData(std::map<std::string, std::string>& parts, const std::string& fdn,
                                  const std::string& separator) {
  for (std::size_t begin = 0; begin <= fdn.size();) {
    const std::size_t end = std::min(fdn.find(separator, begin), fdn.size());
    const std::string term = fdn.substr(begin, end - begin);
    const std::size_t equals = term.find('=');
    if (equals != std::string::npos) {
      parts.emplace(term.substr(0, equals), term.substr(equals + 1));
    }
    begin = end + separator.size();
  }
}

std::string UtilCommon::GetMoc(const std::string& fdn) {
  const std::string last = fdn.substr(fdn.rfind(',') + 1);
  const std::size_t equals = last.find('=');
  return equals == std::string::npos ? "" : last.substr(0, equals);
}

bool UtilCommon::GetIntegerValueByName(const std::map<std::string, std::string>& parts,
                                       const std::string& name, int& value) {
  const auto part = parts.find(name);
  if (part == parts.end()) {
    return false;
  }
  const std::string& text = part->second;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size();
}

int Str2Int(const std::string& text) {
  const long value = std::strtol(text.c_str(), nullptr, 10);
  const long least = std::numeric_limits<int>::min();
  const long most = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp(value, least, most));
}

}  // namespace NS_UTIL
