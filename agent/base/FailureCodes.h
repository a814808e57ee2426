// The failure codes of the agent, as return values of contract functions and in ProcessExceptions.
//
// The codes are distinct from the codes 0x4118xxxx of the platform, and fit a signed 32-bit
// integer. host/Failures.cpp maps each code to an exception type.

#ifndef AGENT_BASE_FAILURECODES_H
#define AGENT_BASE_FAILURECODES_H

#include <cstdint>

namespace agent {

enum FailureCode : std::uint32_t {
  kSuccess = 0,
  kNotImplemented = 0x42540001,    // the operation is not offered
  kInternalError = 0x42540002,     // the agent failed: store, memory, ORB
  kInvalidName = 0x42540003,       // a malformed name, number or id
  kEntityNotFound = 0x42540004,    // a well-formed name without an object
  kUserLabelInUse = 0x42540005,    // another object has the unique label
  kTooManyIterators = 0x42540006,  // the limit of result iterators is reached
  kAlreadyExists = 0x42540007,     // an object with this id exists
  kTooMuch = 0x42540008,           // more than a limit of number or size
  kInvalidInput = 0x42540009,      // a malformed argument other than an object name
};

}  // namespace agent

#endif
