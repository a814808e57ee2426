#include "tests/fakes/Events.h"
#include "tests/fakes/Fixture.h"

namespace fakes {

void resetAll() {
  resetAgent();
  resetBundles();
  resetDomain();
  resetNaming();
  resetEvents();
  resetJournal();
}

}  // namespace fakes
