// Base classes of test fixtures that use the fakes.

#ifndef TESTS_FAKES_FIXTURE_H
#define TESTS_FAKES_FIXTURE_H

#include <gtest/gtest.h>

#include "tests/fakes/Agent.h"
#include "tests/fakes/Bundles.h"
#include "tests/fakes/CorbaUtil.h"
#include "tests/fakes/Domain.h"
#include "tests/fakes/Journal.h"

namespace fakes {

// Resets every fake: no published interface, an empty network, no planned step.
void resetAll();

// Resets the fakes before and after each test. Thread-safety: the test thread only. Owns the state
// of the fakes. Never fails.
class Fixture : public ::testing::Test {
 protected:
  Fixture() { resetAll(); }
  ~Fixture() override { resetAll(); }
};

// Also publishes the three interfaces that the module looks up. Thread-safety, ownership and
// errors: as Fixture.
class PlatformFixture : public Fixture {
 protected:
  PlatformFixture() { publishPlatform(); }
};

}  // namespace fakes

#endif
