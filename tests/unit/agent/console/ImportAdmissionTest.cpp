// Admission of imports by memory.

#include "agent/console/ImportAdmission.h"

#include <gtest/gtest.h>

#include <vector>

#include "agent/base/RequestLog.h"

namespace {

using agent::ImportAdmission;

constexpr std::size_t kFactor = ImportAdmission::kBytesOfByte;

const orb::Peer kClient{orb::Transport::kTcp, "127.0.0.1", "", 0};

orb::Request importOf(std::size_t bytes) {
  return {"importNetwork", kClient, bytes};
}

class Imports : public testing::Test {
 protected:
  std::size_t free_ = 100 * kFactor;  // bytes that the process may allocate
  ImportAdmission admission_{[this](std::size_t bytes) { return bytes <= free_; },
                             std::chrono::steady_clock::now};
};

TEST_F(Imports, AreRefusedWhenMemoryIsShort) {
  EXPECT_THROW(admission_.admit(importOf(101)), CORBA::NO_RESOURCES);
  EXPECT_EQ(0U, admission_.reserved());
  EXPECT_NE(nullptr, admission_.admit(importOf(100)));
}

TEST_F(Imports, ThatAreRefusedAreRecordedAsFailures) {
  std::vector<agent::RequestRecord> records;
  agent::setRequestRecorder(
      [&records](const agent::RequestRecord& record) { records.push_back(record); });
  EXPECT_THROW(admission_.admit(importOf(101)), CORBA::NO_RESOURCES);
  free_ = 0;
  EXPECT_THROW(admission_.admit({"getObject", kClient, 100}), CORBA::NO_RESOURCES);
  agent::setRequestRecorder(nullptr);
  ASSERT_EQ(1U, records.size());
  EXPECT_EQ("importNetwork", records[0].operation);
  EXPECT_EQ("127.0.0.1", records[0].peer.address);
  EXPECT_EQ(agent::RequestRecord::Outcome::kFailed, records[0].outcome);
  EXPECT_EQ("memory is short", records[0].reason);
}

TEST_F(Imports, ReserveMemoryUntilTheirEnd) {
  auto first = admission_.admit(importOf(60));
  EXPECT_EQ(60 * kFactor, admission_.reserved());
  EXPECT_THROW(admission_.admit(importOf(41)), CORBA::NO_RESOURCES);
  const auto second = admission_.admit(importOf(40));
  EXPECT_EQ(100 * kFactor, admission_.reserved());
  first.reset();
  EXPECT_EQ(40 * kFactor, admission_.reserved());
  EXPECT_NE(nullptr, admission_.admit(importOf(60)));
}

TEST_F(Imports, ShareTheMemoryWithRepliesOfGetObject) {
  constexpr std::size_t kDetails = ImportAdmission::kBytesOfDetails;
  const orb::Request get{"getObject", kClient, 100};
  free_ = 2 * kDetails;
  auto first = admission_.admit(get);
  EXPECT_EQ(kDetails, admission_.reserved());
  const auto second = admission_.admit(get);
  EXPECT_THROW(admission_.admit(get), CORBA::NO_RESOURCES);
  EXPECT_THROW(admission_.admit(importOf(1)), CORBA::NO_RESOURCES);
  first.reset();
  EXPECT_NE(nullptr, admission_.admit(get));
}

TEST_F(Imports, ShareTheMemoryWithExports) {
  auto running = admission_.admitExport(60);
  EXPECT_EQ(60 * kFactor, admission_.reserved());
  EXPECT_THROW(admission_.admit(importOf(41)), CORBA::NO_RESOURCES);
  EXPECT_EQ(nullptr, admission_.admitExport(41));
  EXPECT_EQ(60 * kFactor, admission_.reserved());
  running.reset();
  EXPECT_EQ(0U, admission_.reserved());
}

TEST_F(Imports, AndGetObjectAreTheOnlyRequestsThatReserveMemory) {
  free_ = 0;
  EXPECT_EQ(nullptr, admission_.admit({"createNode", kClient, 1000}));
  EXPECT_THROW(admission_.admit(importOf(1)), CORBA::NO_RESOURCES);
}

}  // namespace
