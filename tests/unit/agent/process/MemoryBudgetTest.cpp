// The limits of memory and of addresses.

#include "agent/process/MemoryBudget.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/resource.h>

#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/TemporaryDirectory.h"

namespace {

using agent::MemoryBudget;
using agent::MemoryUse;
using std::chrono::milliseconds;

class Budget : public testing::Test {
 protected:
  MemoryUse use_;
  int releases_ = 0;
  std::size_t released_ = 0;  // bytes of each release
  std::chrono::steady_clock::time_point now_{std::chrono::hours(1)};
  MemoryBudget budget_{[this] { return use_; },
                       [this] {
                         ++releases_;
                         use_.resident -= released_;
                       },
                       [this] { return now_; }};
};

TEST_F(Budget, AllowsAnythingWithoutALimit) {
  EXPECT_TRUE(budget_.allows(MemoryUse::kNoLimit));
  EXPECT_EQ(0, releases_);
}

TEST_F(Budget, ReservesAnEighthOfTheResidentLimit) {
  use_.residentLimit = 800;
  use_.resident = 100;
  EXPECT_TRUE(budget_.allows(600));
  EXPECT_FALSE(budget_.allows(601));
}

TEST_F(Budget, ReservesAnEighthOfTheAddressSpace) {
  use_.addressLimit = 800;
  use_.addresses = 100;
  EXPECT_TRUE(budget_.allows(600));
  EXPECT_FALSE(budget_.allows(601));
}

TEST_F(Budget, AllowsNothingWhenTheUseIsOverTheLimit) {
  use_.residentLimit = 800;
  use_.resident = 900;
  EXPECT_FALSE(budget_.allows(1));
}

TEST_F(Budget, CountsMemoryThatTheAllocatorReleases) {
  use_.residentLimit = 800;
  use_.resident = 600;
  released_ = 500;
  EXPECT_TRUE(budget_.allows(600));
  EXPECT_EQ(1, releases_);
}

TEST_F(Budget, ReleasesMemoryAtMostOnceASecond) {
  use_.residentLimit = 800;
  use_.resident = 700;
  EXPECT_FALSE(budget_.allows(1));
  now_ += milliseconds(999);
  EXPECT_FALSE(budget_.allows(1));
  EXPECT_EQ(1, releases_);
  now_ += milliseconds(1);
  EXPECT_FALSE(budget_.allows(1));
  EXPECT_EQ(2, releases_);
}

TEST(ProcessMemory, HasAtMostTheConfiguredLimit) {
  const MemoryUse use = agent::processMemory(1000000)();
  EXPECT_LE(use.residentLimit, 1000000U);
  EXPECT_LT(0U, use.resident);
  EXPECT_LT(use.resident, use.addresses);
}

TEST(ProcessMemory, IsLimitedByTheMachineWithoutAConfiguredLimit) {
  EXPECT_NE(MemoryUse::kNoLimit, agent::processMemory(0)().residentLimit);
}

TEST(ProcessMemory, IsLimitedByTheMachineWhenMoreIsConfigured) {
  const std::size_t limit = agent::processMemory(0)().residentLimit;
  EXPECT_EQ(limit, agent::processMemory(MemoryUse::kNoLimit - 1)().residentLimit);
}

// --- Control groups.

class ControlGroups : public testing::Test {
 protected:
  static constexpr std::size_t kLeast = 1000;

  void write(const std::string& file, const std::string& content) {
    std::filesystem::create_directories(std::filesystem::path(root_.file(file)).parent_path());
    root_.write(file, content);
  }

  std::size_t limit() const { return agent::processMemory(0, root_.path())().residentLimit; }

  const support::TemporaryDirectory root_;
};

TEST_F(ControlGroups, LimitTheGroupOfTheProcess) {
  write("proc/self/cgroup", "0::/service/agent\n");
  write("sys/fs/cgroup/service/memory.max", "max\n");
  write("sys/fs/cgroup/service/agent/memory.max", "1000\n");
  EXPECT_EQ(kLeast, limit());
}

TEST_F(ControlGroups, LimitTheGroupsBelowThem) {
  write("proc/self/cgroup", "0::/service/agent\n");
  write("sys/fs/cgroup/service/memory.max", "1000\n");
  write("sys/fs/cgroup/service/agent/memory.max", "2000\n");
  EXPECT_EQ(kLeast, limit());
}

TEST_F(ControlGroups, LimitTheProcessByTheRootOfItsNamespace) {
  write("proc/self/cgroup", "0::/\n");
  write("sys/fs/cgroup/memory.max", "1000\n");
  EXPECT_EQ(kLeast, limit());
}

TEST_F(ControlGroups, OfVersion1LimitByTheMemoryControllerOnly) {
  write("proc/self/cgroup", "3:cpu:/other\n2:memory:/service\n");
  write("sys/fs/cgroup/memory/other/memory.limit_in_bytes", "500\n");
  write("sys/fs/cgroup/memory/service/memory.limit_in_bytes", "1000\n");
  EXPECT_EQ(kLeast, limit());
}

// Sets a limit of the address space that the process cannot reach. The destructor restores the
// limit.
class LimitedAddresses {
 public:
  LimitedAddresses() {
    getrlimit(RLIMIT_AS, &before_);
    const rlimit limit{rlim_t{1} << 50, before_.rlim_max};
    setrlimit(RLIMIT_AS, &limit);
  }
  ~LimitedAddresses() { setrlimit(RLIMIT_AS, &before_); }
  LimitedAddresses(const LimitedAddresses&) = delete;
  LimitedAddresses& operator=(const LimitedAddresses&) = delete;

 private:
  rlimit before_{};
};

TEST(ProcessMemory, CountsNoAddressesOfFreedPartsOfTheHeap) {
  constexpr std::size_t kBlocks = 512;
  std::vector<std::unique_ptr<char[]>> blocks;
  blocks.reserve(kBlocks);
  for (std::size_t i = 0; i < kBlocks; ++i) {
    blocks.push_back(std::make_unique<char[]>(65536));
  }
  const std::unique_ptr<char[]> last = std::move(blocks.back());  // keeps the heap from shrinking
  blocks.clear();
  const std::size_t freed = mallinfo2().fordblks;  // 0 with the allocator of a sanitizer
  const std::size_t whole = agent::processMemory(0)().addresses;
  const LimitedAddresses limited;
  const MemoryUse use = agent::processMemory(0)();
  EXPECT_NE(MemoryUse::kNoLimit, use.addressLimit);
  EXPECT_LE(use.addresses + freed / 2, whole);
}

}  // namespace
