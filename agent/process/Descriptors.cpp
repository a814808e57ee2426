#include "agent/process/Descriptors.h"

#include <sys/resource.h>

#include <algorithm>

namespace agent {
namespace {

// Descriptors for a thousand subscribers, the store and a few files. A low limit reserves half.
constexpr std::size_t kReserve = 1100;

rlimit limits() {
  rlimit present{};
  getrlimit(RLIMIT_NOFILE, &present);
  return present;
}

}  // namespace

void raiseDescriptorLimit() {
  rlimit wanted = limits();
  wanted.rlim_cur = wanted.rlim_max;
  setrlimit(RLIMIT_NOFILE, &wanted);
}

std::size_t descriptorLimit() {
  return limits().rlim_cur;
}

std::size_t connectionsWithin(std::size_t descriptors, std::size_t wanted) {
  const std::size_t reserve = std::min(kReserve, descriptors / 2);
  return std::clamp(wanted, std::size_t{1}, std::max(descriptors - reserve, std::size_t{1}));
}

}  // namespace agent
