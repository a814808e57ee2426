#include <tao/Codeset/Codeset.h>  // links the conversion of code sets
#include <vector>
#include "Host.h"

CORBA::ORB_ptr host::startOrb(int argc, char** argv) {
  std::vector<char*> all(argv, argv + argc);
  for (const char* option : {"-ORBSvcConfDirective",  // 0x05010001 is UTF-8
                             "static Resource_Factory \"-ORBNativeCharCodeset 0x05010001\"",
                             "-ORBListenEndpoints", "iiop://127.0.0.1:0"})
    all.push_back(const_cast<char*>(option));
  int count = static_cast<int>(all.size());
  all.push_back(nullptr);
  return CORBA::ORB_init(count, all.data());
}
