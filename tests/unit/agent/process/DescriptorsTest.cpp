// The share of the file descriptors for incoming connections.

#include "agent/process/Descriptors.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

namespace {

using agent::connectionsWithin;

TEST(Descriptors, AllowTheWantedConnectionsOfAHighLimit) {
  EXPECT_EQ(500U, connectionsWithin(1600, 500));
  EXPECT_EQ(500U, connectionsWithin(1000000, 500));
}

TEST(Descriptors, KeepAReserveOfAHighLimit) {
  EXPECT_EQ(10000U - 1100U, connectionsWithin(10000, 20000));
}

TEST(Descriptors, KeepHalfOfALowLimit) {
  EXPECT_EQ(64U, connectionsWithin(128, 500));
  EXPECT_EQ(512U, connectionsWithin(1024, 1000));
}

TEST(Descriptors, AllowAtLeastOneConnection) {
  EXPECT_EQ(1U, connectionsWithin(0, 500));
  EXPECT_EQ(1U, connectionsWithin(1, 500));
}

TEST(Descriptors, AreRaisedToTheHardLimit) {
  rlimit before{};
  getrlimit(RLIMIT_NOFILE, &before);
  const rlimit low{before.rlim_max / 2, before.rlim_max};
  ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &low));
  EXPECT_EQ(before.rlim_max / 2, agent::descriptorLimit());
  agent::raiseDescriptorLimit();
  EXPECT_EQ(before.rlim_max, agent::descriptorLimit());
  setrlimit(RLIMIT_NOFILE, &before);
}

}  // namespace
