// The command line of the agent.

#include "agent/Options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace {

using testing::HasSubstr;

std::optional<agent::Options> parse(const std::vector<std::string>& arguments) {
  std::vector<const char*> argv{"topo-agentd"};
  for (const std::string& argument : arguments) {
    argv.push_back(argument.c_str());
  }
  return agent::parseOptions(static_cast<int>(argv.size()), argv.data());
}

// The text of the refusal; empty when the command line was accepted.
std::string refusal(const std::vector<std::string>& arguments) {
  try {
    parse(arguments);
    return "";
  } catch (const agent::UsageError& failure) {
    return failure.what();
  }
}

TEST(AgentOptions, HaveAnAddressOfMetricsOnlyWhenAskedFor) {
  EXPECT_FALSE(parse({})->metrics);
  const auto options = parse({"--metrics", "127.0.0.1:9464"});
  ASSERT_TRUE(options->metrics);
  EXPECT_EQ("127.0.0.1:9464", orb::format(*options->metrics));
}

TEST(AgentOptions, HaveDefaults) {
  const auto options = parse({});
  ASSERT_TRUE(options);
  EXPECT_EQ("", options->network);
  EXPECT_EQ("./topo-agentd.db", options->store);
  EXPECT_EQ("127.0.0.1", options->endpoints.front().host);
  EXPECT_EQ(2810, options->endpoints.front().port);
  EXPECT_EQ("", options->iorFile);
  EXPECT_EQ("", options->emsName);
  EXPECT_FALSE(options->testSwitch);
  EXPECT_EQ("libzu_corba_topo.so", options->module.filename());
  EXPECT_EQ("", options->naming);
  EXPECT_EQ(1, options->logLevel);
  EXPECT_EQ(std::size_t{256} * 1024 * 1024, options->maxMessageBytes);
  EXPECT_EQ(300, options->iteratorTimeoutSeconds);
  EXPECT_EQ(1000U, options->maxIterators);
  EXPECT_EQ(std::size_t{1024} * 1024 * 1024, options->iteratorMemory);
  EXPECT_EQ(4U, options->maxViews);
  EXPECT_EQ(std::size_t{256} * 1024 * 1024, options->viewMemory);
  EXPECT_EQ(0U, options->memory);
  EXPECT_TRUE(options->console);
  EXPECT_EQ(agent::EventAccess::kAllowed, options->eventAccess);
  EXPECT_EQ("", options->eventChannel);
  EXPECT_EQ(10000U, options->queueLimit);
  EXPECT_EQ(std::size_t{64} << 20, options->queueBytes);
  EXPECT_EQ(1000U, options->maxSubscribers);
  EXPECT_EQ(100U, options->maxSubscribersPerPeer);
}

TEST(AgentOptions, LimitReceivers) {
  const auto options = parse(
      {"--queue-memory", "65536", "--max-subscribers", "7", "--max-subscribers-per-peer", "3"});
  ASSERT_TRUE(options);
  EXPECT_EQ(65536U, options->queueBytes);
  EXPECT_EQ(7U, options->maxSubscribers);
  EXPECT_EQ(3U, options->maxSubscribersPerPeer);
  for (const char* option : {"--queue-memory", "--max-subscribers", "--max-subscribers-per-peer"}) {
    EXPECT_THAT(refusal({option, "0"}), HasSubstr(option));
    EXPECT_THAT(refusal({option, "-1"}), HasSubstr(option));
  }
}

TEST(AgentOptions, LimitViewsAndIterators) {
  const auto options = parse({"--iterator-memory", "2000000", "--max-views", "3", "--view-memory",
                              "4000000", "--memory", "5000000"});
  ASSERT_TRUE(options);
  EXPECT_EQ(2000000U, options->iteratorMemory);
  EXPECT_EQ(3U, options->maxViews);
  EXPECT_EQ(4000000U, options->viewMemory);
  EXPECT_EQ(5000000U, options->memory);
}

TEST(AgentOptions, SetEventsAndConsole) {
  const auto options = parse({"--no-console", "--event-access", "denied", "--event-channel",
                              "corbaloc::h:1/C", "--queue", "5"});
  ASSERT_TRUE(options);
  EXPECT_FALSE(options->console);
  EXPECT_EQ(agent::EventAccess::kDenied, options->eventAccess);
  EXPECT_EQ("corbaloc::h:1/C", options->eventChannel);
  EXPECT_EQ(5U, options->queueLimit);
  EXPECT_EQ(agent::EventAccess::kUnknown, parse({"--event-access", "unknown"})->eventAccess);
  EXPECT_EQ(agent::EventAccess::kAllowed, parse({"--event-access", "allowed"})->eventAccess);
}

