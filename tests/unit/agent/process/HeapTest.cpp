#include "agent/process/Heap.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "agent/process/MemoryBudget.h"

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // have heaps of their own

extern "C" {
[[gnu::weak]] void MallocExtension_ReleaseFreeMemory();
}

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

// The number of blocks in ranges of the address space with the advice to use large pages.
std::size_t countAdvised(const std::vector<std::unique_ptr<char[]>>& blocks) {
  std::size_t count = 0;
  std::uintptr_t start = 0;
  std::uintptr_t end = 0;
  std::ifstream maps("/proc/self/smaps");
  for (std::string line; std::getline(maps, line);) {
    if (std::sscanf(line.c_str(), "%" SCNxPTR "-%" SCNxPTR " ", &start, &end) == 2) {
      continue;
    }
    if (line.rfind("VmFlags:", 0) == 0 && line.find(" hg") != std::string::npos) {
      count += static_cast<std::size_t>(
          std::count_if(blocks.begin(), blocks.end(), [start, end](const auto& block) {
            const auto address = reinterpret_cast<std::uintptr_t>(block.get());
            return address >= start && address < end;
          }));
    }
  }
  return count;
}

TEST(Heap, UsesLargePagesForTheNextBlocksOnly) {
  if (MallocExtension_ReleaseFreeMemory == nullptr) {
    GTEST_SKIP() << "needs tcmalloc";
  }
  agent::returnFreedMemory();
  agent::useLargePages(kBlock * kBlocks / 2);
  const auto all = blocks();
  EXPECT_GT(countAdvised(all), kBlocks / 4);
  EXPECT_LT(countAdvised(all), kBlocks * 3 / 4);
}

// Ends the process with status 0 if the heap takes fewer addresses than the machine has memory,
// also for a file with holes that is larger than any memory.
void useLargePagesOfAHugeFile() {
  const agent::MemoryBudget::Probe memory = agent::processMemory(0);
  const std::size_t addresses = memory().addresses;
  agent::useLargePages(std::size_t{1} << 40);
  const auto machine = static_cast<std::size_t>(sysconf(_SC_PHYS_PAGES)) *
                       static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  std::_Exit(memory().addresses <= addresses + machine + (std::size_t{64} << 20) ? 0 : 1);
}

TEST(HeapDeathTest, TakesNoMoreAddressesForLargePagesThanTheMachineHasMemory) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  EXPECT_EXIT(useLargePagesOfAHugeFile(), testing::ExitedWithCode(0), "");
}

// Ends the process with status 0 if the heap leaves a limited address space to the process.
void useLargePagesOfALimitedAddressSpace() {
  const agent::MemoryBudget::Probe memory = agent::processMemory(0);  // counts all addresses
  const rlimit limit{rlim_t{1} << 40, rlim_t{1} << 40};
  setrlimit(RLIMIT_AS, &limit);
  const std::size_t addresses = memory().addresses;
  agent::useLargePages(std::size_t{1} << 30);
  std::_Exit(memory().addresses < addresses + (std::size_t{1} << 29) ? 0 : 1);
}

TEST(HeapDeathTest, TakesNoAddressesForLargePagesUnderALimit) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  EXPECT_EXIT(useLargePagesOfALimitedAddressSpace(), testing::ExitedWithCode(0), "");
}

TEST(Heap, TakesNoMemoryForLargePagesInAdvance) {
  const agent::MemoryBudget::Probe memory = agent::processMemory(0);
  const std::size_t resident = memory().resident;
  agent::useLargePages(std::size_t{1} << 30);
  EXPECT_LT(memory().resident, resident + (std::size_t{16} << 20));
}

}  // namespace

#endif
