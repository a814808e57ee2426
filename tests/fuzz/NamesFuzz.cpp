// Names of objects, FDNs, and the ids of nodes and clock positions.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "agent/base/FailureCodes.h"
#include "agent/host/ObjectNaming.h"
#include "agent/model/NetworkModel.h"
#include "agent/network/ManagedObjects.h"
#include "fdn/Fdn.h"
#include "tests/fuzz/Require.h"

namespace {

using fuzz::require;
using globaldefs::NVSList_T;

constexpr const char* kEms = "ems";

// Lines of the input: CLASS=value, one for each pair.
NVSList_T nameOf(FuzzedDataProvider& input) {
  constexpr CORBA::ULong kMostPairs = 4;
  NVSList_T name;
  while (input.remaining_bytes() > 0 && name.length() < kMostPairs) {
    const std::string line = input.ConsumeRandomLengthString();
    const std::size_t equals = line.find('=');
    const CORBA::ULong last = name.length();
    name.length(last + 1);
    name[last].name = line.substr(0, equals).c_str();
    name[last].value = equals == std::string::npos ? "" : line.substr(equals + 1).c_str();
  }
  return name;
}

// A name with a meaning is the name of its key.
void checkName(agent::ObjectNaming& naming, const NVSList_T& name) {
  std::string problem;
  const auto key = agent::parseObjectName(name, kEms, problem);
  fuzz::requirePrintable(agent::formatName(name));
  fuzz::requirePrintable(problem);
  require(key.has_value() == problem.empty(), "a name has a key and a problem, or neither");
  naming.GetObjectType(name);
  std::string id;
  const bool isIndexed = naming.Name2Index(id, name) == agent::kSuccess;
  if (!key) {
    require(!isIndexed, "a name without a key has an index");
    return;
  }
  require(!isIndexed || id == key->id, "a name has two ids");
  require(std::string(name[1].name.in()) == agent::classOf(*key), "a name has another class");
  require(std::string(name[1].value.in()) == agent::valueOf(*key), "a name has another value");
  fuzz::requirePrintable(agent::formatName(*key, kEms));
  fuzz::requirePrintable(agent::formatObject(*key));
  if (const auto numbered = agent::numberedObject(*key)) {
    require(agent::keyOf(*numbered) == *key, "a numbered object has another key");
  }
}

// The name of a node or of an id leads back to the id.
void checkId(agent::ObjectNaming& naming, const std::string& id) {
  NVSList_T name;
  if (naming.ConvertTopoNodeIdToName(name, id) == agent::kSuccess) {
    std::string back;
    require(naming.Name2Index(back, name) == agent::kSuccess && back == id,
            "the name of a subnetwork does not lead to its id");
  }
  agent::hasElementNumber(id);
  if (const auto object = agent::objectOfElementNode(id)) {
    require(object->number >= 0, "an object has a negative number");
    NS_CORBA::DomainObjectKey key{0, object->number};
    require(naming.ConvertNEIndexToName(name, key) == agent::kSuccess, "an object has no name");
  }
  agent::objectOfClockReference(id);
}

void checkFdn(const std::string& text, const std::string& separator) {
  fdn::FdnParts parts;
  fdn::splitFdn(parts, text, separator);
  fdn::classOfFdn(text);
  const auto whole = fdn::wholeNumber(text);
  const auto canonical = fdn::canonicalNumber(text);
  require(!whole || *whole == fdn::leadingNumber(text), "two numbers of a text");
  require(!canonical || std::to_string(*canonical) == text, "a number has two texts");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const agent::NetworkModel model{agent::Network{}};
  static agent::ObjectNaming naming(kEms, model);
  FuzzedDataProvider input(data, size);
  const std::string id = input.ConsumeRandomLengthString();
  checkId(naming, id);
  checkFdn(id, input.ConsumeRandomLengthString(2));
  checkName(naming, nameOf(input));
  return 0;
}
