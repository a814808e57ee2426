#include <tao/Codeset/Codeset.h>  // links the conversion of code sets
#include <vector>
#include "Host.h"

// Without the first option, in which 0x05010001 is UTF-8, TAO takes texts for ISO 8859-1.
CORBA::ORB_ptr host::startOrb(int argc, char** argv) {
  const char* options[] = {"-ORBSvcConfDirective",
                           "static Resource_Factory \"-ORBNativeCharCodeset 0x05010001\"",
                           "-ORBListenEndpoints", "iiop://127.0.0.1:0"};
  std::vector<char*> all(argv, argv + argc);
  for (const char* option : options) all.push_back(const_cast<char*>(option));
  int count = static_cast<int>(all.size());
  all.push_back(nullptr);
  return CORBA::ORB_init(count, all.data());
}
