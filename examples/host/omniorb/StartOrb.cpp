#include "Host.h"

// Without the first option omniORB takes texts for ISO 8859-1.
CORBA::ORB_ptr host::startOrb(int argc, char** argv) {
  const char* options[][2] = {
      {"nativeCharCodeSet", "UTF-8"}, {"endPoint", "giop:tcp:127.0.0.1:"}, {nullptr, nullptr}};
  return CORBA::ORB_init(argc, argv, "omniORB4", options);
}