TEST(AgentOptions, RejectBadEventAccessAndQueues) {
  EXPECT_THAT(refusal({"--event-access", "maybe"}), HasSubstr("maybe"));
  EXPECT_THAT(refusal({"--event-access", "1"}), HasSubstr("--event-access"));
  EXPECT_THAT(refusal({"--queue", "0"}), HasSubstr("--queue"));
  EXPECT_THAT(refusal({"--queue", "x"}), HasSubstr("--queue"));
}

TEST(AgentOptions, SetTheRightsOfClients) {
  EXPECT_TRUE(parse({})->access.empty());
  EXPECT_FALSE(parse({})->readOnly);
  const auto options = parse({"--access", "access.rules", "--read-only", "--audit", "journal"});
  ASSERT_TRUE(options);
  EXPECT_EQ("access.rules", options->access);
  EXPECT_TRUE(options->readOnly);
  EXPECT_EQ("journal", options->audit);
}

TEST(AgentOptions, TakeSeveralRangesOfConsumers) {
  EXPECT_TRUE(parse({})->pushTo.empty());
  const std::vector<std::string> expected = {"10.1.0.0/16", "2001:db8::1", "192.0.2.1"};
  EXPECT_EQ(expected,
            parse({"--push-to", "10.1.0.0/16,2001:db8::1", "--push-to", "192.0.2.1"})->pushTo);
  EXPECT_THAT(refusal({"--push-to", "10.1.0.0/16", "--push-to", "10.1.0.1/16"}),
              HasSubstr("--push-to: '10.1.0.1/16' has address bits after its prefix"));
}

TEST(AgentOptions, MayGiveTheConsoleAnEndpointOfItsOwn) {
  EXPECT_FALSE(parse({})->consoleEndpoint);
  const auto options = parse({"--endpoint", "10.1.2.3:99", "--console-endpoint", "127.0.0.1:98"});
  ASSERT_TRUE(options);
  ASSERT_EQ(2U, options->endpoints.size());
  EXPECT_EQ(99, options->endpoints[0].port);
  EXPECT_EQ(98, options->endpoints[1].port);
  EXPECT_EQ(1U, options->consoleEndpoint);
  EXPECT_TRUE(options->endpoints[0].inReferences);
  EXPECT_FALSE(options->endpoints[1].inReferences);
  EXPECT_EQ(1U, parse({"--console-endpoint", "127.0.0.1:98"})->consoleEndpoint);
  EXPECT_THAT(refusal({"--console-endpoint", "98"}), HasSubstr("--console-endpoint"));
}

TEST(AgentOptions, OfFilesAreTakenFromTheCommandLine) {
  const auto options = parse({"--network", "net.json", "--store", ":memory:", "--create",
                              "--skip-store-check", "--ior-file", "a.ior", "--module", "m.so"});
  ASSERT_TRUE(options);
  EXPECT_EQ("net.json", options->network);
  EXPECT_EQ(":memory:", options->store);
  EXPECT_TRUE(options->createStore);
  EXPECT_FALSE(options->checkStore);
  EXPECT_EQ("a.ior", options->iorFile);
  EXPECT_EQ("m.so", options->module);
}

TEST(AgentOptions, OfNamesAndAddressesAreTakenFromTheCommandLine) {
  const auto options = parse({"--endpoint", "localhost:99", "--ems-name", "Vendor/1",
                              "--test-switch", "--naming", "corbaloc::h:1/NameService"});
  ASSERT_TRUE(options);
  EXPECT_EQ("localhost", options->endpoints.front().host);
  EXPECT_EQ(99, options->endpoints.front().port);
  EXPECT_EQ("Vendor/1", options->emsName);
  EXPECT_TRUE(options->testSwitch);
  EXPECT_EQ("corbaloc::h:1/NameService", options->naming);
}

