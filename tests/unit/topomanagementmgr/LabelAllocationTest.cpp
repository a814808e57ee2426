// The user label map when memory is short.

#include <gtest/gtest.h>

#include <new>
#include <string>

#include "platform/domain/DomainRecords.h"
#include "tests/fakes/FailingNew.h"
#include "tests/support/TemporaryDirectory.h"
#include "topomanagementmgr/UserlabelMap.h"

namespace {

TEST(TopoLabelAllocation, PassesTheFailureOfALongLineAndKeepsEarlierLines) {
  constexpr std::size_t kLong = 100000;  // bytes; more than the buffer of the stream
  const support::TemporaryDirectory dir;
  const std::string file = dir.file("labels.txt");
  dir.write("labels.txt", "a;1\nb;" + std::string(kLong, 'x') + "\nc;3\n");
  UserlabelMap<NS_DOMAIN::TopoNode_T> map(file);
  std::string value;
  {
    const fakes::FailingNew failing(0, kLong / 4);
    EXPECT_THROW(map.GetValue(value, "c"), std::bad_alloc);
    EXPECT_GT(fakes::FailingNew::failures(), 0);
  }
  EXPECT_EQ(value, "");
  map.GetValue(value, "c");
  EXPECT_EQ(value, "3");
  dir.write("labels.txt", "");
  map.GetValue(value, "a");
  EXPECT_EQ(value, "1");
}

TEST(TopoLabelAllocation, PassesTheFailureOfEveryAllocation) {
  const support::TemporaryDirectory dir;
  const std::string file = dir.file("labels.txt");
  const std::string key(100, 'k');
  dir.write("labels.txt", key + ";" + std::string(100, 'v') + "\n");
  const std::string expected(100, 'v');
  int spared = 0;
  std::string value;
  while (value.empty()) {
    UserlabelMap<NS_DOMAIN::TopoNode_T> map(file);
    bool passed = false;
    {
      const fakes::FailingNew failing(spared);
      try {
        map.GetValue(value, key);
      } catch (const std::bad_alloc&) {
        passed = true;
      }
    }
    ASSERT_EQ(passed, fakes::FailingNew::failures() != 0) << spared;
    ++spared;
  }
  EXPECT_EQ(value, expected);
  EXPECT_GT(spared, 3);
}

}  // namespace
