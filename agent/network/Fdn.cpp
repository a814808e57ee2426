#include "platform/util/UtilCommon.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

namespace NS_UTIL {
namespace {

constexpr char kTermSeparator = ',';

struct Decimal {
  std::int64_t value = 0;  // held to the limits of a signed 32-bit integer
  bool isExact = true;     // not held
  std::size_t digits = 0;
  std::size_t length = 0;  // sign and digits
};

constexpr std::int64_t kLeast = std::numeric_limits<std::int32_t>::min();
constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();

bool isDigit(char character) {
  return character >= '0' && character <= '9';
}

// An optional sign and the digits after it, at the start of a text.
Decimal leadingDecimal(std::string_view text) {
  Decimal decimal;
  const bool isNegative = !text.empty() && text.front() == '-';
  const bool hasSign = isNegative || (!text.empty() && text.front() == '+');
  decimal.length = hasSign ? 1 : 0;
  for (; decimal.length < text.size() && isDigit(text[decimal.length]); ++decimal.length) {
    const int digit = text[decimal.length] - '0';
    const std::int64_t next = decimal.value * 10 + (isNegative ? -digit : digit);
    decimal.value = std::clamp(next, kLeast, kMost);
    decimal.isExact = decimal.isExact && decimal.value == next;
    ++decimal.digits;
  }
  return decimal;
}

std::string_view classOf(std::string_view term) {
  const std::size_t equals = term.find('=');
  return equals == std::string_view::npos ? std::string_view() : term.substr(0, equals);
}

void addPart(std::map<std::string, std::string>& parts, std::string_view term) {
  const std::size_t equals = term.find('=');
  if (equals != std::string_view::npos) {
    parts.emplace(term.substr(0, equals), term.substr(equals + 1));
  }
}

}  // namespace

UtilCommon* UtilCommon::Instance() {
  static UtilCommon instance;
  return &instance;
}

void UtilCommon::GetSpliteFDNData(std::map<std::string, std::string>& parts, const std::string& fdn,
                                  const std::string& separator) {
  std::size_t start = 0;
  std::size_t end = separator.empty() ? std::string::npos : fdn.find(separator);
  while (end != std::string::npos) {
    addPart(parts, std::string_view(fdn).substr(start, end - start));
    start = end + separator.size();
    end = fdn.find(separator, start);
  }
  addPart(parts, std::string_view(fdn).substr(start));
}

std::string UtilCommon::GetMoc(const std::string& fdn) {
  return std::string(classOf(std::string_view(fdn).substr(fdn.rfind(kTermSeparator) + 1)));
}

bool UtilCommon::GetIntegerValueByName(const std::map<std::string, std::string>& parts,
                                       const std::string& name, int& value) {
  const auto part = parts.find(name);
  if (part == parts.end()) {
    return false;
  }
  const Decimal decimal = leadingDecimal(part->second);
  if (decimal.digits == 0 || !decimal.isExact || decimal.length != part->second.size()) {
    return false;
  }
  value = static_cast<int>(decimal.value);
  return true;
}

int Str2Int(const std::string& text) {
  return static_cast<int>(leadingDecimal(text).value);
}

}  // namespace NS_UTIL