TEST(AgentOptions, OfLimitsAreTakenFromTheCommandLine) {
  const auto options =
      parse({"--log-level", "2", "--max-message", "10000", "--max-request", "9000",
             "--max-connections", "8", "--iterator-timeout", "1.5", "--max-iterators", "7"});
  ASSERT_TRUE(options);
  EXPECT_EQ(2, options->logLevel);
  EXPECT_EQ(10000U, options->maxMessageBytes);
  EXPECT_EQ(9000U, options->maxRequestBytes);
  EXPECT_EQ(8U, options->maxConnections);
  EXPECT_EQ(1.5, options->iteratorTimeoutSeconds);
  EXPECT_EQ(7U, options->maxIterators);
}

struct Accepted {
  const char* text;
  const char* host;
  int port;
};

std::ostream& operator<<(std::ostream& out, const Accepted& endpoint) {
  return out << endpoint.text;
}

class AcceptedEndpoint : public testing::TestWithParam<Accepted> {};

TEST_P(AcceptedEndpoint, HasHostAndPort) {
  const auto options = parse({"--endpoint", GetParam().text});
  ASSERT_TRUE(options);
  EXPECT_EQ(GetParam().host, options->endpoints.front().host);
  EXPECT_EQ(GetParam().port, options->endpoints.front().port);
}

INSTANTIATE_TEST_SUITE_P(Endpoints, AcceptedEndpoint,
                         testing::Values(Accepted{"[::1]:5", "::1", 5},
                                         Accepted{"host:0", "host", 0},
                                         Accepted{"host:65535", "host", 65535},
                                         Accepted{"10.0.0.1:2810", "10.0.0.1", 2810}));

class RefusedEndpoint : public testing::TestWithParam<std::string> {};

TEST_P(RefusedEndpoint, IsQuotedInTheReason) {
  EXPECT_THAT(refusal({"--endpoint", GetParam()}),
              HasSubstr("--endpoint: '" + GetParam() + "' is not HOST:PORT"));
}

INSTANTIATE_TEST_SUITE_P(Endpoints, RefusedEndpoint,
                         testing::Values("", "a", ":0", "a:", "::1:0", "[::1]", "a:0x", "a:-1",
                                         "a:65536", "a:70000", "a: 5"));

struct Limit {
  const char* option;
  const char* inside;
  const char* outside;
};

std::ostream& operator<<(std::ostream& out, const Limit& limit) {
  return out << limit.option << " " << limit.inside;
}

class NumericLimit : public testing::TestWithParam<Limit> {};

TEST_P(NumericLimit, IsTheLargestAcceptedValue) {
  EXPECT_EQ("", refusal({GetParam().option, GetParam().inside}));
  EXPECT_THAT(refusal({std::string(GetParam().option) + "=" + GetParam().outside}),
              HasSubstr(GetParam().option));
}

INSTANTIATE_TEST_SUITE_P(
    BothSides, NumericLimit,
    testing::Values(
        Limit{"--log-level", "1", "0"}, Limit{"--log-level", "3", "4"},
        Limit{"--max-message", "8192", "8191"}, Limit{"--max-message", "2147483647", "2147483648"},
        Limit{"--max-request", "8192", "8191"}, Limit{"--max-request", "2147483647", "2147483648"},
        Limit{"--max-connections", "1", "0"}, Limit{"--max-connections", "100000", "100001"},
        Limit{"--iterator-timeout", "1", "0.9"},
        Limit{"--iterator-timeout", "1000000", "1000000.1"}, Limit{"--max-iterators", "1", "0"},
        Limit{"--max-iterators", "1000000", "1000001"},
        Limit{"--iterator-memory", "1048576", "1048575"}, Limit{"--max-views", "1", "0"},
        Limit{"--view-memory", "1048576", "1048575"}, Limit{"--memory", "1048576", "1048575"}));

class NumericOption : public testing::TestWithParam<std::string> {};

TEST_P(NumericOption, AcceptsOnlyNumbers) {
  const std::string& option = GetParam();
  EXPECT_NE("", refusal({option + "=many"}));
  EXPECT_NE("", refusal({option + "=2x"}));
  EXPECT_NE("", refusal({option + "=-1"}));
  EXPECT_NE("", refusal({option + "=99999999999999999999999"}));
  EXPECT_NE("", refusal({option}));
}

INSTANTIATE_TEST_SUITE_P(Options, NumericOption,
                         testing::Values("--log-level", "--max-message", "--max-request",
                                         "--max-connections", "--iterator-timeout",
                                         "--max-iterators", "--iterator-memory", "--max-views",
                                         "--view-memory", "--memory"));

