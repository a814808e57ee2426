// The rules that give roles to clients.

#ifndef AGENT_ACCESS_ACCESSRULES_H
#define AGENT_ACCESS_ACCESSRULES_H

#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "agent/access/AddressRange.h"
#include "agent/access/Roles.h"
#include "orb/orb.h"

namespace agent {

// An access file cannot be used. what() is "FILE:LINE: REASON" or "FILE: REASON".
// Thread-safety, ownership and errors: as std::runtime_error.
class AccessFileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A list of rules. The first rule that matches a client gives the client's roles; a client without
// a rule has no role. Only rules for certificates match a client on TLS; rules for addresses and
// the loopback never match such a client.
//
// Thread-safety, ownership and errors: a plain value.
class AccessRules {
 public:
  // The rules without an access file: the plain loopback and Unix sockets have all roles, a
  // verified certificate has kRead.
  AccessRules();

  // Reads an access file. Each line is a rule: the clients, and then their roles (read, write,
  // operate), or the word none. The clients are one of:
  //   subject "CN=noc,O=Operator"   a verified certificate with this subject (RFC 4514)
  //   certificate                   every verified certificate that has a subject
  //   address 10.1.0.0/16           plain connections from these addresses
  //   loopback                      plain connections from 127.0.0.0/8 and ::1
  //   unix                          connections to a Unix socket
  // A # outside of quotes begins a comment. Throws AccessFileError, also for a rule that an earlier
  // line has already, for a file without rules, and for a file of more than 1 MiB.
  static AccessRules read(const std::filesystem::path& file);

  // As read(), from the content of an access file. name: the FILE in what() of failures.
  static AccessRules parse(const std::string& name, const std::string& content);

  // A peer of kLocal has no roles: calls within the process need none.
  Roles rolesOf(const orb::Peer& peer) const;

 private:
  enum class Kind { kSubject, kCertificate, kAddress, kLoopback, kUnix };

  struct Rule {
    Kind kind = Kind::kUnix;
    std::string subject;
    std::optional<AddressRange> range;
    Roles roles;
  };

  // The line of each rule of a file, by the clients of the rule.
  using Lines = std::map<std::tuple<Kind, std::string, std::optional<AddressRange>>, std::size_t>;

  class LineParser;

  static bool matches(const Rule& rule, const orb::Peer& peer,
                      const std::optional<IpAddress>& address);
  static void requireOtherClients(const Rule& rule, std::size_t line, Lines& lines);

  std::vector<Rule> rules_;
};

}  // namespace agent

#endif
