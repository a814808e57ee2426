#include "client/commands/Commands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "client/commandline/CommandSyntax.h"

namespace topoctl {
namespace {

using testing::UnorderedElementsAreArray;

TEST(Commands, MatchTheSyntaxTable) {
  std::vector<std::string> inSyntax;
  for (const CommandSyntax& row : commandSyntax()) {
    inSyntax.emplace_back(row.name);
  }
  std::vector<std::string> runnable;
  for (const Command& row : commands()) {
    runnable.emplace_back(row.name);
  }
  EXPECT_THAT(runnable, UnorderedElementsAreArray(inSyntax));
}

TEST(Commands, HaveExactlyOneFunction) {
  for (const Command& row : commands()) {
    EXPECT_NE(row.call == nullptr, row.stream == nullptr) << row.name;
  }
}

}  // namespace
}  // namespace topoctl
