// Objects with fixed keys, and the first dispatch step of every request.

#ifndef ORB_TAO_BAREKEYS_H
#define ORB_TAO_BAREKEYS_H

#include <tao/Adapter.h>

#include <map>
#include <memory>
#include <string>

#include "../callbackslot.h"
#include "../gate.h"
#include "orb/orb.h"
#include "orb/requestcheck.h"
#include "sync/SharedMutex.h"

namespace orb {

class Connection;

// The gate of a fixed key. A request is known by its connection, null for a local call.
using KeyGate = Gate<std::shared_ptr<Connection>>;

// Closes the gate. A client that does not read delays the return by at most Options::drainGrace.
// Thread-safety: as Gate::close().
void closeGate(KeyGate& gate);

// The gates by key, at most one per key. Thread-safety: any thread. Ownership: shares the gates.
// Errors: add() throws std::bad_alloc.
class Gates {
 public:
  void add(const std::string& key, std::shared_ptr<KeyGate> gate);
  void remove(const std::string& key);
  std::shared_ptr<KeyGate> at(const std::string& key) const;  // null for an unknown key

 private:
  mutable SharedMutex mutex_;
  std::map<std::string, std::shared_ptr<KeyGate>> gates_ GUARDED_BY(mutex_);
};

// An object adapter of the ORB with priority over the POAs: checks and observes each request from
// another process, and dispatches requests to fixed keys.
//
// Ownership: the ORB owns and destroys the object. Thread-safety: any thread. dispatch() throws
// CORBA system exceptions to the client.
class BareKeys final : public TAO_Adapter {
 public:
  explicit BareKeys(TAO_ORB_Core& core);
  ~BareKeys() override;

  void checkRequests(RequestCheck check);
  void observeRequests(RequestObserver observer);

  // The result may outlive the ORB.
  std::shared_ptr<Gates> gates() { return gates_; }

  // Returns a reference to the object at a key, owned by the caller. Throws CORBA::INTERNAL.
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
  CallbackSlot<RequestCheck> check_;
  CallbackSlot<RequestObserver> observer_;
};

}  // namespace orb

#endif
