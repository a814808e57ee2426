#include "agent/process/MemoryBudget.h"

#include <fcntl.h>
#include <malloc.h>
#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <tuple>
#include <utility>

#include "agent/process/Heap.h"

namespace agent {
namespace {

constexpr std::chrono::seconds kReleaseInterval{1};

// Whether an eighth of the limit stays free after an allocation of these bytes.
bool fits(std::size_t limit, std::size_t used, std::size_t bytes) {
  if (limit == MemoryUse::kNoLimit) {
    return true;
  }
  const std::size_t usable = limit - limit / 8;
  return used <= usable && bytes <= usable - used;
}

std::size_t addressLimit() {
  rlimit limit{};
  if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) {
    return MemoryUse::kNoLimit;
  }
  return limit.rlim_cur;
}

std::size_t machineMemory() {
  return static_cast<std::size_t>(sysconf(_SC_PHYS_PAGES)) *
         static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

// The number in a file of a control group. kNoLimit for "max" and for a missing file.
std::size_t numberIn(const std::filesystem::path& file) {
  std::ifstream in(file);
  std::size_t number = 0;
  return in >> number ? number : MemoryUse::kNoLimit;
}

// The least limit of a control group and of its parent groups.
std::size_t limitOfGroup(const std::filesystem::path& mount, std::filesystem::path group,
                         const std::string& file) {
  std::size_t limit = numberIn(mount / file);
  for (; group.has_relative_path(); group = group.parent_path()) {
    limit = std::min(limit, numberIn(mount / group.relative_path() / file));
  }
  return limit;
}

// Each line of the file is NUMBER:CONTROLLERS:PATH. The line of version 2 has no controllers.
std::size_t groupLimit(const std::filesystem::path& root) {
  std::size_t limit = MemoryUse::kNoLimit;
  const std::filesystem::path mount = root / "sys/fs/cgroup";
  std::ifstream groups(root / "proc/self/cgroup");
  for (std::string line; std::getline(groups, line);) {
    const std::size_t controllers = line.find(':') + 1;
    const std::size_t path = line.find(':', controllers) + 1;
    const std::string names = line.substr(controllers, path - 1 - controllers);
    if (names.empty()) {
      limit = std::min(limit, limitOfGroup(mount, line.substr(path), "memory.max"));
    } else if (names == "memory") {
      limit = std::min(limit,
                       limitOfGroup(mount / "memory", line.substr(path), "memory.limit_in_bytes"));
    }
  }
  return limit;
}

// /proc/self/statm. The file stays open, so that a read needs no new descriptor.
class Pages {
 public:
  Pages() : file_(open("/proc/self/statm", O_RDONLY | O_CLOEXEC)) {}
  ~Pages() { close(file_); }
  Pages(const Pages&) = delete;
  Pages& operator=(const Pages&) = delete;

  // Bytes of the address space in use, and of resident memory.
  std::pair<std::size_t, std::size_t> read() const {
    std::array<char, 256> text{};
    const ssize_t length = pread(file_, text.data(), text.size(), 0);
    const char* const end = text.data() + std::max<ssize_t>(length, 0);
    std::size_t addresses = 0;
    std::size_t resident = 0;
    const char* const second = std::from_chars(text.data(), end, addresses).ptr;
    std::from_chars(std::min(second + 1, end), end, resident);
    return {addresses * pageSize_, resident * pageSize_};
  }

 private:
  const int file_;
  const std::size_t pageSize_ = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
};

}  // namespace

MemoryBudget::MemoryBudget(Probe probe, Release release, Clock clock)
    : probe_(std::move(probe)), release_(std::move(release)), clock_(std::move(clock)) {}

bool MemoryBudget::allows(std::size_t bytes) {
  const auto allowed = [&](const MemoryUse& use) {
    return fits(use.residentLimit, use.resident, bytes) &&
           fits(use.addressLimit, use.addresses, bytes);
  };
  if (allowed(probe_())) {
    return true;
  }
  releaseFreed();
  return allowed(probe_());
}

void MemoryBudget::releaseFreed() {
  const MutexLock lock(mutex_);
  const auto now = clock_();
  if (now >= nextRelease_) {
    release_();
    nextRelease_ = now + kReleaseInterval;
  }
}

// Subtracts freed parts of the heap from the used addresses: an allocation can reuse these parts.
MemoryBudget::Probe processMemory(std::size_t configured, const std::filesystem::path& root) {
  MemoryUse limits;
  limits.addressLimit = addressLimit();
  limits.residentLimit = std::min(groupLimit(root), machineMemory());
  if (configured != 0) {
    limits.residentLimit = std::min(limits.residentLimit, configured);
  }
  const auto pages = std::make_shared<const Pages>();
  return [limits, pages] {
    MemoryUse use = limits;
    std::tie(use.addresses, use.resident) = pages->read();
    if (use.addressLimit != MemoryUse::kNoLimit) {
      use.addresses -= std::min(use.addresses, unallocatedBytes());
    }
    return use;
  };
}

void confineAddressSpace() {
  constexpr std::size_t kStack = std::size_t{1} << 20;
  constexpr int kLargeBlock = 1 << 18;
  if (addressLimit() == MemoryUse::kNoLimit) {
    return;
  }
  // The C library gives most threads an arena of their own, and each arena reserves 64 MiB.
  // tcmalloc ignores these two settings.
  mallopt(M_ARENA_MAX, 1);
  // Large blocks are mapped, so that freed blocks leave no holes in the heap.
  mallopt(M_MMAP_THRESHOLD, kLargeBlock);
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) == 0) {
    pthread_attr_setstacksize(&attributes, kStack);
    pthread_setattr_default_np(&attributes);
    pthread_attr_destroy(&attributes);
  }
}

}  // namespace agent
