#include "agent/northbound/IteratorRegistry.h"

#include <utility>
#include <vector>

#include "agent/base/RandomId.h"

namespace agent {

using PortableServer::POA;
using PortableServer::ServantBase;
using PortableServer::ServantBase_var;

namespace {

thread_local IteratorRegistry::Creation* threadsCreation = nullptr;

}  // namespace

IteratorRegistry::IteratorRegistry(PortableServer::POA_ptr root, IteratorLimits limits, Clock clock)
    : root_(POA::_duplicate(root)), limits_(limits), clock_(std::move(clock)) {}

IteratorRegistry::~IteratorRegistry() {
  try {
    retire();
  } catch (const CORBA::Exception&) {
    // The ORB went down first and took the POA with it.
  }
}

void IteratorRegistry::open() {
  CORBA::PolicyList policies;
  policies.length(1);
  // Ids that the ORB assigns count up, so a client could address the iterators of others.
  policies[0] = root_->create_id_assignment_policy(PortableServer::USER_ID);
  // A POA manager of its own: iterators are held back or retired without the manager object.
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
    byKey_.clear();
    bytes_ = 0;
  }
  if (!CORBA::is_nil(poa)) {
    // Clients see TRANSIENT from here to the end of the POA, and then that there is no such object.
    orb::destroyPoa(poa);
  }
  // A reclaim on another thread may still hold servants that it took before.
  const MutexLock reclaimed(reclaiming_);
}

PortableServer::POA_ptr IteratorRegistry::poa() {
  const MutexLock lock(mutex_);
  return POA::_duplicate(poa_);
}

// Reserves place and bytes for the servant, so that the limits hold however many threads add at
// once.
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

// The servant can be reclaimed from here on, unless its thread is within a Creation.
void IteratorRegistry::track(ServantBase* servant, const ObjectId& id, const orb::ObjectKey& key) {
  Creation* const creation = threadsCreation;
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

// At a limit, iterators whose time is over make room at once. Room that another thread made in the
// meantime counts too.
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
  servant->_remove_ref();  // the caller's; the entry has one of its own
  return kSuccess;
}

IteratorRegistry::Creation::Creation(IteratorRegistry& registry) : registry_(registry) {
  threadsCreation = this;
}

IteratorRegistry::Creation::~Creation() {
  threadsCreation = nullptr;
  registry_.finish(*this);
}

void IteratorRegistry::finish(const Creation& creation) {
  const TimePoint now = clock_();
  const MutexLock lock(mutex_);
  for (ServantBase* const servant : creation.added_) {
    const auto entry = entries_.find(servant);
    // Another servant may have come to the same address.
    if (entry != entries_.end() && entry->second.creation == &creation) {
      entry->second.creation = nullptr;
      entry->second.lastUse = now;
    }
  }
}

// The servant is null when it is unknown.
IteratorRegistry::Ending IteratorRegistry::take(ServantBase* servant) {
  const MutexLock lock(mutex_);
  const auto entry = entries_.find(servant);
  if (entry == entries_.end()) {
    return {};
  }
  Ending taken{entry->second.servant._retn(), std::move(entry->second.id)};
  byKey_.erase(entry->second.key);
  bytes_ -= entry->second.bytes;
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

// The first idle iterator whose servant is behind another in the order of the entries. The servant
// is null when there is none.
IteratorRegistry::Ending IteratorRegistry::firstIdle(ServantBase* after) {
  const TimePoint last = clock_() - limits_.idleTimeout;
  const MutexLock lock(mutex_);
  for (auto place = entries_.upper_bound(after); place != entries_.end(); ++place) {
    const Entry& entry = place->second;
    // A servant without an id is being added at this moment.
    if (entry.lastUse <= last && entry.id != nullptr && entry.creation == nullptr) {
      return {entry.servant, entry.id};
    }
  }
  return {};
}

// An iterator stays registered until its deactivation was successful, so that one for which memory
// was short is reclaimed later.
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

std::size_t IteratorRegistry::bytes() {
  const MutexLock lock(mutex_);
  return bytes_;
}

}  // namespace agent
