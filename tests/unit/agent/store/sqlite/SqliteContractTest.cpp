#include <gtest/gtest.h>

#include <fstream>

#include "agent/store/sqlite/SqliteStore.h"
#include "tests/unit/agent/store/NetworkStoreContract.h"
#include "tests/unit/agent/support/StoredOwner.h"

namespace {

using agent::SqliteStore;

std::unique_ptr<agent::NetworkStore> openAt(const std::string& path, std::uint64_t now) {
  return std::make_unique<SqliteStore>(path, [now] { return now; });
}

std::unique_ptr<agent::NetworkStore> restoreAt(const std::string& path, const std::string& content,
                                               std::uint64_t now) {
  std::ofstream(path, std::ios::binary) << content;
  return openAt(path, now);
}

INSTANTIATE_TEST_SUITE_P(Sqlite, NetworkStoreContract,
                         testing::Values(StoreEngine{openAt, storedOwner, restoreAt}),
                         [](const auto&) { return std::string("Engine"); });

}  // namespace
