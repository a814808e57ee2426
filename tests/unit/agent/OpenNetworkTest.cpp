// The network that the agent starts with.

#include "agent/OpenNetwork.h"
#include "agent/store/sqlite/SqliteStore.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "tests/support/DamagedStore.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

using agent::Network;
using agent::NetworkSource;
using agent::NetworkStore;
using agent::openNetwork;
using agent::Options;
using agent::SqliteStore;
using agent::StoreError;

class OpenedNetwork : public testing::Test {
 protected:
  // The first piece: these networks are small.
  Network open() {
    const std::unique_ptr<NetworkSource> source = openNetwork(options_, store_);
    Network network = source->next().value();
    EXPECT_FALSE(source->next());
    source->finish();
    return network;
  }

  std::string refusal() {
    try {
      open();
    } catch (const StoreError& failure) {
      return failure.what();
    }
    return {};
  }

  // The name of the managing system.
  std::string ems() { return open().ems; }

  std::string networkFile(const std::string& ems) const {
    return directory_.write(ems + ".json",
                            R"({"format": "topo-network/1", "ems": ")" + ems + R"("})");
  }

  const support::TemporaryDirectory directory_;
  const std::string path_ = directory_.file("network.db");
  std::unique_ptr<NetworkStore> store_;
  Options options_ = [this] {
    Options options;
    options.store = path_;
    return options;
  }();
};

TEST_F(OpenedNetwork, RequiresAnExistingStoreWithoutCreate) {
  const std::string expected = path_ +
                               ": there is no store (--network FILE loads a network into "
                               "a new store, --create makes an empty one)";
  EXPECT_EQ(expected, refusal());
  EXPECT_FALSE(std::filesystem::exists(path_));
  directory_.write("network.db", "");
  EXPECT_EQ(expected, refusal()) << "an empty file is no store";
  options_.createStore = true;
  EXPECT_EQ("", refusal());
}

TEST_F(OpenedNetwork, MayBeEmptyInMemory) {
  options_.store = SqliteStore::kInMemory;
  EXPECT_EQ("", refusal());
  EXPECT_TRUE(store_->isNew());
}

TEST_F(OpenedNetwork, ComesFromTheFileOnlyForANewStore) {
  options_.network = networkFile("first");
  EXPECT_EQ("first", ems());
  store_.reset();
  options_.network = networkFile("second");
  EXPECT_EQ("first", ems());
}

TEST_F(OpenedNetwork, ComesFromTheFileForAnEmptyStore) {
  options_.createStore = true;
  EXPECT_EQ("", ems());
  store_.reset();
  options_.network = networkFile("first");
  EXPECT_EQ("first", ems());
}

TEST_F(OpenedNetwork, CreatesNoStoreForABadNetworkFile) {
  options_.network = directory_.write("bad.json", "[");
  EXPECT_THROW(open(), std::runtime_error);
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(OpenedNetwork, IsReadWhileAnotherThreadFindsTheDamageOfTheStore) {
  options_.network = networkFile("first");
  open();
  store_.reset();
  support::damageStore(path_);
  const std::unique_ptr<NetworkSource> source = openNetwork(options_, store_);
  EXPECT_EQ("first", source->next().value().ems);
  EXPECT_FALSE(source->next());
  EXPECT_THROW(source->finish(), StoreError);
}

TEST_F(OpenedNetwork, IsNotCheckedIfTheCheckIsSkipped) {
  options_.network = networkFile("first");
  open();
  store_.reset();
  support::damageStore(path_);
  options_.checkStore = false;
  EXPECT_EQ("", refusal());
}

TEST_F(OpenedNetwork, IsRefusedWithTheReasonOfTheCheckIfItCannotBeRead) {
  options_.network = networkFile("first");
  open();
  store_.reset();
  support::damageStore(path_, "topo_node");
  const std::string expected = path_ + ": is damaged: ";
  EXPECT_EQ(expected, refusal().substr(0, expected.size()));
  store_.reset();
  options_.checkStore = false;
  EXPECT_EQ(path_ + ": is damaged", refusal());
}

}  // namespace
