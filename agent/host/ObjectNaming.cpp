#include "agent/host/ObjectNaming.h"

#include <utility>

#include "agent/base/FailureCodes.h"
#include "agent/base/PrintableText.h"

namespace agent {
namespace {

void setPair(globaldefs::NameAndStringValue_T& pair, const char* name, const std::string& value) {
  pair.name = CORBA::string_dup(name);
  pair.value = CORBA::string_dup(value.c_str());
}

}  // namespace

ObjectNaming::ObjectNaming(std::string ems, const NetworkModel& model, Unnamed unnamed)
    : ems_(std::move(ems)), model_(model), unnamed_(std::move(unnamed)) {}

int ObjectNaming::GetObjectType(const globaldefs::NVSList_T& name) {
  const auto parsed = parse(name);
  if (!parsed) {
    return kNoObjectType;
  }
  const bool isMissing =
      parsed->type == kTopoSubnetworkType && !model_.hasTopoSubnetwork(parsed->id);
  return isMissing ? kNoObjectType : parsed->type;
}

CORBA::ULong ObjectNaming::ConvertNEIndexToName(globaldefs::NVSList_T& name,
                                                NS_CORBA::DomainObjectKey& key) {
  return setNumberedName(name, tmf::kManagedElement, key.objectNumber);
}

CORBA::ULong ObjectNaming::ConvertONEIndexToName(globaldefs::NVSList_T& name,
                                                 NS_CORBA::DomainObjectKey& key) {
  return setNumberedName(name, tmf::kOpticalElement, key.objectNumber);
}

CORBA::ULong ObjectNaming::ConvertOSIndexToName(globaldefs::NVSList_T& name, std::int32_t& number) {
  return setNumberedName(name, tmf::kManagementSystem, number);
}

CORBA::ULong ObjectNaming::ConvertTopoNodeIdToName(globaldefs::NVSList_T& name,
                                                   const std::string& id) {
  return setName(name, tmf::kTopoSubnetwork, id);
}

CORBA::ULong ObjectNaming::Name2Index(std::string& id, const globaldefs::NVSList_T& name) {
  auto parsed = parse(name);
  if (!parsed) {
    return kInvalidName;
  }
  id = std::move(parsed->id);
  return kSuccess;
}

CORBA::ULong ObjectNaming::GetObjectLabelInfo(NS_CORBA::ObjectLabelInfo& info,
                                              const std::string& id, int type) {
  info = {};
  info.userLabel = model_.labelOf(type, id);
  return kSuccess;
}

std::optional<ObjectKey> ObjectNaming::parse(const globaldefs::NVSList_T& name) const {
  std::string problem;
  auto key = parseObjectName(name, ems_, problem);
  return key && key->type != kClockTopoLinkType ? std::move(key) : std::nullopt;
}

CORBA::ULong ObjectNaming::setName(globaldefs::NVSList_T& name, const char* objectClass,
                                   const std::string& value) const {
  name.length(0);
  if (value.empty()) {
    return logUnnamed(objectClass, value, "the id is empty");
  }
  // CORBA strings end at NUL, so an id that contains NUL would return as a different id.
  if (value.find('\0') != std::string::npos) {
    return logUnnamed(objectClass, value, "the id contains a NUL character");
  }
  name.length(2);
  setPair(name[0], tmf::kEms, ems_);
  setPair(name[1], objectClass, value);
  return kSuccess;
}

CORBA::ULong ObjectNaming::setNumberedName(globaldefs::NVSList_T& name, const char* objectClass,
                                           std::int32_t number) const {
  if (number < 0) {
    name.length(0);
    return logUnnamed(objectClass, std::to_string(number), "the number is negative");
  }
  return setName(name, objectClass, std::to_string(number));
}

CORBA::ULong ObjectNaming::logUnnamed(const char* objectClass, const std::string& id,
                                      const char* why) const {
  if (unnamed_) {
    unnamed_(std::string("no name for ") + objectClass + ' ' + inQuotes(id) + ": " + why);
  }
  return kInvalidName;
}

}  // namespace agent
