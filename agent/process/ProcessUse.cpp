#include "agent/process/ProcessUse.h"

#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include "agent/process/Descriptors.h"

namespace agent {
namespace {

std::size_t entriesOf(const char* folder) {
  std::error_code failure;
  const std::filesystem::directory_iterator entries(folder, failure);
  return failure ? 0 : static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

double secondsOf(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

}  // namespace

ProcessUse processUse() {
  ProcessUse use;
  std::size_t pages = 0;
  std::size_t residentPages = 0;
  std::ifstream("/proc/self/statm") >> pages >> residentPages;
  const auto pageBytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  use.addressBytes = pages * pageBytes;
  use.residentBytes = residentPages * pageBytes;
  use.threads = entriesOf("/proc/self/task");
  use.descriptors = entriesOf("/proc/self/fd");
  use.descriptorLimit = descriptorLimit();
  rusage times{};
  if (getrusage(RUSAGE_SELF, &times) == 0) {
    use.cpuSeconds = secondsOf(times.ru_utime) + secondsOf(times.ru_stime);
  }
  return use;
}

}  // namespace agent
