// Writes networks in the native format (docs/formats.md).

#ifndef AGENT_FORMATS_JSONEXPORT_H
#define AGENT_FORMATS_JSONEXPORT_H

#include <string>

#include "agent/network/Network.h"

namespace agent {

// A network file with every record of the network, one on each line. Reading the file gives an
// equal network. Fields that are not stored are left out.
//
// Thread-safety: any thread. Errors: a std::exception for a text that is not UTF-8, and
// std::bad_alloc.
std::string writeJsonNetwork(const Network& network);

}  // namespace agent

#endif
