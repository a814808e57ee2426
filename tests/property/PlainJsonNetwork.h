// The oracle of the reader of the native network format: one JSON value for each entry of a list,
// checked as a whole.

#ifndef TESTS_PROPERTY_PLAINJSONNETWORK_H
#define TESTS_PROPERTY_PLAINJSONNETWORK_H

#include <string_view>

#include "agent/network/Network.h"

namespace plain {

// As agent::readJsonNetwork(), with the same failures.
agent::Network readJsonNetwork(std::string_view text);

}  // namespace plain

#endif
