// The agent's housekeeping of result iterators: the POA of the iterators, limits on their number
// and their idle time.
//
// Thread-safety: any thread. Ownership: each function says who releases which reference.
//
// Errors: nil from getIteratorPoa, a failure code from add_Iterator. The functions may raise CORBA
// exceptions, which reach the client. They must not raise anything else, std::bad_alloc included:
// ends the process. A client triggers the calls with every view whose how_many is less than the
// number of records, and with next_n and destroy of an iterator.

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
  // there is no such POA: the client then gets the exception of ERR_TOPO_CONVERSION. The POA is an
  // object of the ORB itself (not a local object of the host), transient, and allows one object id
  // for each servant. Either add_Iterator activates the servant, or the POA has the policy
  // IMPLICIT_ACTIVATION and activates the servant in _this().
  // May raise: CORBA exceptions. Must not raise anything else: ends the process.
  static PortableServer::POA_ptr getIteratorPoa();

  // Registers an iterator servant.
  //   Result 0: the agent owns the creation reference, and keeps the servant active at least until
  //             the current request ends.
  //   Else:     the result is a failure code for ThrowException; the caller keeps the reference.
  // May raise: CORBA exceptions; the caller keeps the reference. Must not raise anything else: ends
  // the process.
  static CORBA::ULong add_Iterator(PortableServer::ServantBase* servant);

  // Deactivates a registered servant and drops the agent's reference. A servant that executes a
  // request is deleted after the request. An unknown servant is ignored: the module may call
  // deactive_object again for a servant that has been deactivated, during the last requests of its
  // client. Then the servant must not be passed to servant_to_id of a POA with
  // IMPLICIT_ACTIVATION, which would activate the servant again: keep the object id of each
  // registered servant.
  // May raise: CORBA exceptions; after next_n the client can fetch the last batch again. Must not
  // raise anything else: ends the process.
  static void deactive_object(PortableServer::ServantBase* servant);
};

}  // namespace NS_CORBA

#endif
