// What the module's views run on. There are two of them, one a program: the tests' fakes, which
// note down every call, and the agent's own, which is what a view has in production.

#ifndef BENCH_PLATFORM_H
#define BENCH_PLATFORM_H

#include <memory>

#include "agent/network/Network.h"

namespace bench {

// Publishes a domain with this network, and its naming, for as long as it lives. One at a time.
class Platform {
 public:
  explicit Platform(agent::Network network);
  ~Platform();
  Platform(const Platform&) = delete;
  Platform& operator=(const Platform&) = delete;

  // Forgets what has piled up.
  void tidy();

 private:
  class Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace bench

#endif
