// platform/agent/TAIteratorHelper.h: the iterators that hold the rest of large views.

#include <map>

#include "Host.h"
#include "platform/agent/TAIteratorHelper.h"

namespace {

using PortableServer::ObjectId_var;
using PortableServer::ServantBase;

// A host for real clients also ends iterators that were not used for some minutes.
constexpr std::size_t kMostIterators = 100;

std::mutex mutex;
std::map<ServantBase*, ObjectId_var> iterators;  // the POA owns the servants

}  // namespace

void host::forgetIterators() {
  iteratorPoa.close();
  const std::lock_guard<std::mutex> lock(mutex);
  iterators.clear();
}

namespace NS_CORBA {

PortableServer::POA_ptr TAIteratorHelper::getIteratorPoa() {
  return host::iteratorPoa.get();
}

CORBA::ULong TAIteratorHelper::add_Iterator(ServantBase* servant) {
  const PortableServer::POA_var poa = getIteratorPoa();
  const std::lock_guard<std::mutex> lock(mutex);
  if (CORBA::is_nil(poa.in()) || iterators.size() >= kMostIterators) {
    return host::kTooManyIterators;  // the caller keeps its reference
  }
  iterators[servant] = poa->activate_object(servant);
  servant->_remove_ref();  // the creation reference; the POA has a reference of its own
  return 0;
}

void TAIteratorHelper::deactive_object(ServantBase* servant) {
  const PortableServer::POA_var poa = getIteratorPoa();
  ObjectId_var id;
  {
    const std::lock_guard<std::mutex> lock(mutex);
    const auto found = iterators.find(servant);
    if (CORBA::is_nil(poa.in()) || found == iterators.end()) {
      return;
    }
    id = found->second;
    iterators.erase(found);
  }
  poa->deactivate_object(id.in());
}

}  // namespace NS_CORBA
