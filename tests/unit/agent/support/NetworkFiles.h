// Network files and networks for tests.

#ifndef TESTS_UNIT_AGENT_SUPPORT_NETWORKFILES_H
#define TESTS_UNIT_AGENT_SUPPORT_NETWORKFILES_H

#include <cstdint>
#include <ostream>
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

// --- Expected networks.

NS_DOMAIN::TopoNode_T nodeOf(const std::string& id, const std::string& parent,
                             std::uint32_t type = NS_DOMAIN::kTopoSubnetwork,
                             const std::string& name = "");

NS_DOMAIN::ClockPositionInfo_T positionOf(const std::string& reference,
                                          const std::string& label = "", std::int32_t value1 = 0,
                                          std::int32_t value2 = 0);

NS_DOMAIN::ClockTopoLinkInfo_T linkOf(const std::string& id, const std::string& name = "",
                                      const std::string& aEnd = "", const std::string& zEnd = "");

namespace NS_DOMAIN {

// Compare the fields that a network file can set.
bool operator==(const TopoNode_T& left, const TopoNode_T& right);
bool operator==(const ClockPositionInfo_T& left, const ClockPositionInfo_T& right);
bool operator==(const ClockTopoLinkInfo_T& left, const ClockTopoLinkInfo_T& right);

}  // namespace NS_DOMAIN

namespace agent {

// Compare the fields that a network file can set.
bool operator==(const NetworkElement& left, const NetworkElement& right);
bool operator==(const ObjectLabel& left, const ObjectLabel& right);
bool operator==(const ObjectAttributes& left, const ObjectAttributes& right);
bool operator==(const Network& left, const Network& right);

// Prints one record a line.
void PrintTo(const Network& network, std::ostream* out);

}  // namespace agent

// A network with every kind of object, every field set and texts that are hard to store.
agent::Network sampleNetwork();

// A network of many subnetworks below one.
agent::Network wideNetwork(std::size_t nodes);

#endif
