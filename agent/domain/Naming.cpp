#include "agent/domain/Naming.h"

#include <optional>
#include <string_view>
#include <utility>

#include "agent/domain/FailureCodes.h"
#include "agent/domain/Text.h"

namespace agent {
namespace {

constexpr const char* kEms = "EMS";
constexpr const char* kTopoSubnetwork = "TopoSubnetwork";

// A class of numbered objects.
struct NumberedClass {
  const char* tmfName;
  const char* domainName;  // the class of its FDNs
  int objectType;
};

constexpr NumberedClass kManagedElement = {"ManagedElement", "NE", kManagedElementType};
constexpr NumberedClass kOpticalElement = {"ONE", "ONE", kOpticalElementType};
constexpr NumberedClass kManagementSystem = {"OS", "OS", kManagementSystemType};

struct ParsedName {
  std::string id;
  int objectType;  // kTopoSubnetworkType without a look whether it exists
};

std::string_view textOf(const char* text) {
  return text == nullptr ? std::string_view() : std::string_view(text);
}

std::optional<ParsedName> parseObject(std::string_view objectClass, std::string_view value) {
  if (objectClass == kTopoSubnetwork && !value.empty()) {
    return ParsedName{std::string(value), NS_CORBA::CorbaUtilInterface::kTopoSubnetworkType};
  }
  for (const NumberedClass& known : {kManagedElement, kOpticalElement, kManagementSystem}) {
    if (objectClass == known.tmfName && canonicalNumber(value)) {
      return ParsedName{std::string(known.domainName) + '=' + std::string(value), known.objectType};
    }
  }
  return std::nullopt;
}

std::optional<ParsedName> parseName(const globaldefs::NVSList_T& name, std::string_view ems) {
  if (name.length() != 2 || textOf(name[0].name) != kEms || textOf(name[0].value) != ems) {
    return std::nullopt;
  }
  return parseObject(textOf(name[1].name), textOf(name[1].value));
}

void setPair(globaldefs::NameAndStringValue_T& pair, const char* name, const std::string& value) {
  pair.name = CORBA::string_dup(name);
  pair.value = CORBA::string_dup(value.c_str());
}

}  // namespace

NamingService::NamingService(std::string ems, const NetworkModel& model)
    : ems_(std::move(ems)), model_(model) {}

int NamingService::GetObjectType(const globaldefs::NVSList_T& name) {
  const auto parsed = parseName(name, ems_);
  if (!parsed) {
    return kNoObjectType;
  }
  const bool isMissing =
      parsed->objectType == kTopoSubnetworkType && !model_.hasTopoSubnetwork(parsed->id);
  return isMissing ? kNoObjectType : parsed->objectType;
}

CORBA::ULong NamingService::ConvertNEIndexToName(globaldefs::NVSList_T& name,
                                                 NS_CORBA::DomainObjectKey& key) {
  return setNumberedName(name, kManagedElement.tmfName, key.objectNumber);
}

CORBA::ULong NamingService::ConvertONEIndexToName(globaldefs::NVSList_T& name,
                                                  NS_CORBA::DomainObjectKey& key) {
  return setNumberedName(name, kOpticalElement.tmfName, key.objectNumber);
}

CORBA::ULong NamingService::ConvertOSIndexToName(globaldefs::NVSList_T& name,
                                                 std::int32_t& number) {
  return setNumberedName(name, kManagementSystem.tmfName, number);
}

CORBA::ULong NamingService::ConvertTopoNodeIdToName(globaldefs::NVSList_T& name,
                                                    const std::string& id) {
  return setName(name, kTopoSubnetwork, id);
}

CORBA::ULong NamingService::Name2Index(std::string& id, const globaldefs::NVSList_T& name) {
  auto parsed = parseName(name, ems_);
  if (!parsed) {
    return kInvalidName;
  }
  id = std::move(parsed->id);
  return kSuccess;
}

CORBA::ULong NamingService::GetObjectLabelInfo(NS_CORBA::ObjectLabelInfo& info,
                                               const std::string& id, int type) {
  info = {};
  info.userLabel = model_.labelOf(type, id);
  return kSuccess;
}

CORBA::ULong NamingService::setName(globaldefs::NVSList_T& name, const char* objectClass,
                                    const std::string& value) const {
  name.length(0);
  // CORBA strings end at NUL, so an id with one in it would come back as another id.
  if (value.empty() || value.find('\0') != std::string::npos) {
    return kInvalidName;
  }
  name.length(2);
  setPair(name[0], kEms, ems_);
  setPair(name[1], objectClass, value);
  return kSuccess;
}

CORBA::ULong NamingService::setNumberedName(globaldefs::NVSList_T& name, const char* objectClass,
                                            std::int32_t number) const {
  return setName(name, objectClass, number < 0 ? std::string() : std::to_string(number));
}

}  // namespace agent
