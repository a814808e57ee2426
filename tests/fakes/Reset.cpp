#include "fakes/Events.h"
#include "fakes/Fixture.h"

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
