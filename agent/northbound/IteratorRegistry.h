// Housekeeping of result iterators: the POA on which they live, and the references that keep them.

#ifndef AGENT_NORTHBOUND_ITERATORREGISTRY_H
#define AGENT_NORTHBOUND_ITERATORREGISTRY_H

#include <cstddef>
#include <map>
#include <mutex>

#include "orb/orb.h"

namespace agent {

// Thread-safety: any thread; open and retire from one thread at a time, never from within a
// request.
class IteratorRegistry {
 public:
  // The root POA is the parent of the iterators' POA.
  explicit IteratorRegistry(PortableServer::POA_ptr root);

  // Retires.
  ~IteratorRegistry();

  IteratorRegistry(const IteratorRegistry&) = delete;
  IteratorRegistry& operator=(const IteratorRegistry&) = delete;

  // Makes the POA and lets requests in.
  void open();

  // Destroys the POA, waits until running requests have ended, and drops all iterators. Does
  // nothing when the registry is not open.
  void retire();

  // A new reference to the POA for the caller; nil when the registry is not open.
  PortableServer::POA_ptr poa();

  // Takes over the servant's creation reference and returns true; leaves it with the caller and
  // returns false when the registry is not open.
  bool add(PortableServer::ServantBase* servant);

  // Deactivates a servant and drops the reference to it. An unknown servant is no error.
  void deactivate(PortableServer::ServantBase* servant);

  std::size_t size();

 private:
  PortableServer::ServantBase_var take(PortableServer::ServantBase* servant);

  const PortableServer::POA_var root_;

  std::mutex mutex_;
  // Guarded by mutex_. No call to the ORB is made under it.
  PortableServer::POA_var poa_;
  std::map<PortableServer::ServantBase*, PortableServer::ServantBase_var> servants_;
};

}  // namespace agent

#endif
