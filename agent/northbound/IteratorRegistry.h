// Housekeeping of result iterators: the POA on which they live, the references that keep them, and
// the end of those that nobody asks for any more.

#ifndef AGENT_NORTHBOUND_ITERATORREGISTRY_H
#define AGENT_NORTHBOUND_ITERATORREGISTRY_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "agent/domain/FailureCodes.h"
#include "orb/orb.h"

namespace agent {

struct IteratorLimits {
  std::chrono::milliseconds idleTimeout{300000};
  std::size_t maximum = 1000;  // that live at once
};

// Thread-safety: any thread; open and retire from one thread at a time, never from within a
// request.
class IteratorRegistry {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;
  using Clock = std::function<TimePoint()>;

  // The root POA is the parent of the iterators' POA. The clock is asked from any thread.
  IteratorRegistry(PortableServer::POA_ptr root, IteratorLimits limits, Clock clock);

  // Retires.
  ~IteratorRegistry();

  IteratorRegistry(const IteratorRegistry&) = delete;
  IteratorRegistry& operator=(const IteratorRegistry&) = delete;

  // Makes the POA and lets requests in.
  void open();

  // Destroys the POA, waits until running requests have ended, and drops all iterators. New
  // requests raise TRANSIENT until then and OBJECT_NOT_EXIST afterwards. Does nothing when the
  // registry is not open.
  void retire();

  // A new reference to the POA for the caller; nil when the registry is not open.
  PortableServer::POA_ptr poa();

  // Takes over the servant's creation reference and activates the servant. Any other code than
  // kSuccess leaves the reference with the caller, and so does an exception: kTooManyIterators, or
  // kInternalError when the registry is not open.
  FailureCode add(PortableServer::ServantBase* servant);

  // Deactivates a servant and drops the reference to it; false for an unknown one, which is no
  // error.
  bool deactivate(PortableServer::ServantBase* servant);

  // A request for an object arrives; if it is an iterator's, that has been used now.
  void touch(const orb::ObjectKey& key);

  // Deactivates all iterators that have not been used for the idle time-out; returns how many.
  std::size_t reclaimIdle();

  // How many live.
  std::size_t size();

 private:
  struct Entry {
    PortableServer::ServantBase_var servant;
    orb::ObjectKey key;  // empty until the servant is activated
    TimePoint lastUse;
  };
  using Entries = std::unordered_map<PortableServer::ServantBase*, Entry>;

  FailureCode admit(PortableServer::ServantBase* servant);
  FailureCode admitOrReclaim(PortableServer::ServantBase* servant);
  void track(PortableServer::ServantBase* servant, const orb::ObjectKey& key);
  orb::ObjectKey activate(PortableServer::ServantBase* servant);
  PortableServer::ServantBase_var take(PortableServer::ServantBase* servant);
  std::vector<PortableServer::ServantBase_var> takeIdle();
  void deactivateTaken(PortableServer::ServantBase* servant);

  const PortableServer::POA_var root_;
  const IteratorLimits limits_;
  const Clock clock_;

  // Held while servants that were taken for being idle are let go, and never with mutex_ held.
  std::mutex reclaiming_;

  std::mutex mutex_;
  // Guarded by mutex_. No call to the ORB is made under it.
  PortableServer::POA_var poa_;
  Entries entries_;
  std::unordered_map<orb::ObjectKey, PortableServer::ServantBase*> byKey_;
};

}  // namespace agent

#endif
