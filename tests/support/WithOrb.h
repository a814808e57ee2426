// For tests that work with what an ORB must be there for: texts in an Any, among others.

#ifndef TESTS_SUPPORT_WITHORB_H
#define TESTS_SUPPORT_WITHORB_H

#include <gtest/gtest.h>

#include <memory>

#include "orb/orb.h"

namespace support {

class WithOrb : public testing::Test {
 private:
  const std::unique_ptr<orb::Orb> orb_ = orb::startClient({});
};

}  // namespace support

#endif
