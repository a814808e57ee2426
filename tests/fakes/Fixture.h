// Base of test fixtures that use the fakes.

#ifndef TESTS_FAKES_FIXTURE_H
#define TESTS_FAKES_FIXTURE_H

#include <gtest/gtest.h>

#include "tests/fakes/Agent.h"
#include "tests/fakes/Bundles.h"
#include "tests/fakes/Domain.h"
#include "tests/fakes/Journal.h"
#include "tests/fakes/Naming.h"

namespace fakes {

// Puts every fake into its initial state: nothing published, an empty network, no plans.
void resetAll();

// Nothing of a test is left for the next one.
class Fixture : public ::testing::Test {
 protected:
  Fixture() { resetAll(); }
  ~Fixture() override { resetAll(); }
};

// The same with the three platform interfaces published.
class PlatformFixture : public Fixture {
 protected:
  PlatformFixture() { publishPlatform(); }
};

}  // namespace fakes

#endif
