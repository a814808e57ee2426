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

// A change that succeeded is in the store and in the model; any other has changed nothing.
//
// Names are those of ManagedObjects.h. One that is malformed ends in kInvalidName, one of nothing
// in kEntityNotFound. Texts that are not UTF-8 or too long end in kInvalidName too.
//
// Borrows the writer, which must outlive it. Thread-safety: any thread.
class AttributeService {
 public:
  static constexpr std::size_t kMostTextBytes = agent::kMostTextBytes;

  // Of the names and values of one object's additional information: it goes back to the client in
  // one message, whose limit is 256 MiB unless the operator sets another.
  static constexpr std::size_t kMostInfoBytes = 16 * kMostTextBytes;

  // Each pair counts with its texts and with these bytes, because a pair of two short texts takes
  // many times the memory of the texts, and each change takes time for each pair.
  static constexpr std::size_t kPairBytes = 64;

  // ems: the value of the "EMS" pair of every name.
  AttributeService(std::string ems, NetworkWriter& writer);

  // An empty label is none. isUnique asks for kUserLabelInUse when another object of the same type
  // has the label.
  Outcome setUserLabel(const globaldefs::NVSList_T& name, std::string_view label, bool isUnique);

  Outcome setOwner(const globaldefs::NVSList_T& name, std::string_view owner);

  // The name under which clients see the object, in every view. Raises EVENT_TOPO_NODE_CHANGED with
  // the topology nodes whose name was another; nothing when there is none.
  Outcome setNativeName(const globaldefs::NVSList_T& name, std::string_view nativeName);

  // Merges pairs into the stored pairs, as mergedInfo(), and replaces the pairs by all pairs that
  // are then stored. Codes: kInvalidName for a pair without a name and for two pairs of one name,
  // kTooMuch if the stored pairs would become larger than kMostInfoBytes. After a failure the pairs
  // are unchanged.
  Outcome setAdditionalInfo(const globaldefs::NVSList_T& name, globaldefs::NVSList_T& pairs);

  // Forgets user label, owner and additional information.
  Outcome reset(const globaldefs::NVSList_T& name);

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
