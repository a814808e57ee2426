// The limit of file descriptors, and its share for incoming connections.
//
// Thread-safety: any thread; raiseDescriptorLimit at start only. Errors: none.

#ifndef AGENT_PROCESS_DESCRIPTORS_H
#define AGENT_PROCESS_DESCRIPTORS_H

#include <cstddef>

namespace agent {

// Raises the soft limit of file descriptors to the hard limit. A failure changes nothing.
void raiseDescriptorLimit();

// The present soft limit of file descriptors.
std::size_t descriptorLimit();

// The limit for incoming connections: `wanted`, reduced so that enough of `descriptors` remain for
// the store, files and outgoing connections. At least 1.
std::size_t connectionsWithin(std::size_t descriptors, std::size_t wanted);

}  // namespace agent

#endif
