#include "agent/northbound/IteratorRegistry.h"

#include <utility>
#include <vector>

namespace agent {

using PortableServer::POA;
using PortableServer::ServantBase;
using PortableServer::ServantBase_var;

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
  policies[0] = root_->create_implicit_activation_policy(PortableServer::IMPLICIT_ACTIVATION);
  // A POA manager of its own: iterators are held back or retired without the manager object.
  PortableServer::POA_var poa =
      root_->create_POA("iterators", PortableServer::POAManager::_nil(), policies);
  policies[0]->destroy();
  const PortableServer::POAManager_var manager = poa->the_POAManager();
  manager->activate();
  const std::lock_guard<std::mutex> lock(mutex_);
  poa_ = poa._retn();
}

void IteratorRegistry::retire() {
  PortableServer::POA_var poa;
  Entries entries;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    poa = poa_._retn();
    entries.swap(entries_);
    byKey_.clear();
  }
  if (!CORBA::is_nil(poa)) {
    // Clients see TRANSIENT from here to the end of the POA, and then that there is no such object.
    orb::destroyPoa(poa);
  }
  // A reclaim on another thread may still hold servants that it took before.
  const std::lock_guard<std::mutex> reclaimed(reclaiming_);
}

PortableServer::POA_ptr IteratorRegistry::poa() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return POA::_duplicate(poa_);
}

// Keeps a place for the servant, so that the limit holds however many threads add at once.
FailureCode IteratorRegistry::admit(ServantBase* servant) {
  const TimePoint now = clock_();
  const std::lock_guard<std::mutex> lock(mutex_);
  if (CORBA::is_nil(poa_)) {
    return kInternalError;
  }
  if (entries_.size() >= limits_.maximum) {
    return kTooManyIterators;
  }
  servant->_add_ref();
  Entry& entry = entries_[servant];
  entry.servant = servant;
  entry.lastUse = now;
  return kSuccess;
}

orb::ObjectKey IteratorRegistry::activate(ServantBase* servant) {
  const PortableServer::POA_var iteratorPoa = poa();
  const CORBA::Object_var reference = iteratorPoa->servant_to_reference(servant);
  return orb::objectKeyOf(reference);
}

void IteratorRegistry::track(ServantBase* servant, const orb::ObjectKey& key) {
  const TimePoint now = clock_();
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto entry = entries_.find(servant);
  if (entry != entries_.end()) {
    byKey_[key] = servant;
    entry->second.key = key;
    entry->second.lastUse = now;
  }
}

// At the limit, iterators whose time is over make room at once.
FailureCode IteratorRegistry::admitOrReclaim(ServantBase* servant) {
  const FailureCode code = admit(servant);
  return code == kTooManyIterators && reclaimIdle() > 0 ? admit(servant) : code;
}

FailureCode IteratorRegistry::add(ServantBase* servant) {
  const FailureCode code = admitOrReclaim(servant);
  if (code != kSuccess) {
    return code;
  }
  try {
    track(servant, activate(servant));
  } catch (const CORBA::Exception&) {
    take(servant);  // the POA is going
    return kInternalError;
  } catch (...) {
    take(servant);
    throw;
  }
  servant->_remove_ref();  // the caller's; the entry has one of its own
  return kSuccess;
}

ServantBase_var IteratorRegistry::take(ServantBase* servant) {
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto entry = entries_.find(servant);
  if (entry == entries_.end()) {
    return {};
  }
  ServantBase_var taken = entry->second.servant._retn();
  byKey_.erase(entry->second.key);
  entries_.erase(entry);
  return taken;
}

void IteratorRegistry::deactivateTaken(ServantBase* servant) {
  const PortableServer::POA_var iteratorPoa = poa();
  if (CORBA::is_nil(iteratorPoa)) {
    return;
  }
  try {
    const PortableServer::ObjectId_var id = iteratorPoa->servant_to_id(servant);
    iteratorPoa->deactivate_object(id.in());
  } catch (const CORBA::Exception&) {
    // Retired in the meantime: the POA is going, and its objects with it.
  }
}

bool IteratorRegistry::deactivate(ServantBase* servant) {
  const ServantBase_var taken = take(servant);
  if (taken.in() == nullptr) {
    return false;
  }
  deactivateTaken(taken.in());
  return true;
}

void IteratorRegistry::touch(const orb::ObjectKey& key) {
  const TimePoint now = clock_();
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto servant = byKey_.find(key);
  if (servant != byKey_.end()) {
    entries_[servant->second].lastUse = now;
  }
}

std::vector<ServantBase_var> IteratorRegistry::takeIdle() {
  const TimePoint last = clock_() - limits_.idleTimeout;
  std::vector<ServantBase_var> taken;
  const std::lock_guard<std::mutex> lock(mutex_);
  for (auto entry = entries_.begin(); entry != entries_.end();) {
    // One without a key is being added at this moment.
    if (entry->second.lastUse > last || entry->second.key.empty()) {
      ++entry;
      continue;
    }
    taken.push_back(entry->second.servant);
    byKey_.erase(entry->second.key);
    entry = entries_.erase(entry);
  }
  return taken;
}

std::size_t IteratorRegistry::reclaimIdle() {
  const std::lock_guard<std::mutex> lock(reclaiming_);
  const std::vector<ServantBase_var> taken = takeIdle();
  for (const ServantBase_var& servant : taken) {
    deactivateTaken(servant.in());
  }
  return taken.size();
}

std::size_t IteratorRegistry::size() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return entries_.size();
}

}  // namespace agent
