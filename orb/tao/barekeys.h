// Objects whose keys are texts of their own choosing, and the place where every request passes.

#ifndef ORB_TAO_BAREKEYS_H
#define ORB_TAO_BAREKEYS_H

#include <tao/Adapter.h>

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>

#include "orb/orb.h"

namespace orb {

// Stands at a key for the servant that is published there, so that one servant can come and go
// while the others serve on.
class Gate {
 public:
  Gate() = default;
  Gate(const Gate&) = delete;
  Gate& operator=(const Gate&) = delete;

  void open(PortableServer::ServantBase* servant, RequestGuard guard);

  // Returns when no request is running.
  void close();

  void dispatch(TAO_ServerRequest& request);

 private:
  class Passage;

  // A gate that was closed while the guard made the request wait does not let it through.
  std::shared_ptr<void> admit(TAO_ServerRequest& request);

  // REQUIRES: mutex_ is held.
  void checkOpen() const;

  std::mutex mutex_;
  std::condition_variable idle_;
  PortableServer::ServantBase* servant_ = nullptr;  // guarded by mutex_, null while closed
  RequestGuard guard_;  // changed under mutex_ while running_ is 0, so that a request may read it
  std::size_t running_ = 0;  // guarded by mutex_
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
  BareKeys(TAO_ORB_Core& core, std::chrono::milliseconds serveTimeout);
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
  const std::chrono::milliseconds serveTimeout_;
  const std::shared_ptr<Gates> gates_ = std::make_shared<Gates>();
  mutable std::shared_mutex observerMutex_;
  RequestObserver observer_;  // guarded by observerMutex_
};

}  // namespace orb

#endif
