#include "agent/access/PushTargets.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <tuple>

#include "agent/base/PrintableText.h"
#include "agent/process/OwnAddresses.h"

namespace agent {
namespace {

using Kind = orb::Destination::Kind;
using Transport = orb::Peer::Transport;

// The limits of a reference. A name server may be slow, and a stop of the agent waits for look-ups.
constexpr std::size_t kMostAddresses = 100;
constexpr std::ptrdiff_t kMostNames = 2;

bool isName(const orb::Destination& destination) {
  return destination.kind == Kind::kIp && !IpAddress::parse(destination.host);
}

bool isLess(const orb::Destination& a, const orb::Destination& b) {
  return std::tie(a.kind, a.host) < std::tie(b.kind, b.host);
}

bool isSame(const orb::Destination& a, const orb::Destination& b) {
  return a.kind == b.kind && a.host == b.host;
}

// The destinations without duplicates. A reference repeats a host for each transport.
std::vector<orb::Destination> distinct(std::vector<orb::Destination> destinations) {
  std::sort(destinations.begin(), destinations.end(), isLess);
  destinations.erase(std::unique(destinations.begin(), destinations.end(), isSame),
                     destinations.end());
  return destinations;
}

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
  if (destinations.size() > kMostAddresses) {
    return "the reference of the consumer has more than " + std::to_string(kMostAddresses) +
           " addresses";
  }
  const std::vector<orb::Destination> hosts = distinct(destinations);
  if (std::count_if(hosts.begin(), hosts.end(), isName) > kMostNames) {
    return "the reference of the consumer has more than " + std::to_string(kMostNames) +
           " host names";
  }
  for (const orb::Destination& destination : hosts) {
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
