// Classification and text of the ORB's minor codes.

#include <gtest/gtest.h>
#include <tao/ORB_Constants.h>
#include <tao/SystemException.h>

#include <cerrno>
#include <cstring>

#include "orb/tao/messagelimit.h"
#include "orb/tao/outgoingcalls.h"
#include "tests/unit/orb/Verdicts.h"

namespace {

CORBA::ULong own(CORBA::ULong location, CORBA::ULong error = 0) {
  return TAO::VMCID | location | error;
}

TEST(OrbFailures, DescribeOmgCodesInWords) {
  EXPECT_EQ("TRANSIENT (requests are discarded): rejected, unreachable",
            verdictsOn<CORBA::TRANSIENT>(CORBA::OMGVMCID | 1));
  EXPECT_EQ("TRANSIENT (no connection): not connected, unreachable",
            verdictsOn<CORBA::TRANSIENT>(CORBA::OMGVMCID | 2));
  EXPECT_EQ("TRANSIENT: rejected, unreachable", verdictsOn<CORBA::TRANSIENT>(CORBA::OMGVMCID | 3));
}

TEST(OrbFailures, WithoutAKnownCodeAreDescribedByName) {
  EXPECT_EQ("TRANSIENT: rejected, unreachable", verdictsOn<CORBA::TRANSIENT>(0));
  EXPECT_EQ("COMM_FAILURE: connection closed, unreachable", verdictsOn<CORBA::COMM_FAILURE>(0));
  EXPECT_EQ("TIMEOUT: time-out, unreachable", verdictsOn<CORBA::TIMEOUT>(0));
  EXPECT_EQ("OBJECT_NOT_EXIST: unreachable", verdictsOn<CORBA::OBJECT_NOT_EXIST>(0));
  EXPECT_EQ("MARSHAL:", verdictsOn<CORBA::MARSHAL>(0));
  EXPECT_EQ("NO_PERMISSION:", verdictsOn<CORBA::NO_PERMISSION>(0));
}

TEST(OrbFailures, OfAPoaThatServesNoRequestsAreRejected) {
  for (const CORBA::ULong location : {TAO_POA_DISCARDING, TAO_POA_HOLDING}) {
    const CORBA::TRANSIENT failure(own(location, 1), CORBA::COMPLETED_NO);
    EXPECT_TRUE(orb::isRejected(failure));
    const CORBA::TRANSIENT maybeExecuted(own(location, 1), CORBA::COMPLETED_MAYBE);
    EXPECT_FALSE(orb::isRejected(maybeExecuted));
  }
}

TEST(OrbFailures, OfOtherVendorsAreDescribedByName) {
  EXPECT_EQ("COMM_FAILURE: connection closed, unreachable",
            verdictsOn<CORBA::COMM_FAILURE>(0x41540000 | TAO_INVOCATION_SEND_REQUEST_MINOR_CODE));
  EXPECT_EQ("TIMEOUT: time-out, unreachable", verdictsOn<CORBA::TIMEOUT>(ECONNREFUSED));
}

TEST(OrbFailures, DescribeTheStepOfTheCall) {
  EXPECT_EQ("COMM_FAILURE (the request was not sent): connection closed, unreachable",
            verdictsOn<CORBA::COMM_FAILURE>(own(TAO_INVOCATION_SEND_REQUEST_MINOR_CODE)));
  EXPECT_EQ("COMM_FAILURE (the connection ended before the answer): connection closed, unreachable",
            verdictsOn<CORBA::COMM_FAILURE>(own(TAO_INVOCATION_RECV_REQUEST_MINOR_CODE)));
  EXPECT_EQ("TIMEOUT (no connection in time): time-out, unreachable",
            verdictsOn<CORBA::TIMEOUT>(own(TAO_TIMEOUT_CONNECT_MINOR_CODE)));
  EXPECT_EQ("TIMEOUT (the request was not sent in time): time-out, unreachable",
            verdictsOn<CORBA::TIMEOUT>(own(TAO_TIMEOUT_SEND_MINOR_CODE)));
  EXPECT_EQ("TIMEOUT (no answer in time): time-out, unreachable",
            verdictsOn<CORBA::TIMEOUT>(own(TAO_TIMEOUT_RECV_MINOR_CODE)));
}

TEST(OrbFailures, OfTheOrbLayerDescribeTheCause) {
  EXPECT_EQ("COMM_FAILURE (the connection ended within the answer): broken off, connection closed",
            verdictsOn<CORBA::COMM_FAILURE>(orb::kBrokenOff));
  EXPECT_EQ("MARSHAL (a message is over the size limit): message too large",
            verdictsOn<CORBA::MARSHAL>(orb::kMessageTooLarge));
  EXPECT_EQ("NO_MEMORY:", verdictsOn<CORBA::NO_MEMORY>(orb::kMessageTooLarge));
}

struct NumberedError {
  CORBA::ULong number;
  int error;
};

// The numbers in the ORB's manual; other errors have their errno value.
TEST(OrbFailures, DescribeTheSystemError) {
  const NumberedError errors[] = {
      {1, ETIMEDOUT},  {2, ENFILE},  {3, EMFILE},  {4, EPIPE},       {5, ECONNREFUSED},
      {6, ENOENT},     {7, EBADF},   {8, ENOSYS},  {9, EPERM},       {10, EAFNOSUPPORT},
      {11, EAGAIN},    {12, ENOMEM}, {13, EACCES}, {14, EFAULT},     {15, EBUSY},
      {16, EEXIST},    {17, EINVAL}, {18, ECOMM},  {19, ECONNRESET}, {20, ENOTSUP},
      {98, EADDRINUSE}};
  for (const NumberedError& each : errors) {
    EXPECT_EQ(std::string("TRANSIENT (") + std::strerror(each.error) + "): unreachable",
              verdictsOn<CORBA::TRANSIENT>(own(0, each.number)));
  }
}

}  // namespace
