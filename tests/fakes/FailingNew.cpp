#include "tests/fakes/FailingNew.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace {

constexpr int kFresh = 0xA5;  // every byte of a new block

thread_local bool armed = false;
thread_local int sparedLeft = 0;
thread_local std::size_t leastSize = 0;
thread_local int failureCount = 0;
thread_local long live = 0;
thread_local const std::function<void()>* nextPause = nullptr;
thread_local std::size_t leastPauseSize = 0;

void pauseBefore(std::size_t size) {
  if (nextPause != nullptr && size >= leastPauseSize) {
    (*std::exchange(nextPause, nullptr))();
  }
}

bool mustFail(std::size_t size) {
  if (!armed || size < leastSize || sparedLeft-- > 0) {
    return false;
  }
  sparedLeft = 0;
  ++failureCount;
  return true;
}

void release(void* block) {
  if (block != nullptr) {
    --live;
    std::free(block);
  }
}

}  // namespace

namespace fakes {

FailingNew::FailingNew(int spared, std::size_t size) {
  failureCount = 0;
  sparedLeft = spared;
  leastSize = size;
  armed = true;
}

FailingNew::~FailingNew() {
  armed = false;
}

int FailingNew::failures() {
  return failureCount;
}

PausingNew::PausingNew(std::function<void()> pause, std::size_t size) : pause_(std::move(pause)) {
  leastPauseSize = size;
  nextPause = &pause_;
}

PausingNew::~PausingNew() {
  nextPause = nullptr;
}

long liveBlocks() {
  return live;
}

}  // namespace fakes

void* operator new(std::size_t size) {
  pauseBefore(size);
  void* block = mustFail(size) ? nullptr : std::malloc(size != 0 ? size : 1);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  std::memset(block, kFresh, size);
  ++live;
  return block;
}

void* operator new[](std::size_t size) {
  return ::operator new(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return ::operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return ::operator new(size, std::nothrow);
}

void operator delete(void* block) noexcept {
  release(block);
}

void operator delete(void* block, std::size_t) noexcept {
  release(block);
}

void operator delete[](void* block) noexcept {
  release(block);
}

void operator delete[](void* block, std::size_t) noexcept {
  release(block);
}
