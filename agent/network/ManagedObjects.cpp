#include "agent/network/ManagedObjects.h"

#include <algorithm>
#include <cstdlib>

#include "agent/base/PrintableText.h"
#include "agent/base/TextOrEmpty.h"
#include "fdn/Fdn.h"
#include "platform/agent/CorbaUtilInterface.h"

namespace agent {
namespace {

static_assert(kTopoSubnetworkObjectType == NS_CORBA::CorbaUtilInterface::kTopoSubnetworkType);
static_assert(kClockLinkObjectType == NS_CORBA::CorbaUtilInterface::kClockTopoLinkType);

constexpr char kTermSeparator = ',';
constexpr CORBA::ULong kMostPairsShown = 4;
constexpr std::size_t kMostOfATextShown = 80;

// A class of numbered objects.
struct NumberedClass {
  std::string_view tmfName;
  std::string_view domainName;  // the class in FDNs
  std::int32_t type;
  int missingNumber;  // the number of an FDN without a usable number; below 0: not nameable
};

constexpr NumberedClass kManagedElement = {tmf::kManagedElement, "NE", kManagedElementType, -1};
constexpr NumberedClass kNumberedClasses[] = {
    kManagedElement,
    {tmf::kOpticalElement, "ONE", kOpticalElementType, 0},
    {tmf::kManagementSystem, "OS", kManagementSystemType, 0},
};

struct TextClass {
  std::string_view tmfName;
  std::int32_t type;
  bool mayBeEmpty;
};

constexpr TextClass kTextClasses[] = {
    {tmf::kTopoSubnetwork, kTopoSubnetworkObjectType, false},
    {tmf::kClockLink, kClockLinkObjectType, true},
};

std::optional<ObjectKey> parseNumber(const NumberedClass& known, std::string_view value,
                                     std::string& problem) {
  if (!fdn::canonicalNumber(value)) {
    problem = "the value of " + inQuotes(known.tmfName) + " is no number of an object";
    return std::nullopt;
  }
  return ObjectKey{known.type, std::string(known.domainName) + '=' + std::string(value)};
}

std::optional<ObjectKey> parseText(const TextClass& known, std::string_view value,
                                   std::string& problem) {
  if (value.empty() && !known.mayBeEmpty) {
    problem = "the value of " + inQuotes(known.tmfName) + " is empty";
    return std::nullopt;
  }
  return ObjectKey{known.type, std::string(value)};
}

std::optional<ObjectKey> parseObject(std::string_view objectClass, std::string_view value,
                                     std::string& problem) {
  for (const NumberedClass& known : kNumberedClasses) {
    if (objectClass == known.tmfName) {
      return parseNumber(known, value, problem);
    }
  }
  for (const TextClass& known : kTextClasses) {
    if (objectClass == known.tmfName) {
      return parseText(known, value, problem);
    }
  }
  problem = inQuotes(objectClass) + " is no class of objects";
  return std::nullopt;
}

std::string formatPair(std::string_view name, std::string_view value) {
  return printable(name, kMostOfATextShown) + '=' + printable(value, kMostOfATextShown);
}

std::string_view tmfClassOf(std::int32_t type) {
  for (const NumberedClass& known : kNumberedClasses) {
    if (known.type == type) {
      return known.tmfName;
    }
  }
  return type == kClockLinkObjectType ? tmf::kClockLink : tmf::kTopoSubnetwork;
}

const NumberedClass& numberedClassOf(std::string_view domainName) {
  for (const NumberedClass& known : kNumberedClasses) {
    if (known.domainName == domainName) {
      return known;
    }
  }
  return kManagedElement;
}

// The number in an FDN: the value of the first term with the class of the last term.
struct FdnNumber {
  bool hasClass = false;  // any term has a class
  std::optional<std::int32_t> number;
};

FdnNumber numberIn(std::string_view fdn) {
  const std::string_view lastClass = fdn::classOfFdn(fdn);
  FdnNumber found;
  for (std::size_t start = 0; start <= fdn.size();) {
    const std::size_t end = std::min(fdn.find(kTermSeparator, start), fdn.size());
    const std::string_view term = fdn.substr(start, end - start);
    const std::size_t equals = term.find('=');
    found.hasClass = found.hasClass || equals != std::string_view::npos;
    if (equals != std::string_view::npos && term.substr(0, equals) == lastClass) {
      found.number = fdn::wholeNumber(term.substr(equals + 1));
      break;
    }
    start = end + 1;
  }
  return found;
}

std::optional<NumberedObject> ifNameable(std::int32_t type, std::int32_t number) {
  return number < 0 ? std::nullopt : std::optional(NumberedObject{type, number});
}

}  // namespace

std::optional<ObjectKey> parseObjectName(const globaldefs::NVSList_T& name, std::string_view ems,
                                         std::string& problem) {
  if (name.length() != 2) {
    const std::string pairs = name.length() == 1 ? " pair" : " pairs";
    problem = "it has " + std::to_string(name.length()) + pairs + " instead of 2";
    return std::nullopt;
  }
  if (textOrEmpty(name[0].name) != tmf::kEms) {
    problem = "its first pair is not the \"EMS\"";
    return std::nullopt;
  }
  if (textOrEmpty(name[0].value) != ems) {
    problem = "the \"EMS\" is not " + inQuotes(ems);
    return std::nullopt;
  }
  return parseObject(textOrEmpty(name[1].name), textOrEmpty(name[1].value), problem);
}

std::string formatName(const globaldefs::NVSList_T& name) {
  std::string text = "{";
  for (CORBA::ULong i = 0; i < std::min(name.length(), kMostPairsShown); ++i) {
    text +=
        (i == 0 ? "" : ", ") + formatPair(textOrEmpty(name[i].name), textOrEmpty(name[i].value));
  }
  return text + (name.length() > kMostPairsShown ? ", ...}" : "}");
}

std::string formatName(const ObjectKey& key, std::string_view ems) {
  return '{' + formatPair(tmf::kEms, ems) + ", " + formatObject(key) + '}';
}

std::string_view classOf(const ObjectKey& key) {
  return tmfClassOf(key.type);
}

std::string_view valueOf(const ObjectKey& key) {
  const std::size_t start = numberedObject(key) ? key.id.find('=') + 1 : 0;
  return std::string_view(key.id).substr(start);
}

std::string formatObject(const ObjectKey& key) {
  return formatPair(classOf(key), valueOf(key));
}

std::optional<NumberedObject> numberedObject(const ObjectKey& key) {
  for (const NumberedClass& known : kNumberedClasses) {
    const std::string prefix = std::string(known.domainName) + "=";
    if (known.type == key.type && key.id.compare(0, prefix.size(), prefix) == 0) {
      const auto number = fdn::canonicalNumber(std::string_view(key.id).substr(prefix.size()));
      return number ? ifNameable(key.type, *number) : std::nullopt;
    }
  }
  return std::nullopt;
}

ObjectKey keyOf(const NumberedObject& object) {
  for (const NumberedClass& known : kNumberedClasses) {
    if (known.type == object.type) {
      return {object.type, std::string(known.domainName) + '=' + std::to_string(object.number)};
    }
  }
  return {object.type, ""};
}

std::optional<NumberedObject> objectOfElementNode(const std::string& nodeId) {
  if (nodeId == NS_DOMAIN::kZeroId) {
    return std::nullopt;
  }
  const FdnNumber found = numberIn(nodeId);
  if (!found.hasClass) {
    return ifNameable(kManagedElementType, fdn::leadingNumber(nodeId));
  }
  const NumberedClass& known = numberedClassOf(fdn::classOfFdn(nodeId));
  return ifNameable(known.type, found.number.value_or(known.missingNumber));
}

bool hasElementNumber(const std::string& nodeId) {
  const FdnNumber found = numberIn(nodeId);
  return (found.hasClass ? found.number : fdn::wholeNumber(nodeId)).has_value();
}

std::optional<NumberedObject> objectOfClockReference(const std::string& reference) {
  const std::size_t separator = reference.find('=');
  if (separator == std::string::npos) {
    return std::nullopt;
  }
  const long long number = std::strtoll(reference.c_str() + separator + 1, nullptr, 10);
  return ifNameable(kManagedElementType, static_cast<std::int32_t>(number));
}

}  // namespace agent
