// The failure codes of the agent, as return values of contract functions and in ProcessExceptions.
//
// The platform has the codes 0x4118xxxx. The codes of the agent are others, and fit a signed 32-bit
// integer. host/Failures.cpp maps each code to an exception type.

#ifndef AGENT_BASE_FAILURECODES_H
#define AGENT_BASE_FAILURECODES_H

#include <cstdint>

namespace agent {

enum FailureCode : std::uint32_t {
  kSuccess = 0,
  kNotImplemented = 0x42540001,    // the operation is not offered
  kInternalError = 0x42540002,     // the agent failed: store, memory, ORB
  kInvalidName = 0x42540003,       // a name, number or id that no object can have
  kEntityNotFound = 0x42540004,    // a well-formed name of nothing
  kUserLabelInUse = 0x42540005,    // another object has the label that must be unique
  kTooManyIterators = 0x42540006,  // as many result iterators live as may
  kAlreadyExists = 0x42540007,     // an object with this id is there already
  kTooMuch = 0x42540008,           // a limit of number or size would be exceeded
  kInvalidInput = 0x42540009,      // a malformed argument other than an object name
};

}  // namespace agent

#endif
