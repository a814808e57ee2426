#include "agent/process/Heap.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "agent/process/MemoryBudget.h"

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // have heaps of their own

namespace {

constexpr std::size_t kBlock = 1000;
constexpr std::size_t kBlocks = 100000;

// Many small blocks, as the records of a view are: the heap keeps them after they are freed.
std::vector<std::unique_ptr<char[]>> blocks() {
  std::vector<std::unique_ptr<char[]>> result;
  for (std::size_t i = 0; i < kBlocks; ++i) {
    result.push_back(std::make_unique<char[]>(kBlock));
  }
  return result;
}

TEST(Heap, CountsFreedBlocksAsUnallocated) {
  auto all = blocks();
  const std::size_t before = agent::unallocatedBytes();
  const auto last = std::move(all.back());  // the end of the heap stays in use
  all.clear();
  EXPECT_GT(agent::unallocatedBytes(), before + kBlock * kBlocks / 2);
}

TEST(Heap, ReturnsFreedBlocksToTheSystem) {
  const agent::MemoryBudget::Probe memory = agent::processMemory(0);
  auto all = blocks();
  const auto last = std::move(all.back());
  all.clear();
  const std::size_t before = memory().resident;
  agent::returnFreedMemory();
  EXPECT_LT(memory().resident, before - kBlock * kBlocks / 2);
}

}  // namespace

#endif
