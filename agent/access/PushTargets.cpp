#include "agent/access/PushTargets.h"

#include <algorithm>
#include <optional>

#include "agent/base/PrintableText.h"
#include "agent/process/OwnAddresses.h"

namespace agent {
namespace {

using Kind = orb::Destination::Kind;
using Transport = orb::Peer::Transport;

bool isOnThisHost(const orb::Peer& client) {
  if (client.transport == Transport::kUnix || client.transport == Transport::kLocal) {
    return true;
  }
  const std::optional<IpAddress> address = IpAddress::parse(client.address);
  return address && address->isLoopback();
}

bool isOfThisHost(const IpAddress& address) {
  if (address.isLoopback()) {
    return true;
  }
  const std::vector<std::string> own = ownAddresses();
  return std::any_of(own.begin(), own.end(), [&address](const std::string& text) {
    return IpAddress::parse(text) == address;
  });
}

}  // namespace

std::string PushTargets::refusalOf(const std::vector<orb::Destination>& destinations,
                                   const orb::Peer& client) const {
  if (destinations.empty()) {
    return "the reference of the consumer has no address";
  }
  for (const orb::Destination& destination : destinations) {
    std::string refusal = refusalOf(destination, client);
    if (!refusal.empty()) {
      return refusal;
    }
  }
  return "";
}

std::string PushTargets::refusalOf(const orb::Destination& destination,
                                   const orb::Peer& client) const {
  const std::string host = inQuotes(destination.host);
  if (destination.kind == Kind::kUnix && isOnThisHost(client)) {
    return "";
  }
  if (destination.kind != Kind::kIp) {
    return "the consumer is at " + host + ", which is no address of its client";
  }
  const std::vector<std::string> addresses = orb::numericAddresses(destination.host);
  if (addresses.empty()) {
    return "the host " + host + " of the consumer is unknown";
  }
  for (const std::string& address : addresses) {
    if (!allows(address, client)) {
      return "the consumer is at " + host +
             ", which is neither the address of its client nor in a "
             "range of --push-to";
    }
  }
  return "";
}

bool PushTargets::allows(const std::string& text, const orb::Peer& client) const {
  const std::optional<IpAddress> address = IpAddress::parse(text);
  if (!address) {
    return false;
  }
  return IpAddress::parse(client.address) == address ||
         std::any_of(ranges_.begin(), ranges_.end(),
                     [&address](const AddressRange& range) { return range.contains(*address); }) ||
         (isOnThisHost(client) && isOfThisHost(*address));
}

}  // namespace agent
