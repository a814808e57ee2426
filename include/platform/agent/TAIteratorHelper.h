// The agent's housekeeping of result iterators: the POA of the iterators, limits on their number
// and their idle time.
//
// Thread-safety: any thread. Ownership: each function says who releases which reference.
// Errors: nil from getIteratorPoa, a failure code from add_Iterator; the functions may throw CORBA
// system exceptions.

#ifndef PLATFORM_AGENT_TAITERATORHELPER_H
#define PLATFORM_AGENT_TAITERATORHELPER_H

#include "orb/corba.h"
#include "platform/framework/Export.h"

namespace NS_CORBA {

// The life of an iterator servant:
//   1. The module creates the servant (one reference, owned by the module).
//   2. add_Iterator hands the reference to the agent.
//   3. The module calls _this() and returns the object reference to the client.
//   4. deactive_object, called by the module or by the agent's housekeeping, deactivates the
//      servant. The servant is deleted when the last request has ended.
class PLATFORM_API TAIteratorHelper {
 public:
  // Returns the POA of the iterators as a new reference, which the caller releases, or nil when
  // there is no such POA. The POA is transient and allows one object id for each servant. Either
  // add_Iterator activates the servant, or the POA activates the servant implicitly in _this().
  static PortableServer::POA_ptr getIteratorPoa();

  // Registers an iterator servant.
  //   Result 0: the agent owns the creation reference, and keeps the servant active at least until
  //             the current request ends.
  //   Else:     the result is a failure code for ThrowException; the caller keeps the reference.
  static CORBA::ULong add_Iterator(PortableServer::ServantBase* servant);

  // Deactivates a registered servant and drops the agent's reference. A servant that executes a
  // request is deleted after the request. An unknown servant is ignored.
  static void deactive_object(PortableServer::ServantBase* servant);
};

}  // namespace NS_CORBA

#endif
