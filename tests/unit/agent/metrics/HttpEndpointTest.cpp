// Tests of the HTTP endpoint.

#include "agent/metrics/HttpEndpoint.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <list>
#include <string>

#include "tests/support/HttpGet.h"

namespace {

using agent::HttpAnswer;
using agent::HttpEndpoint;
using agent::HttpError;
using support::HttpConnection;
using support::httpGet;
using support::HttpReply;
using support::httpRequest;
using testing::HasSubstr;

const orb::Endpoint kAnyPort{"127.0.0.1", 0};

HttpEndpoint::Page page(const std::string& text) {
  return [text] { return HttpAnswer{200, "text/plain", text}; };
}

TEST(HttpEndpoint, AnswersWithThePageOfThePath) {
  const HttpEndpoint endpoint(kAnyPort, {{"/a", page("first")}, {"/b", page("second")}});
  const HttpReply reply = httpGet(endpoint.endpoint().port, "/b");
  EXPECT_EQ(200, reply.status);
  EXPECT_EQ("second", reply.body);
  EXPECT_THAT(reply.header, HasSubstr("Content-Type: text/plain"));
  EXPECT_EQ("first", httpGet(endpoint.endpoint().port, "/a?name=value").body);
}

TEST(HttpEndpoint, AnswersHeadWithoutABody) {
  const HttpEndpoint endpoint(kAnyPort, {{"/a", page("first")}});
  const HttpReply reply = httpRequest(endpoint.endpoint().port, "HEAD", "/a");
  EXPECT_EQ(200, reply.status);
  EXPECT_EQ("", reply.body);
  EXPECT_THAT(reply.header, HasSubstr("Content-Length: 5"));
}

TEST(HttpEndpoint, RefusesOtherPathsAndMethods) {
  const HttpEndpoint endpoint(kAnyPort, {{"/a", page("first")}});
  const std::uint16_t port = endpoint.endpoint().port;
  EXPECT_EQ(404, httpGet(port, "/").status);
  EXPECT_EQ(404, httpGet(port, "/a/../../etc/passwd").status);
  EXPECT_EQ(405, httpRequest(port, "POST", "/a").status);
  EXPECT_EQ(405, httpRequest(port, "DELETE", "/a").status);
}

TEST(HttpEndpoint, AnswersAFailedPageWithItsOwnStatus) {
  const HttpEndpoint endpoint(kAnyPort,
                              {{"/bad", []() -> HttpAnswer { throw std::runtime_error("secret"); }},
                               {"/wait", [] {
                                  return HttpAnswer{503, "text/plain", "not yet\n"};
                                }}});
  const HttpReply failed = httpGet(endpoint.endpoint().port, "/bad");
  EXPECT_EQ(500, failed.status);
  EXPECT_EQ(std::string::npos, failed.body.find("secret"));
  EXPECT_EQ(503, httpGet(endpoint.endpoint().port, "/wait").status);
}

TEST(HttpEndpoint, RefusesAHeaderThatIsTooLarge) {
  const HttpEndpoint endpoint(kAnyPort, {{"/a", page("first")}});
  const HttpConnection connection(endpoint.endpoint().port);
  connection.send("GET /a HTTP/1.1\r\nX: " + std::string(100000, 'x'));
  EXPECT_EQ(std::string::npos, connection.receive().find("200 OK"));
  EXPECT_EQ(200, httpGet(endpoint.endpoint().port, "/a").status);
}

TEST(HttpEndpoint, ServesInSpiteOfStalledClients) {
  const HttpEndpoint endpoint(kAnyPort, {{"/a", page("first")}});
  std::list<HttpConnection> stalled;
  for (int i = 0; i < 5; ++i) {
    stalled.emplace_back(endpoint.endpoint().port);
    EXPECT_TRUE(stalled.back().send("GET /a HTT"));
  }
  EXPECT_EQ(200, httpGet(endpoint.endpoint().port, "/a").status);
}

TEST(HttpEndpoint, ClosesAConnectionAfterItsAnswer) {
  const HttpEndpoint endpoint(kAnyPort, {{"/a", page("first")}});
  const HttpConnection connection(endpoint.endpoint().port);
  const std::string request = "GET /a HTTP/1.1\r\nConnection: keep-alive\r\n\r\n";
  ASSERT_TRUE(connection.send(request));
  EXPECT_THAT(connection.receive(), HasSubstr("Connection: close"));
}

TEST(HttpEndpoint, ReportsAPortInUseInOneLine) {
  const HttpEndpoint first(kAnyPort, {});
  const std::string address = "127.0.0.1:" + std::to_string(first.endpoint().port);
  try {
    const HttpEndpoint second(first.endpoint(), {});
    ADD_FAILURE() << "two endpoints on " << address;
  } catch (const HttpError& failure) {
    EXPECT_EQ("cannot serve metrics on " + address + ": Address already in use",
              std::string(failure.what()));
  }
}

TEST(HttpEndpoint, ReportsAHostWithoutAddress) {
  EXPECT_THROW(HttpEndpoint({"host.invalid", 0}, {}), HttpError);
}

}  // namespace
