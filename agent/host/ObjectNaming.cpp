#include "agent/host/ObjectNaming.h"

#include <charconv>
#include <cstring>
#include <utility>

#include "agent/base/FailureCodes.h"
#include "agent/base/PrintableText.h"

namespace agent {
namespace {

// As CORBA::string_dup, for a text of known length.
char* duplicate(std::string_view text) {
  char* const copy = CORBA::string_alloc(static_cast<CORBA::ULong>(text.size()));
  if (copy != nullptr) {
    std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
  }
  return copy;
}

void setPair(globaldefs::NameAndStringValue_T& pair, std::string_view name,
             std::string_view value) {
  pair.name = duplicate(name);
  pair.value = duplicate(value);
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
  if (id.empty()) {
    return refuseName(name, tmf::kTopoSubnetwork, id, "the id is empty");
  }
  // CORBA strings end at NUL, so an id that contains NUL would return as a different id.
  if (id.find('\0') != std::string::npos) {
    return refuseName(name, tmf::kTopoSubnetwork, id, "the id contains a NUL character");
  }
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

CORBA::ULong ObjectNaming::setName(globaldefs::NVSList_T& name, std::string_view objectClass,
                                   std::string_view value) const {
  name.replace(2, 2, globaldefs::NVSList_T::allocbuf(2), true);
  setPair(name[0], tmf::kEms, ems_);
  setPair(name[1], objectClass, value);
  return kSuccess;
}

CORBA::ULong ObjectNaming::setNumberedName(globaldefs::NVSList_T& name,
                                           std::string_view objectClass,
                                           std::int32_t number) const {
  if (number < 0) {
    return refuseName(name, objectClass, std::to_string(number), "the number is negative");
  }
  char digits[10];
  const char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  return setName(name, objectClass, {digits, static_cast<std::size_t>(end - digits)});
}

CORBA::ULong ObjectNaming::refuseName(globaldefs::NVSList_T& name, std::string_view objectClass,
                                      const std::string& id, const char* why) const {
  name.length(0);
  if (unnamed_) {
    unnamed_("no name for " + std::string(objectClass) + ' ' + inQuotes(id) + ": " + why);
  }
  return kInvalidName;
}

}  // namespace agent
