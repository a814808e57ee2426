// A fixture for tests that need an ORB, for example to put a text into an Any.

#ifndef TESTS_SUPPORT_WITHORB_H
#define TESTS_SUPPORT_WITHORB_H

#include <gtest/gtest.h>

#include <memory>

#include "orb/orb.h"

namespace support {

// Thread-safety: the test thread only. Owns the ORB. Throws CORBA exceptions.
class WithOrb : public testing::Test {
 private:
  const std::unique_ptr<orb::Orb> orb_ = orb::startClient({});
};

}  // namespace support

#endif
