// Housekeeping of result iterators: their POA, their references, the limits in number and bytes,
// and the timeout of idle iterators.

#ifndef AGENT_NORTHBOUND_ITERATORREGISTRY_H
#define AGENT_NORTHBOUND_ITERATORREGISTRY_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

#include "agent/base/FailureCodes.h"
#include "orb/orb.h"
#include "sync/Mutex.h"

namespace agent {

struct IteratorLimits {
  std::chrono::milliseconds idleTimeout{300000};
  std::size_t maximum = 1000;                 // registered iterators
  std::size_t memory = std::size_t{1} << 30;  // bytes of all registered iterators
};

// Registers, activates, reclaims and releases the iterators of the loaded module.
//
// Thread-safety: any thread; open and retire from one thread at a time, never within a request.
// Ownership: owns one reference to every registered servant until the servant is deactivated.
// Errors: failure codes, as said at each function; open and retire throw CORBA exceptions.
class IteratorRegistry {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;
  using Clock = std::function<TimePoint()>;

  // The root POA is the parent of the iterators' POA. Any thread may call the clock.
  IteratorRegistry(PortableServer::POA_ptr root, IteratorLimits limits, Clock clock);

  // Calls retire().
  ~IteratorRegistry();

  IteratorRegistry(const IteratorRegistry&) = delete;
  IteratorRegistry& operator=(const IteratorRegistry&) = delete;

  // Creates the POA, which accepts requests from then on.
  void open();

  // Destroys the POA, waits until running requests have ended, and releases all iterators. New
  // requests raise TRANSIENT during the destruction and OBJECT_NOT_EXIST afterwards. Does nothing
  // when the registry is not open.
  void retire();

  // A new reference to the POA for the caller; nil when the registry is not open.
  PortableServer::POA_ptr poa();

  // Takes over the servant's creation reference and activates the servant under a random object id.
  // bytes: the memory of the servant. After an exception, and with any code but kSuccess, the
  // caller keeps the reference:
  //   - kTooManyIterators: the limit in number or in bytes is reached,
  //   - kTooMuch: the servant is larger than the limit in bytes,
  //   - kInternalError: the registry is not open, or the servant cannot be activated.
  FailureCode add(PortableServer::ServantBase* servant, std::size_t bytes);

  // Deactivates a servant and releases the reference to the servant. Returns false for an unknown
  // servant.
  bool deactivate(PortableServer::ServantBase* servant);

  // Restarts the idle time of the iterator with this key. Ignores the keys of other objects.
  void touch(const orb::ObjectKey& key);

  // Deactivates all iterators without a request during the idle timeout; returns the number.
  std::size_t reclaimIdle();

  // Prevents the reclaim of iterators that the thread adds during the lifetime of the Creation: the
  // client has no reference yet, and a deactivated servant cannot make a reference. The idle time
  // of the iterators begins at the end of the Creation. Thread-safety: one thread. Ownership:
  // borrows the registry and the servants. Errors: none. REQUIRES: one Creation a thread at a time.
  class Creation {
   public:
    explicit Creation(IteratorRegistry& registry);
    ~Creation();
    Creation(const Creation&) = delete;
    Creation& operator=(const Creation&) = delete;

   private:
    friend class IteratorRegistry;

    IteratorRegistry& registry_;
    std::vector<PortableServer::ServantBase*> added_;  // not owned
  };

  // The number of registered iterators, and the bytes of their records.
  std::size_t size();
  std::size_t bytes();

  // The number of iterators that have ended since the start.
  std::uint64_t ended();

 private:
  using ObjectId = std::shared_ptr<const PortableServer::ObjectId>;

  struct Entry {
    PortableServer::ServantBase_var servant;
    std::size_t bytes = 0;
    ObjectId id;                         // null until the servant is activated
    orb::ObjectKey key;                  // empty until the servant is activated
    const Creation* creation = nullptr;  // that prevents a reclaim, or null
    TimePoint lastUse;
  };
  using Entries = std::map<PortableServer::ServantBase*, Entry>;

  // An iterator that is being deactivated.
  struct Ending {
    PortableServer::ServantBase_var servant;
    ObjectId id;
  };

  FailureCode admit(PortableServer::ServantBase* servant, std::size_t bytes);
  FailureCode admitOrReclaim(PortableServer::ServantBase* servant, std::size_t bytes);
  void activate(PortableServer::ServantBase* servant);
  void track(PortableServer::ServantBase* servant, const ObjectId& id, const orb::ObjectKey& key);
  void finish(const Creation& creation);
  Ending firstIdle(PortableServer::ServantBase* after);
  Ending take(PortableServer::ServantBase* servant);
  void deactivateObject(const ObjectId& id);

  const PortableServer::POA_var root_;
  const IteratorLimits limits_;
  const Clock clock_;

  // Locked while idle iterators are deactivated and released. Locked before mutex_, never after.
  Mutex reclaiming_;

  Mutex mutex_;
  // mutex_ is not locked during a call of the ORB.
  PortableServer::POA_var poa_ GUARDED_BY(mutex_);
  Entries entries_ GUARDED_BY(mutex_);
  std::size_t bytes_ GUARDED_BY(mutex_) = 0;  // of all entries
  std::uint64_t ended_ GUARDED_BY(mutex_) = 0;
  std::unordered_map<orb::ObjectKey, PortableServer::ServantBase*> byKey_ GUARDED_BY(mutex_);
};

}  // namespace agent

#endif
