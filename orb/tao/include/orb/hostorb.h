// The ORB of a host of the module.

#ifndef ORB_HOSTORB_H
#define ORB_HOSTORB_H

#include <tao/Codeset/Codeset.h>  // links the conversion of code sets

#include <algorithm>
#include <string>
#include <vector>

#include "orb/corba.h"

namespace orb {

// Starts an ORB whose texts are UTF-8, which is 0x05010001 in the registry of code sets; without
// the directive TAO takes texts for ISO 8859-1. The ORB listens at the endpoint "HOST:PORT"; port 0
// is a free port. An endpoint in argv is one more endpoint. Removes the options of the ORB from
// argc and argv. The caller owns the reference. Thread-safety: one thread. Errors: throws CORBA
// exceptions.
inline CORBA::ORB_ptr startHostOrb(int& argc, char** argv, const std::string& endpoint) {
  std::string listenAt = "iiop://" + endpoint;
  char directive[] = "-ORBSvcConfDirective";
  char codeSet[] = "static Resource_Factory \"-ORBNativeCharCodeset 0x05010001\"";
  char endpoints[] = "-ORBListenEndpoints";
  std::vector<char*> all(argv, argv + argc);
  all.insert(all.end(), {directive, codeSet, endpoints, listenAt.data(), nullptr});
  int count = static_cast<int>(all.size()) - 1;
  CORBA::ORB_var started = CORBA::ORB_init(count, all.data());
  argc = std::min(argc, count);
  std::copy_n(all.begin(), argc, argv);
  return started._retn();
}

}  // namespace orb

#endif
