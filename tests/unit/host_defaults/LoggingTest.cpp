#include "platform/agent/Logging.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

TEST(DefaultLog, WritesErrorsWithTheirPosition) {
  NS_CORBA::GetTss()->file = "file";
  NS_CORBA::GetTss()->line = 7;
  CaptureStderr();
  NS_CORBA::TaDebug(NS_CORBA::kLogError, "the reason");
  NS_CORBA::TaDebugWithPara(NS_CORBA::kLogError, "code %d", 5);
  EXPECT_EQ(GetCapturedStderr(), "file:7 the reason\nfile:7 code 5\n");
}

TEST(DefaultLog, LeavesTracesOut) {
  CaptureStderr();
  NS_CORBA::TaDebug(NS_CORBA::kLogTrace, "trace");
  EXPECT_EQ(GetCapturedStderr(), "");
}

TEST(DefaultLog, CutsALongText) {
  CaptureStderr();
  NS_CORBA::TaDebugWithPara(NS_CORBA::kLogError, "%s", std::string(100000, 'x').c_str());
  EXPECT_LT(GetCapturedStderr().size(), 1100U);
}

TEST(DefaultLog, ReportsCodeAndTextOfAnException) {
  ProcessException failure;
  failure.errorCode = 12;
  failure.detail << "no such object";
  CaptureStderr();
  NS_CORBA::NbiException(failure);
  const std::string line = GetCapturedStderr();
  EXPECT_NE(line.find("12"), std::string::npos) << line;
  EXPECT_NE(line.find("no such object"), std::string::npos) << line;
}

TEST(DefaultLog, HasAPositionForEachThread) {
  NS_CORBA::LogPosition* other = nullptr;
  std::thread([&] { other = NS_CORBA::GetTss(); }).join();
  EXPECT_NE(other, nullptr);
  EXPECT_NE(other, NS_CORBA::GetTss());
}

}  // namespace
