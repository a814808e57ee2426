#include "conformance/Selection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using conformance::Selection;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(ConformanceSelection, HasAllRulesWithoutNames) {
  const Selection all;
  EXPECT_TRUE(all.has("views.unique"));
  EXPECT_TRUE(all.needsProbe());
  EXPECT_EQ(all.list(), "");
  EXPECT_THAT(all.missing({}), IsEmpty());
}

TEST(ConformanceSelection, HasTheNamedRulesOnly) {
  const Selection some({"views.unique", "host.end"});
  EXPECT_TRUE(some.has("host.end"));
  EXPECT_FALSE(some.has("host"));
  EXPECT_FALSE(some.has("views.records"));
  EXPECT_EQ(some.list(), "host.end,views.unique");
  EXPECT_THAT(some.missing({"host.end", "probe.load"}), ElementsAre("views.unique"));
}

TEST(ConformanceSelection, AddsTheRulesThatANamedRuleNeeds) {
  EXPECT_TRUE(Selection({"unload.iterators"}).has("reload.failed-init"));
  EXPECT_TRUE(Selection({"unload.fini"}).has("unload.servants"));
  EXPECT_FALSE(Selection({"unload.servants"}).has("unload.fini"));
}

TEST(ConformanceSelection, NeedsTheProbeForRulesThatAreNotCheckedWithTheModule) {
  EXPECT_FALSE(Selection({"views.unique", "reload.mapped"}).needsProbe());
  EXPECT_TRUE(Selection({"views.unique", "event.serial"}).needsProbe());
  EXPECT_TRUE(Selection({"log.calls"}).needsProbe());
}

}  // namespace
