#include "agent/access/AccessRules.h"

#include <algorithm>
#include <map>
#include <sstream>
#include <string_view>
#include <utility>

#include "agent/base/PrintableText.h"
#include "agent/process/ReadFile.h"

namespace agent {
namespace {

constexpr std::size_t kLargestFile = std::size_t{1} << 20;
constexpr std::string_view kBlanks = " \t\r\f\v";

using Transport = orb::Peer::Transport;

// Rejects devices, pipes and sockets: the thread that receives the stop signals reads the file
// after SIGHUP and must not block. readFile() reports missing files and folders.
void requireNoPipe(const std::filesystem::path& file) {
  std::error_code ignored;
  const std::filesystem::file_status status = std::filesystem::status(file, ignored);
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status) &&
      !std::filesystem::is_directory(status)) {
    throw FileError(file.string() + ": is not a regular file");
  }
}

}  // namespace

// The words of one line. A function throws std::invalid_argument with a clause about the line.
class AccessRules::LineParser {
 public:
  explicit LineParser(std::string_view line) : rest_(line) { skipBlanks(); }

  // Whether nothing but a comment is left.
  bool atEnd() const { return rest_.empty() || rest_.front() == '#'; }

  Rule rule() {
    Rule rule;
    const std::string clients = word();
    const auto kind = kinds().find(clients);
    if (kind == kinds().end()) {
      throw std::invalid_argument(inQuotes(clients) +
                                  " is not subject, certificate, address, loopback or unix");
    }
    rule.kind = kind->second;
    if (rule.kind == Kind::kSubject) {
      rule.subject = quotedText();
    } else if (rule.kind == Kind::kAddress) {
      rule.range = AddressRange::parse(printable(word()));
    }
    rule.roles = roles();
    return rule;
  }

 private:
  static const std::map<std::string, Kind, std::less<>>& kinds() {
    static const std::map<std::string, Kind, std::less<>> kinds = {
        {"subject", Kind::kSubject},
        {"certificate", Kind::kCertificate},
        {"address", Kind::kAddress},
        {"loopback", Kind::kLoopback},
        {"unix", Kind::kUnix}};
    return kinds;
  }

  void skipBlanks() {
    rest_.remove_prefix(std::min(rest_.find_first_not_of(kBlanks), rest_.size()));
  }

  // The text up to the next blank; "" at the end.
  std::string word() {
    const std::size_t size = atEnd() ? 0 : std::min(rest_.find_first_of(kBlanks), rest_.size());
    std::string result(rest_.substr(0, size));
    rest_.remove_prefix(size);
    skipBlanks();
    return result;
  }

  // A backslash and the next character belong to the text, as in RFC 4514.
  std::string quotedText() {
    if (rest_.empty() || rest_.front() != '"') {
      throw std::invalid_argument("subject needs a text in double quotes");
    }
    std::size_t end = 1;
    while (end < rest_.size() && rest_[end] != '"') {
      end += rest_[end] == '\\' ? 2 : 1;
    }
    if (end >= rest_.size()) {
      throw std::invalid_argument("the subject has no closing quote");
    }
    std::string result(rest_.substr(1, end - 1));
    if (result.empty()) {
      throw std::invalid_argument("the subject is empty");
    }
    rest_.remove_prefix(end + 1);
    skipBlanks();
    return result;
  }

  Roles roles() {
    if (atEnd()) {
      throw std::invalid_argument("the rule has no roles: read, write, operate or none");
    }
    Roles roles;
    bool isNone = false;
    bool isFirst = true;
    while (!atEnd()) {
      const std::string name = word();
      if (isNone || (name == "none" && !isFirst)) {
        throw std::invalid_argument("none cannot be combined with roles");
      }
      isNone = name == "none";
      roles = isNone ? roles : withRole(roles, name);
      isFirst = false;
    }
    return roles;
  }

  static Roles withRole(Roles roles, const std::string& name) {
    static const std::map<std::string, Role, std::less<>> known = {
        {"read", Role::kRead}, {"write", Role::kWrite}, {"operate", Role::kOperate}};
    const auto role = known.find(name);
    if (role == known.end()) {
      throw std::invalid_argument(inQuotes(name) + " is not a role: read, write, operate or none");
    }
    if (roles.has(role->second)) {
      throw std::invalid_argument("the role " + name + " is there twice");
    }
    return roles.with(role->second);
  }

  std::string_view rest_;
};

AccessRules::AccessRules()
    : rules_{{Kind::kLoopback, "", std::nullopt, Roles::all()},
             {Kind::kUnix, "", std::nullopt, Roles::all()},
             {Kind::kCertificate, "", std::nullopt, Roles().with(Role::kRead)}} {}

AccessRules AccessRules::read(const std::filesystem::path& file) {
  try {
    requireNoPipe(file);
    return parse(file.string(), readFile(file, kLargestFile));
  } catch (const FileError& failure) {
    throw AccessFileError(failure.what());
  }
}

AccessRules AccessRules::parse(const std::string& name, const std::string& content) {
  AccessRules result;
  result.rules_.clear();
  Lines lines;
  std::istringstream text(content);
  std::string line;
  for (std::size_t number = 1; std::getline(text, line); ++number) {
    try {
      LineParser parser(line);
      if (!parser.atEnd()) {
        result.rules_.push_back(parser.rule());
        requireOtherClients(result.rules_.back(), number, lines);
      }
    } catch (const std::invalid_argument& problem) {
      throw AccessFileError(name + ":" + std::to_string(number) + ": " + problem.what());
    }
  }
  if (result.rules_.empty()) {
    throw AccessFileError(name + ": there is no rule, so nobody would have access");
  }
  return result;
}

// Throws std::invalid_argument if an earlier line has a rule for the same clients. Adds the line to
// `lines` otherwise.
void AccessRules::requireOtherClients(const Rule& rule, std::size_t line, Lines& lines) {
  const auto [earlier, isFirst] = lines.try_emplace({rule.kind, rule.subject, rule.range}, line);
  if (!isFirst) {
    throw std::invalid_argument("line " + std::to_string(earlier->second) +
                                " has a rule for the same clients");
  }
}

Roles AccessRules::rolesOf(const orb::Peer& peer) const {
  const std::optional<IpAddress> address = IpAddress::parse(peer.address);
  for (const Rule& rule : rules_) {
    if (matches(rule, peer, address)) {
      return rule.roles;
    }
  }
  return {};
}

bool AccessRules::matches(const Rule& rule, const orb::Peer& peer,
                          const std::optional<IpAddress>& address) {
  const bool isVerified = peer.transport == Transport::kTls && !peer.subject.empty();
  const bool isPlain = peer.transport == Transport::kTcp && address;
  switch (rule.kind) {
    case Kind::kSubject:
      return isVerified && peer.subject == rule.subject;
    case Kind::kCertificate:
      return isVerified;
    case Kind::kAddress:
      return isPlain && rule.range->contains(*address);
    case Kind::kLoopback:
      return isPlain && address->isLoopback();
    case Kind::kUnix:
      break;
  }
  return peer.transport == Transport::kUnix;
}

}  // namespace agent
