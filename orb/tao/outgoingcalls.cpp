#include "outgoingcalls.h"

#include <ace/Time_Value.h>
#include <tao/ORBInitializer_Registry.h>
#include <tao/ORB_Core.h>
#include <tao/Object.h>
#include <tao/PI/PI.h>
#include <tao/Stub.h>
#include <tao/Transport.h>

#include <atomic>
#include <cstring>
#include <iterator>
#include <unordered_map>

#include "checkedcalls.h"
#include "messagelimit.h"
#include "orb/orb.h"
#include "sync/SharedMutex.h"

namespace orb {

using std::chrono::milliseconds;

// The default timeout of calls and the timeouts of single references. The key of an entry is an
// address, so each entry holds its reference to keep the address in use. An entry without other
// owners of its reference is removed by the next set(). Thread-safety: any thread.
class Timeouts {
 public:
  void setDefault(milliseconds timeout) { default_ = timeout; }

  void set(CORBA::Object_ptr reference, milliseconds timeout) {
    const WriteLock lock(mutex_);
    dropUnused();
    Entry& entry = entries_[reference->_stubobj()];
    entry.timeout = timeout;
    entry.reference = CORBA::Object::_duplicate(reference);
  }

  milliseconds of(TAO_Stub* stub) const {
    const ReadLock lock(mutex_);
    const auto found = entries_.find(stub);
    return found == entries_.end() ? default_.load() : found->second.timeout;
  }

  void clear() {
    const WriteLock lock(mutex_);
    entries_.clear();
  }

 private:
  struct Entry {
    CORBA::Object_var reference;
    milliseconds timeout{};
  };

  void dropUnused() REQUIRES(mutex_) {
    for (auto entry = entries_.begin(); entry != entries_.end();) {
      const bool unused = entry->second.reference->_refcount_value() == 1;
      entry = unused ? entries_.erase(entry) : std::next(entry);
    }
  }

  std::atomic<milliseconds> default_{milliseconds(0)};
  mutable SharedMutex mutex_;
  std::unordered_map<TAO_Stub*, Entry> entries_ GUARDED_BY(mutex_);
};

// Never destroyed, because an ORB may end at the exit of the process.
ORB_ONE_PER_PROCESS Timeouts& timeouts();

Timeouts& timeouts() {
  static auto* const instance = new Timeouts;
  return *instance;
}

namespace {

// The ORB calls this hook at the beginning of every call.
void beginCall(TAO_ORB_Core* /*core*/, TAO_Stub* stub, bool& limited, ACE_Time_Value& time) {
  lastCall() = {};
  const milliseconds timeout = timeouts().of(stub);
  limited = timeout.count() > 0;
  if (limited) {
    time.set(static_cast<time_t>(timeout.count() / 1000),
             static_cast<suseconds_t>(timeout.count() % 1000 * 1000));
  }
}

// Replaces the exception of a call by a more specific exception, from lastCall().
class CallObserver final : public PortableInterceptor::ClientRequestInterceptor,
                           public CORBA::LocalObject {
 public:
  char* name() override { return CORBA::string_dup("TopoCallObserver"); }
  void destroy() override {}
  void send_request(PortableInterceptor::ClientRequestInfo_ptr) override {}
  void send_poll(PortableInterceptor::ClientRequestInfo_ptr) override {}

  void receive_reply(PortableInterceptor::ClientRequestInfo_ptr) override {
    if (lastCall().tooLarge) {
      lastCall().transport->close_connection();
      throw CORBA::MARSHAL(kMessageTooLarge, CORBA::COMPLETED_YES);
    }
  }

  // Called before the ORB forwards a call, or repeats the call on a new connection.
  void receive_other(PortableInterceptor::ClientRequestInfo_ptr call) override {
    if (call->reply_status() == PortableInterceptor::LOCATION_FORWARD) {
      const CORBA::Object_var target = call->forward_reference();
      checkForward(target.in());
    }
  }

  void receive_exception(PortableInterceptor::ClientRequestInfo_ptr call) override {
    if (lastCall().streamBroken) {
      lastCall().transport->close_connection();
    }
    const CORBA::String_var id = call->received_exception_id();
    if (std::strcmp(id.in(), "IDL:omg.org/CORBA/COMM_FAILURE:1.0") != 0) {
      return;
    }
    if (lastCall().tooLarge) {
      throw CORBA::MARSHAL(kMessageTooLarge, CORBA::COMPLETED_MAYBE);
    }
    if (lastCall().replyBegun) {
      throw CORBA::COMM_FAILURE(kBrokenOff, CORBA::COMPLETED_MAYBE);
    }
  }
};

class Initializer final : public PortableInterceptor::ORBInitializer, public CORBA::LocalObject {
 public:
  void pre_init(PortableInterceptor::ORBInitInfo_ptr) override {}

  void post_init(PortableInterceptor::ORBInitInfo_ptr orb) override {
    const PortableInterceptor::ClientRequestInterceptor_var observer = new CallObserver;
    orb->add_client_request_interceptor(observer.in());
  }
};

}  // namespace

void installCallObserver() {
  const PortableInterceptor::ORBInitializer_var initializer = new Initializer;
  PortableInterceptor::register_orb_initializer(initializer.in());
  // The analyzer does not see that both own references: NOLINTNEXTLINE(clang-analyzer-cplusplus.*)
}

LastCall& lastCall() {
  thread_local LastCall call;
  return call;
}

void setCallTimeout(TAO_ORB_Core& core, milliseconds timeout) {
  timeouts().setDefault(timeout);
  core.set_timeout_hook(beginCall);
}

void setCallTimeout(CORBA::Object_ptr reference, milliseconds timeout) {
  timeouts().set(reference, timeout);
}

void clearCallTimeouts() {
  timeouts().clear();
}

}  // namespace orb
