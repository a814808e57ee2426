// A check of the addresses to which a thread calls.

#ifndef ORB_CHECKEDCALLS_H
#define ORB_CHECKEDCALLS_H

#include <functional>
#include <vector>

#include "orb/corba.h"
#include "orb/destinations.h"

namespace orb {

// Throws a CORBA system exception when calls may not go to one of the addresses.
using DestinationCheck = std::function<void(const std::vector<Destination>&)>;

// Checks the calls of the constructing thread through a reference, from the construction to the
// destruction. The check is called
// - for the addresses of a reference to which a server forwards a call, before the call goes there;
// - for the numeric address of a new connection, before anything is sent.
// A call that the check rejects fails with the exception of the check. The addresses of the
// reference itself are not checked before the connection.
//
// Thread-safety: the thread that constructs the object also destroys it. Ownership: borrows the
// reference and the check. Errors: none. REQUIRES: not nil; the thread has no other object of this
// class; the ORB is a Server.
class CheckedCalls {
 public:
  CheckedCalls(CORBA::Object_ptr reference, const DestinationCheck& check) noexcept;
  ~CheckedCalls();

  CheckedCalls(const CheckedCalls&) = delete;
  CheckedCalls& operator=(const CheckedCalls&) = delete;
};

}  // namespace orb

#endif
