#include <limits>
#include <map>
#include <string>

#include "conformance/probe/Calls.h"
#include "conformance/probe/Rules.h"
#include "platform/util/UtilCommon.h"

namespace conformance::probe {
namespace {

using NS_UTIL::UtilCommon;
using Parts = std::map<std::string, std::string>;

UtilCommon& util() {
  UtilCommon* const instance =
      quietly("UtilCommon::Instance", [] { return UtilCommon::Instance(); });
  require(instance != nullptr, "UtilCommon::Instance returns null");
  return *instance;
}

void requireParts(const std::string& fdn, const Parts& expected) {
  Parts parts;
  quietly("GetSpliteFDNData", [&] { util().GetSpliteFDNData(parts, fdn, ","); });
  require(parts == expected, "GetSpliteFDNData reads \"" + fdn + "\" wrongly");
}

void requireClass(const std::string& fdn, const std::string& expected) {
  const std::string found = quietly("GetMoc", [&] { return util().GetMoc(fdn); });
  require(found == expected, "GetMoc is \"" + found + "\" for \"" + fdn + '"');
}

void requireNumber(const std::string& text, int expected) {
  const int found = quietly("Str2Int", [&] { return NS_UTIL::Str2Int(text); });
  require(found == expected, "Str2Int is " + std::to_string(found) + " for \"" + text + '"');
}

}  // namespace

void namesAreSplit() {
  requireParts("", {});
  requireParts("12", {});
  requireParts("NE=5", {{"NE", "5"}});
  requireParts("EMS=x,NE=5", {{"EMS", "x"}, {"NE", "5"}});
  requireParts("NE=1,NE=2", {{"NE", "1"}});
}

void classesAreFound() {
  requireClass("", "");
  requireClass("12", "");
  requireClass("NE=5", "NE");
  requireClass("EMS=x,ONE=5", "ONE");
}

void numbersAreRead() {
  const Parts parts = {{"a", "12"}, {"b", "x"}, {"c", "99999999999"}, {"d", "-7"}};
  const std::map<std::string, int> expected = {{"a", 12}, {"b", 1}, {"c", 1}, {"d", -7}, {"e", 1}};
  for (const auto& [name, number] : expected) {
    int value = 1;
    quietly("GetIntegerValueByName",
            [&, &key = name] { util().GetIntegerValueByName(parts, key, value); });
    require(value == number, "GetIntegerValueByName reads " + std::to_string(value) + " for \"" +
                                 name + "\", not " + std::to_string(number));
  }
  requireNumber("12", 12);
  requireNumber("-3x", -3);
  requireNumber("x", 0);
  requireNumber("", 0);
  requireNumber("99999999999", std::numeric_limits<std::int32_t>::max());
}

}  // namespace conformance::probe
