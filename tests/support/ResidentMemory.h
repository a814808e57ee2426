#ifndef TESTS_SUPPORT_RESIDENTMEMORY_H
#define TESTS_SUPPORT_RESIDENTMEMORY_H

#include <sys/types.h>

#include <fstream>
#include <string>

namespace support {

// The resident memory of a process; 0 for an unknown process.
inline long residentKib(pid_t pid) {
  std::ifstream status("/proc/" + std::to_string(pid) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmRSS:", 0) == 0) {
      return std::stol(line.substr(6));
    }
  }
  return 0;
}

}  // namespace support

#endif
