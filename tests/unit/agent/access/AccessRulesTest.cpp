#include "agent/access/AccessRules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>

#include "tests/support/TemporaryDirectory.h"

namespace agent {
namespace {

using orb::Peer;
using testing::EndsWith;
using Transport = Peer::Transport;

constexpr Roles kNone;
constexpr Roles kReader = Roles().with(Role::kRead);
constexpr Roles kWriter = kReader.with(Role::kWrite);

Peer plain(const std::string& address) {
  return {Transport::kTcp, address, "", 0};
}

Peer tls(const std::string& subject, const std::string& address = "192.0.2.1") {
  return {Transport::kTls, address, subject, 0};
}

const Peer kUnixPeer{Transport::kUnix, "", "", 0};

AccessRules parse(const std::string& text) {
  const support::TemporaryDirectory directory;
  return AccessRules::read(directory.write("access", text));
}

// The problem of a file, without the path.
std::string problemOf(const std::string& text) {
  const support::TemporaryDirectory directory;
  const std::string file = directory.write("access", text);
  try {
    AccessRules::read(file);
  } catch (const AccessFileError& failure) {
    const std::string problem = failure.what();
    EXPECT_EQ(0U, problem.find(file + ":")) << problem;
    return problem.substr(file.size() + 1);
  }
  return "";
}

TEST(AccessRules, GiveTheLoopbackAllRolesByDefault) {
  EXPECT_EQ(Roles::all(), AccessRules().rolesOf(plain("127.0.0.1")));
  EXPECT_EQ(Roles::all(), AccessRules().rolesOf(plain("::1")));
  EXPECT_EQ(Roles::all(), AccessRules().rolesOf(plain("::ffff:127.0.0.1")));
}

TEST(AccessRules, GiveUnixSocketsAllRolesByDefault) {
  EXPECT_EQ(Roles::all(), AccessRules().rolesOf(kUnixPeer));
}

TEST(AccessRules, LetVerifiedCertificatesReadByDefault) {
  EXPECT_EQ(kReader, AccessRules().rolesOf(tls("CN=noc")));
}

TEST(AccessRules, GiveOthersNothingByDefault) {
  EXPECT_EQ(kNone, AccessRules().rolesOf(plain("192.0.2.1")));
  EXPECT_EQ(kNone, AccessRules().rolesOf(plain("")));
  EXPECT_EQ(kNone, AccessRules().rolesOf(tls("")));
  EXPECT_EQ(kNone, AccessRules().rolesOf(Peer()));
}

TEST(AccessRules, JudgeTlsByTheCertificateEvenOnTheLoopback) {
  EXPECT_EQ(kNone, AccessRules().rolesOf(tls("", "127.0.0.1")));
  EXPECT_EQ(kReader, AccessRules().rolesOf(tls("CN=noc", "127.0.0.1")));
  const AccessRules rules = parse("address 0.0.0.0/0 read write\nloopback operate\n");
  EXPECT_EQ(kNone, rules.rolesOf(tls("CN=noc", "127.0.0.1")));
  EXPECT_EQ(kNone, rules.rolesOf(tls("", "192.0.2.1")));
}

TEST(AccessRules, DoNotTrustASubjectWithoutTls) {
  Peer peer = plain("192.0.2.1");
  peer.subject = "CN=noc";
  EXPECT_EQ(kNone, parse("subject \"CN=noc\" read\ncertificate read\n").rolesOf(peer));
}

TEST(AccessRules, OfAFileReplaceTheDefaults) {
  const AccessRules rules = parse("address 10.1.0.0/16 read\n");
  EXPECT_EQ(kReader, rules.rolesOf(plain("10.1.2.3")));
  EXPECT_EQ(kNone, rules.rolesOf(plain("127.0.0.1")));
  EXPECT_EQ(kNone, rules.rolesOf(kUnixPeer));
  EXPECT_EQ(kNone, rules.rolesOf(tls("CN=noc")));
}

TEST(AccessRules, MatchEachKindOfClient) {
  const AccessRules rules = parse(
      "# the operators\n"
      "\n"
      "subject \"CN=noc,O=Operator\" read write\t# two roles\n"
      "  certificate read\r\n"
      "address 2001:db8::/32 read write\n"
      "address 192.0.2.7 read\n"
      "loopback read write operate\n"
      "unix none");
  EXPECT_EQ(kWriter, rules.rolesOf(tls("CN=noc,O=Operator")));
  EXPECT_EQ(kReader, rules.rolesOf(tls("CN=noc,O=Other")));
  EXPECT_EQ(kWriter, rules.rolesOf(plain("2001:db8::7")));
  EXPECT_EQ(kReader, rules.rolesOf(plain("192.0.2.7")));
  EXPECT_EQ(kNone, rules.rolesOf(plain("192.0.2.8")));
  EXPECT_EQ(Roles::all(), rules.rolesOf(plain("127.0.0.1")));
  EXPECT_EQ(kNone, rules.rolesOf(kUnixPeer));
}

TEST(AccessRules, LetTheFirstMatchingRuleDecide) {
  const AccessRules rules = parse(
      "subject \"CN=old\" none\n"
      "certificate read\n"
      "address 10.1.2.0/24 none\n"
      "address 10.0.0.0/8 read\n");
  EXPECT_EQ(kNone, rules.rolesOf(tls("CN=old")));
  EXPECT_EQ(kReader, rules.rolesOf(tls("CN=new")));
  EXPECT_EQ(kNone, rules.rolesOf(plain("10.1.2.3")));
  EXPECT_EQ(kReader, rules.rolesOf(plain("10.1.3.3")));
}

TEST(AccessRules, KeepTheEscapesOfASubject) {
  const AccessRules rules = parse(R"(subject "CN=a\"b\,c # d" read)");
  EXPECT_EQ(kReader, rules.rolesOf(tls(R"(CN=a\"b\,c # d)")));
}

TEST(AccessRules, NameTheLineOfAProblem) {
  EXPECT_EQ("2: \"everybody\" is not subject, certificate, address, loopback or unix",
            problemOf("unix read\neverybody read\n"));
  EXPECT_EQ("1: '10.0.0.0/40' has no prefix length from 0 to 32",
            problemOf("address 10.0.0.0/40 read\n"));
  EXPECT_EQ("1: \"admin\" is not a role: read, write, operate or none", problemOf("unix admin"));
  EXPECT_EQ("1: the rule has no roles: read, write, operate or none", problemOf("unix # read"));
  EXPECT_EQ("1: the role read is there twice", problemOf("unix read read"));
  EXPECT_EQ("1: none cannot be combined with roles", problemOf("unix none read"));
  EXPECT_EQ("1: none cannot be combined with roles", problemOf("unix read none"));
  EXPECT_EQ("3: line 1 has a rule for the same clients",
            problemOf("address 10.0.0.0/8 read\n\naddress 10.0.0.0/8 write\n"));
}

TEST(AccessRules, RejectMalformedSubjects) {
  EXPECT_EQ("1: subject needs a text in double quotes", problemOf("subject CN=noc read"));
  EXPECT_EQ("1: subject needs a text in double quotes", problemOf("subject"));
  EXPECT_EQ("1: the subject has no closing quote", problemOf("subject \"CN=noc read"));
  EXPECT_EQ("1: the subject has no closing quote", problemOf("subject \"CN=noc\\"));
  EXPECT_EQ("1: the subject is empty", problemOf("subject \"\" read"));
  EXPECT_EQ("1: '' is not a numeric address or ADDRESS/LENGTH", problemOf("address"));
}

TEST(AccessRules, EscapeTheTextsOfAMalformedLine) {
  EXPECT_EQ("1: \"a\\x1b[31m\" is not subject, certificate, address, loopback or unix",
            problemOf("a\x1b[31m read"));
}

TEST(AccessRules, RejectAFileWithoutRules) {
  EXPECT_THAT(problemOf("# nobody\n"), EndsWith(" there is no rule, so nobody would have access"));
}

// A comparison of all pairs of rules would need more than 10 s of the processor.
TEST(AccessRules, OfALargeFileAreReadQuickly) {
  std::string text;
  for (int i = 0; i < 40000; ++i) {
    text += "address 10." + std::to_string(i >> 8) + "." + std::to_string(i & 255) + ".1 none\n";
  }
  const std::clock_t begin = std::clock();
  EXPECT_EQ("40001: line 1 has a rule for the same clients",
            problemOf(text + "address 10.0.0.1 read\n"));
  EXPECT_LT(std::clock() - begin, 10 * CLOCKS_PER_SEC);
}

TEST(AccessRules, RejectADevice) {
  try {
    AccessRules::read("/dev/null");
    ADD_FAILURE() << "read";
  } catch (const AccessFileError& failure) {
    EXPECT_STREQ("/dev/null: is not a regular file", failure.what());
  }
}

TEST(AccessRules, IgnoreTheCarriageReturnsOfAnEditor) {
  EXPECT_EQ(kReader, parse("# a comment\r\nloopback read\r\n\r\n").rolesOf(plain("127.0.0.1")));
}

TEST(AccessRules, RejectAFileThatCannotBeRead) {
  const support::TemporaryDirectory directory;
  EXPECT_THROW(AccessRules::read(directory.file("missing")), AccessFileError);
  EXPECT_THROW(AccessRules::read(directory.path()), AccessFileError);
}

}  // namespace
}  // namespace agent