TEST(AgentOptions, TakeSeveralEndpoints) {
  const auto options = parse({"--endpoint", "tcp:127.0.0.1:0", "--endpoint", "unix:/run/a.sock",
                              "--publish", "agent.example.net:2810"});
  ASSERT_TRUE(options);
  ASSERT_EQ(2U, options->endpoints.size());
  EXPECT_EQ("127.0.0.1:0", orb::format(options->endpoints[0]));
  EXPECT_EQ("unix:/run/a.sock", orb::format(options->endpoints[1]));
  ASSERT_TRUE(options->publish);
  EXPECT_EQ("agent.example.net:2810", orb::format(*options->publish));
}

TEST(AgentOptions, RejectAPublishedAddressWithoutAPort) {
  for (const char* text : {"host", "host:0", "unix:/a", "tls:host:1"}) {
    EXPECT_THAT(refusal({"--publish", text}), HasSubstr("is not HOST:PORT")) << text;
  }
}

TEST(AgentOptions, MeanTlsByAHostWithACertificate) {
  const auto isTls = [](const agent::Options& options, std::size_t endpoint) {
    return options.endpoints.at(endpoint).transport == orb::Transport::kTls;
  };
  const auto options = parse({"--tls-cert", "c.pem", "--tls-key", "c.key", "--tls-ca", "ca.pem",
                              "--tls-crl", "ca.crl", "--tls-clients", "optional", "--endpoint",
                              "host:1", "--endpoint", "tcp:host:2"});
  ASSERT_TRUE(options);
  EXPECT_TRUE(isTls(*options, 0));
  EXPECT_FALSE(isTls(*options, 1));
  EXPECT_EQ("c.pem", options->tls.certificate);
  EXPECT_EQ("c.key", options->tls.key);
  EXPECT_EQ("ca.pem", options->tls.authorities);
  EXPECT_EQ("ca.crl", options->tls.revoked);
  EXPECT_EQ(orb::TlsOptions::Clients::kOptional, options->tls.clients);
  EXPECT_TRUE(isTls(*parse({"--tls-cert", "c.pem"}), 0));
  EXPECT_FALSE(isTls(*parse({}), 0));
}

TEST(AgentOptions, RejectUnknownOptionsInOneLine) {
  EXPECT_THAT(refusal({"--colour"}), HasSubstr("--colour"));
  EXPECT_THAT(refusal({"--colour"}), HasSubstr(" (see topo-agentd --help)"));
  for (const std::string& text :
       {refusal({"first\nsecond"}), refusal({"--log-level", "first\nsecond"}),
        refusal({"--endpoint", "first\nsecond"}), refusal({"--first\r\nsecond"})}) {
    EXPECT_THAT(text, HasSubstr("second"));
    EXPECT_EQ(std::string::npos, text.find_first_of("\r\n")) << text;
  }
}

TEST(AgentOptions, RejectAMissingConfigurationFile) {
  EXPECT_THAT(refusal({"--config", "/nonexistent/agent.conf"}), HasSubstr("agent.conf"));
}

TEST(AgentOptions, AnswerHelpOnStandardOutput) {
  testing::internal::CaptureStdout();
  const auto options = parse({"--help"});
  const std::string printed = testing::internal::GetCapturedStdout();
  EXPECT_FALSE(options);
  for (const char* option :
       {"--version",          "--config",           "--network",         "--store",
        "--create",           "--skip-store-check", "--endpoint",        "--ior-file",
        "--ems-name",         "--test-switch",      "--module",          "--naming",
        "--log-level",        "--max-message",      "--max-request",     "--max-connections",
        "--iterator-timeout", "--max-iterators",    "--iterator-memory", "--max-views",
        "--view-memory",      "--memory",           "--publish",         "--metrics",
        "--tls-cert",         "--tls-key",          "--tls-ca",          "--tls-crl",
        "--tls-clients",      "--access",           "--read-only",       "--audit",
        "--push-to",          "--console-endpoint"}) {
    EXPECT_THAT(printed, HasSubstr(option));
  }
}

TEST(AgentOptions, AnswerVersionOnStandardOutput) {
  testing::internal::CaptureStdout();
  const auto options = parse({"--version"});
  const std::string printed = testing::internal::GetCapturedStdout();
  EXPECT_FALSE(options);
  EXPECT_THAT(printed, testing::MatchesRegex("topo-agentd [0-9]+(\\.[0-9]+)*\n"));
}

}  // namespace
