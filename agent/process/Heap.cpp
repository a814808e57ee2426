#include "agent/process/Heap.h"

#include <malloc.h>

#include <algorithm>

// tcmalloc's C interface. Null in a program without tcmalloc, which need not be installed.
extern "C" {
[[gnu::weak]] void MallocExtension_ReleaseFreeMemory();
[[gnu::weak]] int MallocExtension_GetNumericProperty(const char* property, std::size_t* value);
}

namespace agent {
namespace {

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

}  // namespace agent
