// The common attributes of the agent's objects: user label, owner, native name and additional
// information.

#ifndef AGENT_CHANGES_ATTRIBUTESERVICE_H
#define AGENT_CHANGES_ATTRIBUTESERVICE_H

#include <cstddef>
#include <string>
#include <string_view>

#include "agent/base/OperationResult.h"
#include "agent/base/TextChecks.h"
#include "agent/changes/NetworkWriter.h"
#include "agent/network/ManagedObjects.h"
#include "orb/idl/globaldefs.h"

namespace agent {

// Everything that is stored about an object.
struct ObjectDetails {
  ObjectKey key;
  ObjectView view;
  std::string owner;
  InfoPairs info;
};

// Changes one attribute per call. After a success the change is in the store and in the model; a
// failure changes nothing. Object names are the names of ManagedObjects.h.
//
// Thread-safety: any thread. Ownership: borrows the writer, which outlives the service. Errors:
// kInvalidName for a malformed name and for a text that is not UTF-8 or too long, kEntityNotFound
// for an unknown object, kInternalError for store and memory.
class AttributeService {
 public:
  // ems: the value of the "EMS" pair of every name.
  AttributeService(std::string ems, NetworkWriter& writer);

  // An empty label removes the label. With isUnique, fails with kUserLabelInUse if another object
  // of the same type has the label.
  Outcome setUserLabel(const globaldefs::NVSList_T& name, std::string_view label, bool isUnique);

  // An empty owner removes the owner.
  Outcome setOwner(const globaldefs::NVSList_T& name, std::string_view owner);

  // Sets the name of the object in every view. Raises EVENT_TOPO_NODE_CHANGED with the topology
  // nodes that get a different name; raises no event without such nodes.
  Outcome setNativeName(const globaldefs::NVSList_T& name, std::string_view nativeName);

  // Merges pairs into the stored pairs, as mergedInfo(), and replaces the pairs by the result. Also
  // fails with kInvalidName for a pair without a name and for two pairs with the same name, and
  // with kTooMuch if the result is larger than kMostInfoBytes. A failure leaves the pairs
  // unchanged.
  Outcome setAdditionalInfo(const globaldefs::NVSList_T& name, globaldefs::NVSList_T& pairs);

  // Removes user label, owner and additional information.
  Outcome reset(const globaldefs::NVSList_T& name);

  // The name of an object may lack the pair "EMS".
  Result<ObjectDetails> details(const globaldefs::NVSList_T& name) const;

  const std::string& ems() const { return ems_; }

 private:
  template <typename Check, typename Apply>
  Outcome change(const globaldefs::NVSList_T& name, Check check, Apply apply);

  Result<ObjectKey> resolve(const globaldefs::NVSList_T& name) const;
  Outcome checkExists(const ObjectKey& key, const globaldefs::NVSList_T& name) const;
  Outcome checkUnused(NetworkStore& store, const ObjectKey& key, const std::string& label) const;

  const std::string ems_;
  NetworkWriter& writer_;
};

}  // namespace agent

#endif
