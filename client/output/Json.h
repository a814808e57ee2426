// Values and records as JSON, with the fields in the order of their description.

#ifndef CLIENT_OUTPUT_JSON_H
#define CLIENT_OUTPUT_JSON_H

#include <nlohmann/json.hpp>

#include "client/agent/RecordFields.h"

namespace topoctl {

using Json = nlohmann::ordered_json;

// All texts become valid UTF-8.
Json toJson(const globaldefs::NVSList_T& pairs);
Json toJson(const Value& value);

template <typename Record>
Json toJson(const Record& record, const Description<Record>& description) {
  Json object = Json::object();
  for (const auto& field : description) {
    object[field.name] = toJson(field.value(record));
  }
  return object;
}

}  // namespace topoctl

#endif
