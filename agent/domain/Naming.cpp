#include "agent/domain/Naming.h"

#include <utility>

#include "agent/domain/FailureCodes.h"

namespace agent {
namespace {

void setPair(globaldefs::NameAndStringValue_T& pair, const char* name, const std::string& value) {
  pair.name = CORBA::string_dup(name);
  pair.value = CORBA::string_dup(value.c_str());
}

}  // namespace

NamingService::NamingService(std::string ems, const NetworkModel& model)
    : ems_(std::move(ems)), model_(model) {}

int NamingService::GetObjectType(const globaldefs::NVSList_T& name) {
  const auto parsed = parse(name);
  if (!parsed) {
    return kNoObjectType;
  }
  const bool isMissing =
      parsed->type == kTopoSubnetworkType && !model_.hasTopoSubnetwork(parsed->id);
  return isMissing ? kNoObjectType : parsed->type;
}

CORBA::ULong NamingService::ConvertNEIndexToName(globaldefs::NVSList_T& name,
                                                 NS_CORBA::DomainObjectKey& key) {
  return setNumberedName(name, tmf::kManagedElement, key.objectNumber);
}

CORBA::ULong NamingService::ConvertONEIndexToName(globaldefs::NVSList_T& name,
                                                  NS_CORBA::DomainObjectKey& key) {
  return setNumberedName(name, tmf::kOpticalElement, key.objectNumber);
}

CORBA::ULong NamingService::ConvertOSIndexToName(globaldefs::NVSList_T& name,
                                                 std::int32_t& number) {
  return setNumberedName(name, tmf::kManagementSystem, number);
}

CORBA::ULong NamingService::ConvertTopoNodeIdToName(globaldefs::NVSList_T& name,
                                                    const std::string& id) {
  return setName(name, tmf::kTopoSubnetwork, id);
}

CORBA::ULong NamingService::Name2Index(std::string& id, const globaldefs::NVSList_T& name) {
  auto parsed = parse(name);
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

std::optional<ObjectKey> NamingService::parse(const globaldefs::NVSList_T& name) const {
  std::string problem;
  auto key = parseObjectName(name, ems_, problem);
  return key && key->type != kClockTopoLinkType ? std::move(key) : std::nullopt;
}

CORBA::ULong NamingService::setName(globaldefs::NVSList_T& name, const char* objectClass,
                                    const std::string& value) const {
  name.length(0);
  // CORBA strings end at NUL, so an id with one in it would come back as another id.
  if (value.empty() || value.find('\0') != std::string::npos) {
    return kInvalidName;
  }
  name.length(2);
  setPair(name[0], tmf::kEms, ems_);
  setPair(name[1], objectClass, value);
  return kSuccess;
}

CORBA::ULong NamingService::setNumberedName(globaldefs::NVSList_T& name, const char* objectClass,
                                            std::int32_t number) const {
  return setName(name, objectClass, number < 0 ? std::string() : std::to_string(number));
}

}  // namespace agent
