// Objects whose keys are texts of their own choosing, and the place where every request passes.

#ifndef ORB_TAO_BAREKEYS_H
#define ORB_TAO_BAREKEYS_H

#include <tao/Adapter.h>

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <shared_mutex>
#include <string>

#include "orb/orb.h"

namespace orb {

class Connection;

// Stands at a key for the servant that is published there, so that one servant can come and go
// while the others serve on.
class Gate {
 public:
  Gate() = default;
  Gate(const Gate&) = delete;
  Gate& operator=(const Gate&) = delete;

  void open(PortableServer::ServantBase* servant, RequestGuard guard);

  // Returns when no request is running. Clients that do not read are waited for no longer than
  // Options::drainGrace.
  void close();

  void dispatch(TAO_ServerRequest& request);

 private:
  class Passage;
  using Running = std::multiset<std::shared_ptr<Connection>>;  // null: from within the process

  // A gate that was closed while the guard made the request wait does not let it through.
  std::shared_ptr<void> admit(TAO_ServerRequest& request);

  // REQUIRES: mutex_ is held.
  void checkOpen() const;

  std::mutex mutex_;
  std::condition_variable idle_;
  PortableServer::ServantBase* servant_ = nullptr;  // guarded by mutex_, null while closed
  RequestGuard guard_;  // changed under mutex_ while nothing runs, so that a request may read it
  Running running_;     // guarded by mutex_, a connection for each request
};

// The gates by their keys; one a key at a time. Thread-safe.
class Gates {
 public:
  void add(const std::string& key, std::shared_ptr<Gate> gate);
  void remove(const std::string& key);
  std::shared_ptr<Gate> at(const std::string& key) const;  // null when there is none

 private:
  mutable std::shared_mutex mutex_;
  std::map<std::string, std::shared_ptr<Gate>> gates_;  // guarded by mutex_
};

// Stands before the ORB's POAs: sees each request from outside first, and serves those to bare
// keys. The ORB owns it and destroys it with itself.
class BareKeys final : public TAO_Adapter {
 public:
  explicit BareKeys(TAO_ORB_Core& core);
  ~BareKeys() override;

  void observeRequests(RequestObserver observer);

  // May outlive the ORB.
  std::shared_ptr<Gates> gates() { return gates_; }

  // A reference to the object at a key, for the caller.
  CORBA::Object_ptr referenceTo(const std::string& key, const char* type);

  void open() override {}
  void close(int) override {}
  void check_close(int) override {}
  int priority() const override;
  int dispatch(TAO::ObjectKey& key, TAO_ServerRequest& request, CORBA::Object_out forward) override;
  const char* name() const override;
  CORBA::Object_ptr root() override;
  CORBA::Object_ptr create_collocated_object(TAO_Stub* stub, const TAO_MProfile& profiles) override;
  CORBA::Long initialize_collocated_object(TAO_Stub* stub) override;

 private:
  TAO_ORB_Core& core_;
  const std::shared_ptr<Gates> gates_ = std::make_shared<Gates>();
  mutable std::shared_mutex observerMutex_;
  RequestObserver observer_;  // guarded by observerMutex_
};

}  // namespace orb

#endif
