// platform/agent/TAIteratorHelper.h: the iterators that contain the rest of large views. A host for
// real clients limits their number, and ends an iterator that was not used for some minutes.
#include "Host.h"
#include "platform/agent/TAIteratorHelper.h"

using NS_CORBA::TAIteratorHelper, PortableServer::ObjectId_var, host::module;

PortableServer::POA_ptr TAIteratorHelper::getIteratorPoa() {
  return PortableServer::POA::_duplicate(module.iteratorPoa());
}

// Drops the creation reference after a success. The POA has a reference of its own.
CORBA::ULong TAIteratorHelper::add_Iterator(PortableServer::ServantBase* servant) try {
  const ObjectId_var id = module.iteratorPoa()->activate_object(servant);
  servant->_remove_ref();
  return 0;
} catch (const CORBA::Exception&) {
  return host::kFailure + globaldefs::EXCPT_TOO_MANY_OPEN_ITERATORS;
}

void TAIteratorHelper::deactive_object(PortableServer::ServantBase* servant) try {
  const ObjectId_var id = module.iteratorPoa()->servant_to_id(servant);
  module.iteratorPoa()->deactivate_object(id.in());
} catch (const CORBA::UserException&) {
  // The servant was deactivated before.
}
