// Fuzzes the parser of access files and the matching of clients.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "agent/access/AccessRules.h"
#include "tests/fuzz/Require.h"

namespace {

using agent::AccessRules;
using agent::AddressRange;
using agent::IpAddress;
using fuzz::require;
using Transport = orb::Peer::Transport;

// Returns no value for a malformed file, and the reason.
std::optional<AccessRules> rulesOf(const std::string& content, std::string& reason) {
  try {
    return AccessRules::parse("file", content);
  } catch (const agent::AccessFileError& problem) {
    reason = problem.what();
    fuzz::requirePrintable(reason);
    require(reason.rfind("file:", 0) == 0, "a reason does not name its file");
  }
  return std::nullopt;
}

orb::Peer peer(Transport transport, const std::string& address, const std::string& subject) {
  orb::Peer result;
  result.transport = transport;
  result.address = address;
  result.subject = subject;
  return result;
}

std::vector<orb::Peer> peersWith(const std::string& address, const std::string& subject) {
  return {
      peer(Transport::kTcp, address, ""),      peer(Transport::kTcp, "127.0.0.1", ""),
      peer(Transport::kTcp, "::1", ""),        peer(Transport::kTcp, "::ffff:10.1.2.3", ""),
      peer(Transport::kTls, address, subject), peer(Transport::kTls, address, "CN=noc,O=Operator"),
      peer(Transport::kUnix, "", "")};
}

// Checks that clients that no rule may match have no roles.
void checkClientsWithoutRoles(const AccessRules& rules, const std::string& address) {
  require(rules.rolesOf(peer(Transport::kTls, address, "")).empty(),
          "a client without a verified certificate has roles");
  require(rules.rolesOf(peer(Transport::kTcp, "not an address", "")).empty(),
          "a client without an address has roles");
  require(rules.rolesOf(peer(Transport::kLocal, "", "")).empty(), "a local call has roles");
}

// Checks that comments, blank lines and later rules do not change the result of a rule.
void checkLines(const std::string& content, const AccessRules& rules,
                const std::vector<orb::Peer>& peers) {
  std::string reason;
  const auto same = rulesOf("# comment\n \t\n" + content + "\n  # comment", reason);
  require(same.has_value(), "a comment makes a file invalid");
  for (const orb::Peer& client : peers) {
    require(same->rolesOf(client) == rules.rolesOf(client), "a comment changes the roles");
  }
  require(!rulesOf(content + "\n" + content, reason), "two rules for the same clients");
  reason.clear();
  const auto longer = rulesOf(content + "\nsubject \"\\\"a later line\" read\n", reason);
  for (const orb::Peer& client : peers) {
    require(!longer || longer->rolesOf(client) == rules.rolesOf(client),
            "a later line changes the roles");
  }
}

void checkRange(const std::string& text) {
  const auto address = IpAddress::parse(text.substr(0, text.find('/')));
  try {
    const AddressRange range = AddressRange::parse(text);
    require(address && range.contains(*address), "a range does not contain its first address");
  } catch (const std::invalid_argument&) {
    require(!address || text.find_first_of("/%") != std::string::npos, "an address is no range");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const std::string address = input.ConsumeRandomLengthString(64);
  const std::string subject = input.ConsumeRandomLengthString(256);
  const std::string content = input.ConsumeRemainingBytesAsString();
  checkRange(address);
  std::string reason;
  const std::optional<AccessRules> rules = rulesOf(content, reason);
  require(rules.has_value() == reason.empty(), "a file has rules and a reason, or neither");
  if (rules) {
    checkClientsWithoutRoles(*rules, address);
    checkLines(content, *rules, peersWith(address, subject));
  }
  return 0;
}
