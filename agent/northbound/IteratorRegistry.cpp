#include "agent/northbound/IteratorRegistry.h"

#include <utility>
#include <vector>

#include "agent/base/RandomId.h"

namespace agent {

using PortableServer::POA;
using PortableServer::ServantBase;
using PortableServer::ServantBase_var;

namespace {

thread_local IteratorRegistry::Creation* creationOfThread = nullptr;

}  // namespace

IteratorRegistry::IteratorRegistry(PortableServer::POA_ptr root, IteratorLimits limits, Clock clock)
    : root_(POA::_duplicate(root)), limits_(limits), clock_(std::move(clock)) {}

IteratorRegistry::~IteratorRegistry() {
  try {
    retire();
  } catch (const CORBA::Exception&) {
    // The shutdown of the ORB has already destroyed the POA.
  }
}

void IteratorRegistry::open() {
  CORBA::PolicyList policies;
  policies.length(1);
  // The agent assigns random ids. Ids of the ORB are consecutive, so that a client could address
  // the iterators of other clients.
  policies[0] = root_->create_id_assignment_policy(PortableServer::USER_ID);
  // With a separate POA manager, the agent holds or retires iterators independently of the manager
  // object.
  PortableServer::POA_var poa =
      root_->create_POA("iterators", PortableServer::POAManager::_nil(), policies);
  policies[0]->destroy();
  const PortableServer::POAManager_var manager = poa->the_POAManager();
  manager->activate();
  const MutexLock lock(mutex_);
  poa_ = poa._retn();
}

void IteratorRegistry::retire() {
  PortableServer::POA_var poa;
  Entries entries;
  {
    const MutexLock lock(mutex_);
    poa = poa_._retn();
    entries.swap(entries_);
    ended_ += entries.size();
    byKey_.clear();
    bytes_ = 0;
  }
  if (!CORBA::is_nil(poa)) {
    // Requests raise TRANSIENT during the destruction, and OBJECT_NOT_EXIST afterwards.
    orb::destroyPoa(poa);
  }
  // Waits for a reclaim on another thread, which may still own servants.
  const MutexLock reclaimed(reclaiming_);
}

PortableServer::POA_ptr IteratorRegistry::poa() {
  const MutexLock lock(mutex_);
  return POA::_duplicate(poa_);
}

// Reserves a place and bytes for the servant. So concurrent adds cannot exceed the limits together.
FailureCode IteratorRegistry::admit(ServantBase* servant, std::size_t bytes) {
  const TimePoint now = clock_();
  const MutexLock lock(mutex_);
  if (CORBA::is_nil(poa_)) {
    return kInternalError;
  }
  if (entries_.size() >= limits_.maximum || bytes > limits_.memory - bytes_) {
    return kTooManyIterators;
  }
  const auto [place, isNew] = entries_.try_emplace(servant);
  if (!isNew) {
    return kInternalError;
  }
  servant->_add_ref();
  Entry& entry = place->second;
  entry.servant = servant;
  entry.bytes = bytes;
  entry.lastUse = now;
  bytes_ += bytes;
  return kSuccess;
}

void IteratorRegistry::activate(ServantBase* servant) {
  const PortableServer::POA_var iteratorPoa = poa();
  const ObjectId id(randomObjectId());
  iteratorPoa->activate_object_with_id(*id, servant);
  try {
    const CORBA::Object_var reference = iteratorPoa->id_to_reference(*id);
    track(servant, id, orb::objectKeyOf(reference));
  } catch (...) {
    deactivateObject(id);
    throw;
  }
}

// From now on, the servant can be reclaimed, unless its thread has a Creation.
void IteratorRegistry::track(ServantBase* servant, const ObjectId& id, const orb::ObjectKey& key) {
  Creation* const creation = creationOfThread;
  if (creation != nullptr) {
    creation->added_.push_back(servant);
  }
  const TimePoint now = clock_();
  const MutexLock lock(mutex_);
  const auto entry = entries_.find(servant);
  if (entry != entries_.end()) {
    entry->second.key = key;
    byKey_[key] = servant;
    entry->second.id = id;
    entry->second.creation = creation;
    entry->second.lastUse = now;
  }
}

// At a limit, reclaims idle iterators and tries once more, also when the reclaim found none:
// another thread may have removed an iterator in the meantime.
FailureCode IteratorRegistry::admitOrReclaim(ServantBase* servant, std::size_t bytes) {
  const FailureCode code = admit(servant, bytes);
  if (code != kTooManyIterators) {
    return code;
  }
  reclaimIdle();
  return admit(servant, bytes);
}

FailureCode IteratorRegistry::add(ServantBase* servant, std::size_t bytes) {
  if (bytes > limits_.memory) {
    return kTooMuch;
  }
  const FailureCode code = admitOrReclaim(servant, bytes);
  if (code != kSuccess) {
    return code;
  }
  try {
    activate(servant);
  } catch (const CORBA::Exception&) {
    take(servant);  // the POA is being destroyed
    return kInternalError;
  } catch (...) {
    take(servant);
    throw;
  }
  servant->_remove_ref();  // the creation reference; the entry has a second reference
  return kSuccess;
}

IteratorRegistry::Creation::Creation(IteratorRegistry& registry) : registry_(registry) {
  creationOfThread = this;
}

IteratorRegistry::Creation::~Creation() {
  creationOfThread = nullptr;
  registry_.finish(*this);
}

void IteratorRegistry::finish(const Creation& creation) {
  const TimePoint now = clock_();
  const MutexLock lock(mutex_);
  for (ServantBase* const servant : creation.added_) {
    const auto entry = entries_.find(servant);
    // The entry may belong to a later servant at the same address.
    if (entry != entries_.end() && entry->second.creation == &creation) {
      entry->second.creation = nullptr;
      entry->second.lastUse = now;
    }
  }
}

// Removes the entry of a servant. Returns a null servant when there is no entry.
IteratorRegistry::Ending IteratorRegistry::take(ServantBase* servant) {
  const MutexLock lock(mutex_);
  const auto entry = entries_.find(servant);
  if (entry == entries_.end()) {
    return {};
  }
  Ending taken{entry->second.servant._retn(), std::move(entry->second.id)};
  byKey_.erase(entry->second.key);
  bytes_ -= entry->second.bytes;
  ++ended_;
  entries_.erase(entry);
  return taken;
}

void IteratorRegistry::deactivateObject(const ObjectId& id) {
  const PortableServer::POA_var iteratorPoa = poa();
  if (CORBA::is_nil(iteratorPoa) || id == nullptr) {
    return;
  }
  try {
    iteratorPoa->deactivate_object(*id);
  } catch (const CORBA::Exception&) {
    // The object was deactivated already, or the POA is being destroyed together with its objects.
  }
}

bool IteratorRegistry::deactivate(ServantBase* servant) {
  const Ending taken = take(servant);
  if (taken.servant.in() == nullptr) {
    return false;
  }
  deactivateObject(taken.id);
  return true;
}

void IteratorRegistry::touch(const orb::ObjectKey& key) {
  const TimePoint now = clock_();
  const MutexLock lock(mutex_);
  const auto servant = byKey_.find(key);
  if (servant != byKey_.end()) {
    entries_.at(servant->second).lastUse = now;
  }
}

// The first idle iterator after `after` in the order of the entries, or a null servant.
IteratorRegistry::Ending IteratorRegistry::firstIdle(ServantBase* after) {
  const TimePoint last = clock_() - limits_.idleTimeout;
  const MutexLock lock(mutex_);
  for (auto place = entries_.upper_bound(after); place != entries_.end(); ++place) {
    const Entry& entry = place->second;
    // A servant without an id is not activated yet.
    if (entry.lastUse <= last && entry.id != nullptr && entry.creation == nullptr) {
      return {entry.servant, entry.id};
    }
  }
  return {};
}

// Removes the entry after the deactivation: when memory is short, the entry stays for a later
// reclaim.
std::size_t IteratorRegistry::reclaimIdle() {
  const MutexLock lock(reclaiming_);
  std::size_t reclaimed = 0;
  ServantBase* after = nullptr;
  for (Ending idle = firstIdle(after); idle.servant.in() != nullptr; idle = firstIdle(after)) {
    after = idle.servant.in();
    deactivateObject(idle.id);
    take(after);
    ++reclaimed;
  }
  return reclaimed;
}

std::size_t IteratorRegistry::size() {
  const MutexLock lock(mutex_);
  return entries_.size();
}

std::uint64_t IteratorRegistry::ended() {
  const MutexLock lock(mutex_);
  return ended_;
}

std::size_t IteratorRegistry::bytes() {
  const MutexLock lock(mutex_);
  return bytes_;
}

}  // namespace agent
