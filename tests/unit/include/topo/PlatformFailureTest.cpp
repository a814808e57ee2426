#include "topo/PlatformFailure.h"

#include <string>
#include <vector>

#include "tests/fakes/Fixture.h"

namespace {

using Lines = std::vector<std::string>;

constexpr topo::LogSite kSite{"topomanagementmgr", 77};

class TopoPlatformFailure : public fakes::Fixture {};

TEST_F(TopoPlatformFailure, HasTheFailureAndItsPosition) {
  ProcessException failure;
  topo::reportFailure(failure, kSite, 5, "message");
  EXPECT_EQ(failure.errorCode, 5);
  EXPECT_EQ(failure.file.str(), "topomanagementmgr");
  EXPECT_EQ(failure.function.str(), "unknown");
  EXPECT_EQ(failure.line, 77);
  EXPECT_EQ(failure.detail.str(), "ErrCode:5,Detail:message");
  EXPECT_EQ(failure.context.str(), "");
}

TEST_F(TopoPlatformFailure, IsReportedToTheAgentAtItsPosition) {
  topo::setLogPosition({"toposvc", 33});
  ProcessException failure;
  topo::reportFailure(failure, kSite, 5, "message");
  EXPECT_EQ(fakes::Journal::lines(), Lines{"NbiException(5) at topomanagementmgr:77 unknown"});
}

TEST_F(TopoPlatformFailure, IsCompleteWhenItIsReported) {
  ProcessException failure;
  std::string detail;
  fakes::onCall("NbiException", 1, [&]() -> CORBA::ULong {
    detail = failure.detail.str();
    return 0;
  });
  topo::reportFailure(failure, kSite, -5, "");
  EXPECT_EQ(detail, "ErrCode:-5,Detail:");
}

}  // namespace
