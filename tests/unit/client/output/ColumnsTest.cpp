// The widths of columns that must fit into a line.

#include "client/output/Columns.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace topoctl {
namespace {

using testing::ElementsAre;

// The first column, a column of texts and a column of numbers with a long header.
const std::vector<Column> kColumns = {{4, 40, false}, {4, 30, false}, {12, 3, true}};

TEST(Columns, AreAsWideAsTheirContentWhenTheLineHasRoom) {
  EXPECT_THAT(fitColumns(kColumns, 40 + 2 + 30 + 2 + 12), ElementsAre(40, 30, 12));
}

TEST(Columns, AreCutInTheOrderOfTheirImportance) {
  EXPECT_THAT(fitColumns(kColumns, 40 + 2 + 29 + 2 + 12), ElementsAre(40, 29, 12));
  EXPECT_THAT(fitColumns(kColumns, 40 + 2 + 16 + 2 + 12), ElementsAre(40, 16, 12));
  EXPECT_THAT(fitColumns(kColumns, 40 + 2 + 16 + 2 + 11), ElementsAre(40, 16, 11));
  EXPECT_THAT(fitColumns(kColumns, 40 + 2 + 15 + 2 + 5), ElementsAre(40, 15, 5));
  EXPECT_THAT(fitColumns(kColumns, 39 + 2 + 8 + 2 + 5), ElementsAre(39, 8, 5));
}

TEST(Columns, KeepTheirMinimaInANarrowLine) {
  EXPECT_THAT(fitColumns(kColumns, 1), ElementsAre(8, 8, 5));
  EXPECT_THAT(fitColumns({{3, 40, false}, {3, 10, true}}, 1), ElementsAre(8, 10));
}

}  // namespace
}  // namespace topoctl
