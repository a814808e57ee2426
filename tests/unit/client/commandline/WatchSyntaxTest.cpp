// The arguments of the command that prints notifications.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "client/commandline/Arguments.h"
#include "tests/unit/client/commandline/ParseLine.h"

namespace topoctl {
namespace {

using testing::HasSubstr;
using Words = std::vector<std::string>;

void expectListen(const std::string& text, const ListenAddress& expected) {
  const ListenAddress address = parseOptions({"watch", "--listen", text}, "").arguments.listen;
  EXPECT_EQ(address.host, expected.host) << text;
  EXPECT_EQ(address.port, expected.port) << text;
}

TEST(WatchSyntax, HasDefaults) {
  const Arguments arguments = parseOptions({"watch"}, "").arguments;
  EXPECT_EQ(arguments.listen.host, "127.0.0.1");
  EXPECT_EQ(arguments.listen.port, 0);
  EXPECT_EQ(arguments.count, 0U);
}

TEST(WatchSyntax, ReadsHostAndPort) {
  expectListen("ems1.example.net", {"ems1.example.net", 0});
  expectListen("10.0.0.1:0", {"10.0.0.1", 0});
  expectListen("10.0.0.1:65535", {"10.0.0.1", 65535});
  expectListen("[::1]", {"::1", 0});
  expectListen("[::1]:4711", {"::1", 4711});
}

TEST(WatchSyntax, RejectsOtherTextsAsHostAndPort) {
  for (const std::string text : {"", ":", ":4711", "host:", "host:x", "host:-1", "::1", "[::1",
                                 "[]", "[::1]4711", "[::1]:", "a b", "host:1:2", "a/b"}) {
    EXPECT_EQ(usageErrorOf({"watch", "--listen", text}),
              "--listen: '" + text + "' is not HOST or HOST:PORT, an IPv6 address in brackets");
  }
}

TEST(WatchSyntax, NamesTheRangeOfThePort) {
  for (const std::string port : {"65536", "99999", "00"}) {
    EXPECT_EQ(usageErrorOf({"watch", "--listen", "127.0.0.1:" + port}),
              "--listen: the port '" + port + "' is not a number from 0 to 65535");
  }
}

TEST(WatchSyntax, ReadsTheCount) {
  EXPECT_EQ(parseOptions({"watch", "--count", "4294967295"}, "").arguments.count, 4294967295U);
  for (const std::string text : {"", "0", "-1", "4294967296", "many"}) {
    EXPECT_EQ(usageErrorOf({"watch", "--count", text}),
              "--count: '" + text + "' is not a number from 1 to 4294967295");
  }
}

TEST(WatchSyntax, AcceptsTableAndJsonOnly) {
  EXPECT_EQ(parseOptions({"watch", "--format", "json"}, "").format, Format::kJson);
  EXPECT_EQ(parseOptions({"watch", "--format", "table"}, "").format, Format::kTable);
  EXPECT_EQ(usageErrorOf({"watch", "--format", "csv"}),
            "watch: --format must be table or json: events of different kinds have no columns in "
            "common");
}

TEST(WatchSyntax, RejectsArgumentsThatAreNotOptions) {
  EXPECT_THAT(usageErrorOf({"watch", "core"}), HasSubstr("'core' is not expected here"));
  EXPECT_THAT(usageErrorOf({"topo", "--listen", "h"}),
              HasSubstr("'--listen' is not expected here"));
}

}  // namespace
}  // namespace topoctl
