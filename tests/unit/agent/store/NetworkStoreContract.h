// The contract tests of NetworkStore, for any engine. A test of an engine instantiates the suite:
//   INSTANTIATE_TEST_SUITE_P(Sqlite, NetworkStoreContract, testing::Values(engine));

#ifndef TESTS_UNIT_AGENT_STORE_NETWORKSTORECONTRACT_H
#define TESTS_UNIT_AGENT_STORE_NETWORKSTORECONTRACT_H

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "agent/store/NetworkStore.h"
#include "tests/support/TemporaryDirectory.h"

struct StoreEngine {
  // Opens the store of a test at a path, or makes an empty store. now: milliseconds since 1970.
  std::function<std::unique_ptr<agent::NetworkStore>(const std::string& path, std::uint64_t now)>
      open;
  std::function<std::string(agent::NetworkStore& store, const agent::ObjectKey& key)> ownerOf;
  // Opens a store with the content of a complete copy.
  std::function<std::unique_ptr<agent::NetworkStore>(const std::string& path,
                                                     const std::string& content, std::uint64_t now)>
      restore;
};

class NetworkStoreContract : public testing::TestWithParam<StoreEngine> {
 protected:
  static constexpr std::uint64_t kNow = 1700000000000;

  NetworkStoreContract() { reopen(); }

  agent::NetworkStore& store() { return *store_; }

  void reopen(std::uint64_t now = kNow) {
    store_.reset();
    store_ = GetParam().open(path_, now);
  }

  const support::TemporaryDirectory directory_;
  const std::string path_ = directory_.file("store");
  std::unique_ptr<agent::NetworkStore> store_;
};

#endif
