// Housekeeping of result iterators: where they are activated, how many live, how long.
//
// Thread-safety: any thread.

#ifndef PLATFORM_AGENT_TAITERATORHELPER_H
#define PLATFORM_AGENT_TAITERATORHELPER_H

#include "orb/orb.h"
#include "platform/framework/Export.h"

namespace NS_CORBA {

class PLATFORM_API TAIteratorHelper {
 public:
  // The POA for iterators (transient, one id per servant; a new reference for the caller), or nil
  // when there is none. A registered servant has a reference on it: either the registration
  // activates the servant, or the POA activates it implicitly.
  static PortableServer::POA_ptr getIteratorPoa();

  // Registers an iterator servant. 0: the agent owns the servant's creation reference from here on,
  // and the servant stays active at least until the request that made it ends; any other value is
  // a failure code, and the reference stays with the caller.
  static CORBA::ULong add_Iterator(PortableServer::ServantBase* servant);

  // Deactivates a registered servant on the iterator POA and drops the agent's reference. The
  // servant may be executing a request; it lives until that ends. An unknown servant is no error.
  static void deactive_object(PortableServer::ServantBase* servant);
};

}  // namespace NS_CORBA

#endif
