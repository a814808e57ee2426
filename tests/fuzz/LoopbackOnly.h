// Restricts the connections of the process.

#ifndef TESTS_FUZZ_LOOPBACKONLY_H
#define TESTS_FUZZ_LOOPBACKONLY_H

#include <cstdint>

namespace fuzz {

// Allows connections to this TCP port of 127.0.0.1. All other TCP connections are refused, and
// names of hosts are not resolved. Thread-safety: any thread. Owns nothing. Errors: none.
void allowOnlyPort(std::uint16_t port);

}  // namespace fuzz

#endif
