// The file descriptors of the process, and how many of them clients may have.

#ifndef AGENT_PROCESS_DESCRIPTORS_H
#define AGENT_PROCESS_DESCRIPTORS_H

#include <cstddef>

namespace agent {

// Raises the soft limit of file descriptors to the hard one; a failure leaves it as it is.
void raiseDescriptorLimit();

// The soft limit of file descriptors at present.
std::size_t descriptorLimit();

// How many of the wanted incoming connections there may be at once, at least 1: what they leave of
// the limit is enough for the store, files and outgoing connections.
std::size_t connectionsWithin(std::size_t descriptors, std::size_t wanted);

}  // namespace agent

#endif
