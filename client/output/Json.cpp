#include "client/output/Json.h"

#include <utility>

#include "client/base/Utf8.h"

namespace topoctl {

Json toJson(const globaldefs::NVSList_T& pairs) {
  Json array = Json::array();
  forEachPair(pairs, [&array](std::string_view name, std::string_view value) {
    Json pair;
    pair["name"] = validUtf8(name);
    pair["value"] = validUtf8(value);
    array.push_back(std::move(pair));
  });
  return array;
}

Json toJson(const Value& value) {
  return std::visit(Overloaded{[](Unknown) { return Json(nullptr); },
                               [](std::string_view text) { return Json(validUtf8(text)); },
                               [](NamePairs name) { return toJson(*name.pairs); },
                               [](InfoPairs information) { return toJson(*information.pairs); },
                               [](auto plain) { return Json(plain); }},
                    value);
}

}  // namespace topoctl
