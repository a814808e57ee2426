// The common attributes of the agent's objects: user label, owner, native name and additional
// information.

#ifndef AGENT_DOMAIN_ATTRIBUTESERVICE_H
#define AGENT_DOMAIN_ATTRIBUTESERVICE_H

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

#include "agent/domain/ManagedObjects.h"
#include "agent/domain/NetworkModel.h"
#include "agent/domain/NetworkStore.h"
#include "orb/idl/globaldefs.h"

namespace agent {

// How a change ended: a FailureCode, and for any but kSuccess the reason, in one short line. That
// of kInternalError is for the log, the others are for whoever asked.
struct Outcome {
  std::uint32_t code = 0;
  std::string reason;
};

// A change that succeeded is in the store and in the model; any other has changed nothing.
//
// Names are those of ManagedObjects.h. One that is malformed ends in kInvalidName, one of nothing
// in kEntityNotFound. Texts that are not UTF-8 or too long end in kInvalidName too.
//
// Borrows store and model, which must outlive it; nobody else uses the store meanwhile.
// Thread-safety: any thread. Changes wait for each other and for the disk, readers of the model for
// neither.
class AttributeService {
 public:
  static constexpr std::size_t kMostTextBytes = std::size_t{1} << 20;

  // ems: the value of the "EMS" pair of every name.
  AttributeService(std::string ems, NetworkStore& store, NetworkModel& model);

  // An empty label is none. isUnique asks for kUserLabelInUse when another object of the same type
  // has the label.
  Outcome setUserLabel(const globaldefs::NVSList_T& name, std::string_view label, bool isUnique);

  Outcome setOwner(const globaldefs::NVSList_T& name, std::string_view owner);

  // The name under which clients see the object, in every view.
  Outcome setNativeName(const globaldefs::NVSList_T& name, std::string_view nativeName);

  // Merges pairs into the stored ones, as NetworkStore::mergeAdditionalInfo, and replaces them by
  // all that are then stored. A pair without a name, or two of one name, are kInvalidName. The
  // pairs are left alone after a failure.
  Outcome setAdditionalInfo(const globaldefs::NVSList_T& name, globaldefs::NVSList_T& pairs);

  // Forgets user label, owner and additional information.
  Outcome reset(const globaldefs::NVSList_T& name);

 private:
  template <typename Change>
  Outcome change(const globaldefs::NVSList_T& name, Change apply);

  ObjectKey resolve(const globaldefs::NVSList_T& name) const;
  void requireUnused(const ObjectKey& key, const std::string& label);

  const std::string ems_;
  NetworkStore& store_;  // guarded by mutex_
  NetworkModel& model_;
  std::mutex mutex_;  // held by the change that is under way
};

}  // namespace agent

#endif
