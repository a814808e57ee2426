// Network files and networks for tests.

#ifndef TESTS_UNIT_AGENT_SUPPORT_NETWORKFILES_H
#define TESTS_UNIT_AGENT_SUPPORT_NETWORKFILES_H

#include <string>

#include "agent/base/OperationResult.h"
#include "agent/network/Network.h"

// The network of a reader that succeeded. Fails the test by an exception otherwise.
agent::Network valueOf(agent::Result<agent::Network> network);

// Reads a file with the given content and name.
agent::Network readText(const std::string& content, const std::string& name = "network.json");

// The reason why the reader rejects such a file, without the directory; empty for a valid file.
std::string refusalOf(const std::string& content, const std::string& name = "network.json");

// The native format around some fields: {"format":"topo-network/1",FIELDS}.
std::string withFormat(const std::string& fields);

// Ten million times a character.
std::string longText(char character);

// Every field of a network that can be stored, one record a line.
std::string describe(const agent::Network& network);

// A network with every kind of object, every field set and texts that are hard to store.
agent::Network sampleNetwork();

// A network of many subnetworks below one.
agent::Network wideNetwork(std::size_t nodes);

#endif
