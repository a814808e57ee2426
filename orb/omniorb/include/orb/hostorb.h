// The ORB of a host of the module.

#ifndef ORB_HOSTORB_H
#define ORB_HOSTORB_H

#include <string>

#include "orb/corba.h"

namespace orb {

// Starts an ORB whose texts are UTF-8; without the option omniORB takes texts for ISO 8859-1. The
// ORB listens at the endpoint "HOST:PORT"; port 0 is a free port. An option in argv takes
// precedence, -ORBendPoint included. Removes the options of the ORB from argc and argv. The caller
// owns the reference and keeps argv alive as long as the ORB. Thread-safety: one thread. Errors:
// throws CORBA exceptions.
inline CORBA::ORB_ptr startHostOrb(int& argc, char** argv, const std::string& endpoint) {
  const std::string listenAt = "giop:tcp:" + endpoint;
  const char* options[][2] = {
      {"nativeCharCodeSet", "UTF-8"}, {"endPoint", listenAt.c_str()}, {nullptr, nullptr}};
  return CORBA::ORB_init(argc, argv, "omniORB4", options);
}

}  // namespace orb

#endif
