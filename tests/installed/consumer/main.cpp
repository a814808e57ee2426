// Uses the stubs and a default definition of a contract, so that the program links and runs with
// the installed libraries.

#include <iostream>
#include <string>

#include "idl/ObjectKeys.h"
#include "orb/idl/TopoManagementManager.h"
#include "platform/bundlemgr/BundleMgr.h"
#include "platform/framework/ProcessException.h"

static_assert(__cplusplus >= 201703L, "the package asks for C++17");

int main() {
  globaldefs::NVSList_T name;
  name.length(1);
  name[0].name = CORBA::string_dup("EMS");
  name[0].value = CORBA::string_dup(object_key::kManager);
  CORBA::Any any;
  any <<= name;
  const globaldefs::NVSList_T* read = nullptr;
  if (!(any >>= read) || (*read)[0].name.in() != std::string("EMS")) {
    return 1;
  }
  ProcessException failure;
  failure.errorCode = 7;
  if (failure.what() != std::string("code 7")) {
    return 1;
  }
  std::cout << "built on " << USED_ORB << " and ACE " << USED_ACE << '\n';
  return 0;
}
