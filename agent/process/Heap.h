// The heap of the process: the heap of tcmalloc in a program that is linked with tcmalloc,
// otherwise the heap of the C library. Thread-safety: any thread. Errors: none.

#ifndef AGENT_PROCESS_HEAP_H
#define AGENT_PROCESS_HEAP_H

#include <cstddef>

namespace agent {

// Returns freed memory to the system. Examines the whole heap: milliseconds for a large heap.
void returnFreedMemory();

// The bytes of the heap's address space that are not allocated.
std::size_t unallocatedBytes();

// Lets the next allocations, up to a number of bytes, use large pages of the system: the random
// access to the records of a large network then needs fewer page faults and address translations.
// Takes address space, no memory: at most as much as the machine has memory, and nothing when the
// address space of the process is limited. Only tcmalloc's heap uses large pages.
void useLargePages(std::size_t bytes);

}  // namespace agent

#endif
