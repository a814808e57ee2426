#include "platform/util/RefImpl.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

// Counts its live instances.
struct Counted {
  static int living;
  Counted() { ++living; }
  ~Counted() { --living; }
};

int Counted::living = 0;

TEST(PlatformRefImpl, CountsRightInManyThreads) {
  auto* holder = new NS_UTIL::REF_Impl<Counted>;
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    holder->AddRef();
    threads.emplace_back([holder] {
      for (int round = 0; round < 5000; ++round) {
        holder->AddRef();
        holder->Release();
      }
      holder->Release();
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(Counted::living, 1);
  holder->Release();
  EXPECT_EQ(Counted::living, 0);
}

}  // namespace
