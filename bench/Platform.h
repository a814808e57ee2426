// The host of the measured module. Each program links one of two implementations: the tests' fakes,
// which record every call, or the agent's definitions of the contracts, as in production.

#ifndef BENCH_PLATFORM_H
#define BENCH_PLATFORM_H

#include <memory>

#include "agent/network/Network.h"

namespace bench {

// Publishes a domain with this network, and the utility for names. The destructor withdraws both.
// One at a time.
class Platform {
 public:
  explicit Platform(agent::Network network);
  ~Platform();
  Platform(const Platform&) = delete;
  Platform& operator=(const Platform&) = delete;

  // Clears the records of the fakes.
  void tidy();

 private:
  class Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace bench

#endif
