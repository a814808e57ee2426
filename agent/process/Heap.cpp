#include "agent/process/Heap.h"

#include <malloc.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

// tcmalloc's C interface. Null in a program without tcmalloc, which need not be installed.
extern "C" {
[[gnu::weak]] void MallocExtension_ReleaseFreeMemory();
[[gnu::weak]] int MallocExtension_GetNumericProperty(const char* property, std::size_t* value);
}

namespace agent {
namespace {

constexpr std::size_t kLargePage = std::size_t{2} << 20;

// tcmalloc writes a warning about each block of 1 GiB or more.
constexpr std::size_t kMostBytesOfBlock = std::size_t{512} << 20;

struct Free {
  void operator()(void* block) const { std::free(block); }
};
using Block = std::unique_ptr<void, Free>;

void adviseLargePages(void* block, std::size_t bytes) {
  const auto start = reinterpret_cast<std::uintptr_t>(block);
  const std::size_t unaligned = (kLargePage - start % kLargePage) % kLargePage;
  if (unaligned < bytes) {
    madvise(static_cast<char*>(block) + unaligned, (bytes - unaligned) / kLargePage * kLargePage,
            MADV_HUGEPAGE);
  }
}

// tcmalloc never returns addresses to the system. Under a limit of the address space, the stacks of
// threads and mapped files need the addresses.
std::size_t mostAdvised() {
  rlimit limit{};
  if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur != RLIM_INFINITY) {
    return 0;
  }
  return static_cast<std::size_t>(sysconf(_SC_PHYS_PAGES)) *
         static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

std::size_t property(const char* name) {
  std::size_t value = 0;
  return MallocExtension_GetNumericProperty(name, &value) != 0 ? value : 0;
}

}  // namespace

void returnFreedMemory() {
  if (MallocExtension_ReleaseFreeMemory != nullptr) {
    MallocExtension_ReleaseFreeMemory();
  } else {
    malloc_trim(0);
  }
}

std::size_t unallocatedBytes() {
  if (MallocExtension_GetNumericProperty == nullptr) {
    return mallinfo2().fordblks;
  }
  const std::size_t heap = property("generic.heap_size");
  return heap - std::min(heap, property("generic.current_allocated_bytes"));
}

// tcmalloc keeps the address range of freed blocks for the next blocks, and the advice belongs to
// the range.
void useLargePages(std::size_t bytes) {
  if (MallocExtension_ReleaseFreeMemory == nullptr) {
    return;
  }
  std::vector<Block> blocks;
  for (std::size_t left = std::min(bytes, mostAdvised()); left >= 2 * kLargePage;) {
    const std::size_t size = std::min(left, kMostBytesOfBlock);
    Block& block = blocks.emplace_back(std::malloc(size));
    if (!block) {
      break;
    }
    adviseLargePages(block.get(), size);
    left -= size;
  }
}

}  // namespace agent
