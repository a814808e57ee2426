// Defines platform/util/UtilCommon.h: splitting of domain names.

#include "platform/util/UtilCommon.h"

#include "fdn/Fdn.h"

namespace NS_UTIL {

UtilCommon* UtilCommon::Instance() {
  static UtilCommon instance;
  return &instance;
}

void UtilCommon::GetSpliteFDNData(std::map<std::string, std::string>& parts, const std::string& fdn,
                                  const std::string& separator) {
  fdn::splitFdn(parts, fdn, separator);
}

std::string UtilCommon::GetMoc(const std::string& fdn) {
  return std::string(fdn::classOfFdn(fdn));
}

bool UtilCommon::GetIntegerValueByName(const std::map<std::string, std::string>& parts,
                                       const std::string& name, int& value) {
  const auto part = parts.find(name);
  const auto number =
      part == parts.end() ? std::optional<std::int32_t>() : fdn::wholeNumber(part->second);
  value = number.value_or(value);
  return number.has_value();
}

int Str2Int(const std::string& text) {
  return fdn::leadingNumber(text);
}

}  // namespace NS_UTIL
