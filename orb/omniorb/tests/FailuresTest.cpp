// Classification and text of the ORB's minor codes.

#include "tests/unit/orb/Verdicts.h"

#include <gtest/gtest.h>

// Needs the ORB's public headers, but does not include them.
#include <omniORB4/minorCode.h>

namespace {

TEST(OrbFailures, AreDescribedByNameAndMinorCode) {
  EXPECT_EQ("TRANSIENT (TRANSIENT_ConnectFailed): not connected, unreachable",
            verdictsOn<CORBA::TRANSIENT>(omni::TRANSIENT_ConnectFailed));
  EXPECT_EQ("OBJECT_NOT_EXIST (OBJECT_NOT_EXIST_NoMatch): unreachable",
            verdictsOn<CORBA::OBJECT_NOT_EXIST>(omni::OBJECT_NOT_EXIST_NoMatch));
  EXPECT_EQ("NO_PERMISSION:", verdictsOn<CORBA::NO_PERMISSION>(0));
}

TEST(OrbFailures, OfClosedConnectionsAreUnreachable) {
  EXPECT_EQ("COMM_FAILURE (COMM_FAILURE_WaitingForReply): connection closed, unreachable",
            verdictsOn<CORBA::COMM_FAILURE>(omni::COMM_FAILURE_WaitingForReply));
  EXPECT_EQ("TRANSIENT (TRANSIENT_ConnectionClosed): connection closed, unreachable",
            verdictsOn<CORBA::TRANSIENT>(omni::TRANSIENT_ConnectionClosed));
}

TEST(OrbFailures, WithinAReplyAreNotUnreachable) {
  EXPECT_EQ("COMM_FAILURE (COMM_FAILURE_UnMarshalResults): broken off, connection closed",
            verdictsOn<CORBA::COMM_FAILURE>(omni::COMM_FAILURE_UnMarshalResults));
}

TEST(OrbFailures, OfTimeoutsHaveTwoCodes) {
  EXPECT_EQ("TRANSIENT (TRANSIENT_CallTimedout): time-out, unreachable",
            verdictsOn<CORBA::TRANSIENT>(omni::TRANSIENT_CallTimedout));
  EXPECT_EQ("TIMEOUT (TIMEOUT_CallTimedOutOnClient): time-out, unreachable",
            verdictsOn<CORBA::TIMEOUT>(omni::TIMEOUT_CallTimedOutOnClient));
}

TEST(OrbFailures, OfAServerThatDoesNotServeTheObjectAreRejected) {
  EXPECT_EQ("TRANSIENT (TRANSIENT_POANoResource): rejected, unreachable",
            verdictsOn<CORBA::TRANSIENT>(CORBA::OMGVMCID | 1));
  EXPECT_EQ("TRANSIENT: rejected, unreachable", verdictsOn<CORBA::TRANSIENT>(0));
  const CORBA::TRANSIENT maybeExecuted(CORBA::OMGVMCID | 1, CORBA::COMPLETED_MAYBE);
  EXPECT_FALSE(orb::isRejected(maybeExecuted));
}

TEST(OrbFailures, WithoutAnAddressToConnectToAreNotConnected) {
  EXPECT_EQ("TRANSIENT (TRANSIENT_NoUsableProfile): not connected, unreachable",
            verdictsOn<CORBA::TRANSIENT>(omni::TRANSIENT_NoUsableProfile));
}

TEST(OrbFailures, OfTheSizeLimitHaveManyCodes) {
  for (const CORBA::ULong minor :
       {omni::MARSHAL_MessageSizeExceedLimit, omni::MARSHAL_MessageSizeExceedLimitOnClient,
        omni::MARSHAL_MessageSizeExceedLimitOnServer, omni::MARSHAL_MessageTooLong,
        omni::MARSHAL_PassEndOfMessage, omni::MARSHAL_SequenceIsTooLong,
        omni::MARSHAL_StringIsTooLong}) {
    const CORBA::MARSHAL failure(minor, CORBA::COMPLETED_NO);
    EXPECT_EQ(orb::describe(failure) + ": message too large", verdictsOn(failure));
    const CORBA::NO_MEMORY other(minor, CORBA::COMPLETED_NO);
    EXPECT_FALSE(orb::isMessageTooLarge(other));
  }
  EXPECT_EQ("MARSHAL (MARSHAL_InvalidIOR):", verdictsOn<CORBA::MARSHAL>(omni::MARSHAL_InvalidIOR));
}

}  // namespace
