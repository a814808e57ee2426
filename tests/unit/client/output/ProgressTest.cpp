#include "client/output/Progress.h"

#include <gtest/gtest.h>

#include <sstream>

namespace topoctl {
namespace {

TEST(Progress, WritesOverItselfOnATerminalAndIsGoneAtTheEnd) {
  std::ostringstream err;
  {
    Progress progress(err, true);
    progress.show(3000);
    EXPECT_EQ(err.str(), "\r 3000 records");
    progress.show(10000);
    EXPECT_EQ(err.str(), "\r 3000 records\r 10000 records");
  }
  EXPECT_EQ(err.str(), "\r 3000 records\r 10000 records\r" + std::string(14, ' ') + "\r");
}

TEST(Progress, WritesNothingWhereThereIsNoTerminal) {
  std::ostringstream err;
  {
    Progress progress(err, false);
    progress.show(3000);
  }
  EXPECT_EQ(err.str(), "");
}

TEST(Progress, WritesNothingWhenThereWasNothingToShow) {
  std::ostringstream err;
  { const Progress progress(err, true); }
  EXPECT_EQ(err.str(), "");
}

}  // namespace
}  // namespace topoctl
