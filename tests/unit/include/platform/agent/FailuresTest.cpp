#include "platform/agent/Failures.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

TEST(PlatformFailureCodes, HaveTheConversionFailure) {
  static_assert(std::is_same_v<decltype(NS_CORBA::ERR_TOPO_CONVERSION), const CORBA::ULong>);
  EXPECT_EQ(NS_CORBA::ERR_TOPO_CONVERSION, 1092092090U);
  EXPECT_EQ(NS_CORBA::ERR_TOPO_CONVERSION, 0x411800BAU);
}

}  // namespace
