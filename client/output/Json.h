// Values and records as JSON. Thread-safety of all functions: any thread.

#ifndef CLIENT_OUTPUT_JSON_H
#define CLIENT_OUTPUT_JSON_H

#include <nlohmann/json.hpp>

#include "client/agent/RecordFields.h"

namespace topoctl {

using Json = nlohmann::ordered_json;

// Texts become valid UTF-8.
Json toJson(const globaldefs::NVSList_T& pairs);
Json toJson(const Value& value);

// An object with the fields in the order of the IDL.
template <typename Record>
Json toJson(const Record& record, const RecordFields<Record>& fields) {
  Json object = Json::object();
  for (const auto& field : fields) {
    object[field.name] = toJson(field.value(record));
  }
  return object;
}

}  // namespace topoctl

#endif
