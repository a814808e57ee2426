// Functions of the system that fail on request of a test. In a program with these definitions, the
// libraries of the program call them, too.

#include <dlfcn.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <new>

#include "tests/integration/InjectedFaults.h"

namespace {

integration::InjectedFaults* faults = nullptr;

// The folder above the folders of the program and of its libraries. A plain array, because
// operator new may run before and after the lifetime of objects with constructors.
std::array<char, PATH_MAX> buildFolder{};

void findBuildFolder() {
  if (::readlink("/proc/self/exe", buildFolder.data(), buildFolder.size() - 1) < 0) {
    std::abort();
  }
  for (int i = 0; i < 2; ++i) {
    *std::strrchr(buildFolder.data(), '/') = '\0';
  }
}

// Whether the code at an address is in the agent, or in the C++ library, which allocates for the
// agent. The libraries of stubs and skeletons are excluded: they run inside calls of the ORB.
bool isOwnCode(const void* address) {
  Dl_info info{};
  if (::dladdr(address, &info) == 0) {
    return false;
  }
  const bool isBuilt =
      std::strncmp(info.dli_fname, buildFolder.data(), std::strlen(buildFolder.data())) == 0;
  const bool isGenerated = std::strstr(info.dli_fname, "_idl.so") != nullptr;
  return (isBuilt && !isGenerated) || std::strstr(info.dli_fname, "/libstdc++") != nullptr;
}

// Runs before main(), and before the first thread.
[[gnu::constructor]] void mapFaults() {
  if (const char* const path = std::getenv(integration::kInjectedFaultsVariable)) {
    findBuildFolder();
    faults = integration::mapInjectedFaults(path);
  }
}

// Returns whether a call to a file must fail, and sets errno.
bool diskFails() {
  const int error = faults == nullptr ? 0 : faults->diskError.load();
  if (error != 0) {
    errno = error;
  }
  return error != 0;
}

// caller: the return address of operator new. Allocations of other libraries succeed, because some
// ORBs do not survive a failure while the ORB reads the header of a request, or keep a mutex locked
// when an object reference cannot be allocated.
bool allocationFails(const void* caller) {
  return faults != nullptr && faults->failingAllocation.load() > 0 && isOwnCode(caller) &&
         faults->failingAllocation.fetch_sub(1) == 1;
}

// Returns null when the allocation fails.
void* allocate(std::size_t size, const void* caller) {
  return allocationFails(caller) ? nullptr : std::malloc(size != 0 ? size : 1);
}

void* allocateOrThrow(std::size_t size, const void* caller) {
  void* const block = allocate(size, caller);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  return block;
}

long clockStep() {
  return faults == nullptr ? 0 : faults->clockStep.load();
}

}  // namespace

extern "C" {

ssize_t pwrite64(int file, const void* bytes, std::size_t count, off64_t offset) {
  return diskFails() ? -1 : ::syscall(SYS_pwrite64, file, bytes, count, offset);
}

int ftruncate64(int file, off64_t size) noexcept {
  return diskFails() ? -1 : static_cast<int>(::syscall(SYS_ftruncate, file, size));
}

int fdatasync(int file) {
  return diskFails() ? -1 : static_cast<int>(::syscall(SYS_fdatasync, file));
}

int clock_gettime(clockid_t clock, std::timespec* time) noexcept {
  const auto result = static_cast<int>(::syscall(SYS_clock_gettime, clock, time));
  if (result == 0 && clock == CLOCK_REALTIME) {
    time->tv_sec += clockStep();
  }
  return result;
}

int gettimeofday(timeval* time, void* zone) noexcept {
  const auto result = static_cast<int>(::syscall(SYS_gettimeofday, time, zone));
  if (result == 0) {
    time->tv_sec += clockStep();
  }
  return result;
}

// Subtracts the step, because the deadline has the step and the kernel's clock does not.
int pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex,
                           const std::timespec* deadline) {
  std::timespec end = *deadline;
  end.tv_sec -= clockStep();
  return ::pthread_cond_clockwait(condition, mutex, CLOCK_REALTIME, &end);
}

}  // extern "C"

void* operator new(std::size_t size) {
  return allocateOrThrow(size, __builtin_return_address(0));
}

void* operator new[](std::size_t size) {
  return allocateOrThrow(size, __builtin_return_address(0));
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return allocate(size, __builtin_return_address(0));
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return allocate(size, __builtin_return_address(0));
}

void operator delete(void* block) noexcept {
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}

void operator delete[](void* block) noexcept {
  std::free(block);
}

void operator delete[](void* block, std::size_t) noexcept {
  std::free(block);
}
