#include "client/output/Progress.h"

#include <gtest/gtest.h>

#include <sstream>

namespace topoctl {
namespace {

TEST(Progress, OverwritesTheLineAndErasesTheLineAtTheEnd) {
  std::ostringstream err;
  {
    Progress progress(err, true);
    progress.update(3000);
    EXPECT_EQ(err.str(), "\r 3000 records");
    progress.update(10000);
    EXPECT_EQ(err.str(), "\r 3000 records\r 10000 records");
  }
  EXPECT_EQ(err.str(), "\r 3000 records\r 10000 records\r" + std::string(14, ' ') + "\r");
}

TEST(Progress, ErasesTheRestOfALongerLine) {
  std::ostringstream err;
  {
    Progress progress(err, true);
    progress.update(10000);
    progress.update(2);
    EXPECT_EQ(err.str(), "\r 10000 records\r 2 records    ");
  }
  EXPECT_EQ(err.str(), "\r 10000 records\r 2 records    \r" + std::string(14, ' ') + "\r");
}

TEST(Progress, WritesNothingWithoutATerminal) {
  std::ostringstream err;
  {
    Progress progress(err, false);
    progress.update(3000);
  }
  EXPECT_EQ(err.str(), "");
}

TEST(Progress, WritesNothingWithoutAnUpdate) {
  std::ostringstream err;
  { const Progress progress(err, true); }
  EXPECT_EQ(err.str(), "");
}

}  // namespace
}  // namespace topoctl
