#include "tests/fakes/Events.h"
#include "tests/fakes/Fixture.h"

namespace fakes {

void resetAll() {
  resetAgent();
  resetBundles();
  resetDomain();
  resetCorbaUtil();
  resetEvents();
  resetJournal();
}

}  // namespace fakes
